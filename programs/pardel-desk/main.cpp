// A dispatcher's console on the whole library.

#include "commandline.h"
#include "deskarchive.h"
#include "desksettings.h"
#include "deskwindow.h"
#include "login.h"
#include "tour.h"

#include <Pardel/pardelversion.h>
#include <Pardel/tlog.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QProgressDialog>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int logUpdateInterval = 60'000; // milliseconds

/// Only a desk for somebody to sit at needs a display: not the tour, a new password, or the help.
bool needsDisplay(int argc, char* argv[])
{
    return std::all_of(argv + 1, argv + argc, [](const QByteArray& argument) {
        return !argument.startsWith('-') || argument.startsWith("--data");
    });
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

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !needsDisplay(argc, argv))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("pardel-desk"));
    QApplication::setQuitOnLastWindowClosed(false); // there are dialogs before there is a window

    QCommandLineParser parser;
    parser.setApplicationDescription(DeskWindow::tr("A dispatcher's console. docs/desk.md says more."));
    const QCommandLineOption data(
        QStringLiteral("data"),
        DeskWindow::tr("Keep settings, database and logs there (default: the executable's folder, or the user's)."),
        QStringLiteral("FOLDER"));
    const QCommandLineOption tour(QStringLiteral("tour"),
                                  DeskWindow::tr("Walk through the desk, save pictures of the steps, and end."),
                                  QStringLiteral("FOLDER"));
    const QCommandLineOption terminals(QStringLiteral("tour-terminals"),
                                       DeskWindow::tr("Simulated terminals of the tour (default 20)."),
                                       QStringLiteral("N"), QStringLiteral("20"));
    const QCommandLineOption password(QStringLiteral("set-password"),
                                      DeskWindow::tr("Read a password for this user from standard input, and end."),
                                      QStringLiteral("NAME"));
    parser.addOptions({data, tour, terminals, password});
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;

    const QTemporaryDir scratch; // a tour leaves nothing behind but its pictures
    const bool isTour = parser.isSet(tour);
    const DeskSettings settings(isTour && !parser.isSet(data) ? scratch.path() : parser.value(data));
    if (isTour)
        Tour::adapt(settings);
    TLog log(settings.logFolder());
    log.Enabled(true);
    log.Message(DeskWindow::tr("Start of %1").arg(getPardelVersion()));
    QTimer logTimer;
    QObject::connect(&logTimer, &QTimer::timeout, [&log] { log.TimerUpdate(); });
    logTimer.start(logUpdateInterval);

    DeskArchive archive;
    const QString error = settings.error().isEmpty() ? openArchive(archive, settings) : settings.error();
    if (!error.isEmpty()) {
        log.Message(error);
        tellError(error);
        return Failed;
    }
    if (parser.isSet(password))
        return storePassword(archive, parser.value(password));

    KernelNotifyer kernel;
    LoginFlow login(kernel, archive.database());
    DeskWindow window(settings, archive, log, kernel);
    QObject::connect(&kernel, &KernelNotifyer::OnSetInformationAboutCurrentUserSignal, &window,
                     [] { QApplication::setQuitOnLastWindowClosed(true); });
    QObject::connect(&login, &LoginFlow::refused, &window, [&log](const QString& name, const QString& reason) {
        log.Message(DeskWindow::tr("Login of %1 refused: %2").arg(name, reason));
    });
    QObject::connect(&login, &LoginFlow::cancelled, &application, &QApplication::quit);
    if (isTour)
        return Tour(login, window, parser.value(terminals).toInt(), parser.value(tour)).run() ? Done : Failed;
    login.start();
    return QApplication::exec();
}
