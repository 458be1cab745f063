// A dispatcher's console on the whole library.

#include "commandline.h"
#include "deskarchive.h"
#include "desksettings.h"
#include "desktime.h"
#include "deskwindow.h"
#include "languages.h"
#include "login.h"
#include "tour.h"

#include <Pardel/pardelversion.h>
#include <Pardel/tlog.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMessageBox>
#include <QProgressDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int logUpdateInterval = 60'000; // milliseconds

const QString dataOption = QStringLiteral("data");
const QString tourOption = QStringLiteral("tour");
const QString terminalsOption = QStringLiteral("tour-terminals");
const QString objectsOption = QStringLiteral("tour-objects");
const QString darkOption = QStringLiteral("tour-dark");
const QString passwordOption = QStringLiteral("set-password");

/// Only a desk for somebody to sit at needs a display: not the tour, a new password, or the help.
bool needsDisplay(int argc, char* argv[])
{
    return std::all_of(argv + 1, argv + argc, [](const QByteArray& argument) {
        return !argument.startsWith('-') || argument.startsWith("--data");
    });
}

/// Who has started the desk from a menu sees no standard error. @return Failed
int fail(const QString& sentence)
{
    tellError(sentence);
    if (QApplication::platformName() != QLatin1String("offscreen"))
        QMessageBox::critical(nullptr, DeskWindow::tr("Desk"), sentence);
    return Failed;
}

QIcon icon()
{
    QIcon icon;
    for (const int size : {32, 64, 128})
        icon.addFile(QStringLiteral(":/icons/%1.png").arg(size));
    return icon;
}

QString openArchive(DeskArchive& archive, const DeskSettings& settings)
{
    QProgressDialog progress(DeskWindow::tr("Making a simulated day…"), QString(), 0, 100);
    progress.setWindowModality(Qt::ApplicationModal); // only then it is drawn in between
    return archive.open(settings, [&](int percent) { progress.setValue(percent); });
}

int storePassword(const DeskArchive& archive, const QString& name)
{
    QTextStream(stderr) << DeskWindow::tr("Password of %1: ").arg(name) << Qt::flush;
    const QString error = setPassword(archive.database(), name, QTextStream(stdin).readLine());
    if (!error.isEmpty())
        tellError(error);
    return error.isEmpty() ? Done : Failed;
}

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(DeskWindow::tr("A dispatcher's console. \"man pardel-desk\" says more."));
    parser.addOptions({
        {dataOption,
         DeskWindow::tr("Keep settings, database and logs there (default: the user's folders, or the executable's)."),
         QStringLiteral("FOLDER")},
        {tourOption, DeskWindow::tr("Walk through the desk, save pictures of the steps, and end."),
         QStringLiteral("FOLDER")},
        {terminalsOption, DeskWindow::tr("Simulated terminals of the tour (default 20)."), QStringLiteral("N"),
         QStringLiteral("20")},
        {objectsOption,
         DeskWindow::tr("Further objects of the tour, from one connection (default none, at most 65536)."),
         QStringLiteral("N"), QStringLiteral("0")},
        {darkOption, DeskWindow::tr("Take the tour in dark colors.")},
        {passwordOption, DeskWindow::tr("Read a password for this user from standard input, and end."),
         QStringLiteral("NAME")},
    });
}

void startLog(TLog& log, const DeskSettings& settings, QTimer& updates)
{
    log.Enabled(true);
    log.Message(DeskWindow::tr("Start of %1").arg(getPardelVersion()));
    log.Message(DeskWindow::tr("Settings: %1, data: %2").arg(settings.ini().fileName(), settings.folder()));
    QObject::connect(&updates, &QTimer::timeout, &updates, [&log] { log.TimerUpdate(); });
    updates.start(logUpdateInterval);
}

/// From the login on.
int runDesk(const QCommandLineParser& parser, const DeskSettings& settings, const DeskArchive& archive, TLog& log)
{
    KernelNotifyer kernel;
    LoginFlow login(kernel, archive.database());
    DeskWindow window(settings, archive, log, kernel);
    QObject::connect(&kernel, &KernelNotifyer::OnSetInformationAboutCurrentUserSignal, &window,
                     [] { QApplication::setQuitOnLastWindowClosed(true); });
    QObject::connect(&login, &LoginFlow::refused, &window, [&log](const QString& name, const QString& reason) {
        log.Message(DeskWindow::tr("Login of %1 refused: %2").arg(name, reason));
    });
    QObject::connect(&login, &LoginFlow::cancelled, QCoreApplication::instance(), &QCoreApplication::quit);
    if (parser.isSet(tourOption)) {
        Tour tour(login, window,
                  {parser.value(tourOption), parser.value(terminalsOption).toInt(), parser.value(objectsOption).toInt(),
                   parser.isSet(darkOption)});
        return tour.run() ? Done : Failed;
    }
    login.start();
    const int status = QApplication::exec();
    window.hide();
    if (!window.finish())
        std::_Exit(status); // a thread waits for a database that does not answer; the spool has what is not stored
    return status;
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !needsDisplay(argc, argv))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("pardel-desk"));
    QApplication::setDesktopFileName(QStringLiteral("pardel-desk")); // by which Wayland finds name and icon
    QApplication::setWindowIcon(icon());
    QApplication::setQuitOnLastWindowClosed(false); // there are dialogs before there is a window

    QCommandLineParser parser;
    addOptions(parser);
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;

    const QTemporaryDir scratch; // a tour leaves nothing behind but its pictures
    const bool isTour = parser.isSet(tourOption);
    const DeskSettings settings(isTour && !parser.isSet(dataOption) ? scratch.path() : parser.value(dataOption));
    if (isTour)
        Tour::adapt(settings);
    speakLanguage(settings.ini().value(QStringLiteral("Desk/Language")).toString());
    DeskTime::setUtc(settings.ini().value(QStringLiteral("Desk/Times")).toString() == QLatin1String("utc"));
    if (!settings.error().isEmpty())
        return fail(settings.error());
    TLog log(settings.logFolder());
    QTimer logTimer;
    startLog(log, settings, logTimer);

    DeskArchive archive;
    if (const QString error = openArchive(archive, settings); !error.isEmpty()) {
        log.Message(error);
        return fail(error);
    }
    if (parser.isSet(passwordOption))
        return storePassword(archive, parser.value(passwordOption));
    return runDesk(parser, settings, archive, log);
}
