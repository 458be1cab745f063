// Where the desk's live data come from, and that what others store while it runs is shown.

#include "deskwindow.h"

#include "alarmpanel.h"
#include "archivefiller.h"
#include "archiveschema.h"
#include "deskarchive.h"
#include "desksettings.h"
#include "shell.h"
#include "simulation.h"
#include "statetable.h"
#include "testfiles.h"

#include <Pardel/tlog.h>

#include <QLabel>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStatusBar>
#include <QTcpSocket>
#include <QTemporaryDir>

namespace {

constexpr int patience = 20'000; // ms

/// A desk with an archive of two objects, at which somebody is about to log in.
class Desk
{
public:
    explicit Desk(const QString& source) : settings(folder.path()), log(settings.logFolder())
    {
        QSettings& ini = settings.ini();
        ini.setValue(QStringLiteral("Database/DBType"), QStringLiteral("sqlite3"));
        ini.setValue(QStringLiteral("Sample/Terminals"), 2);
        ini.setValue(QStringLiteral("Sample/Minutes"), 2);
        ini.setValue(QStringLiteral("Terminals/Port"), 0);
        ini.setValue(QStringLiteral("Live/Source"), source);
        ini.sync();
        error = archive.open(settings, {});
    }

    /// Settings of those who store in the same archive, in the group Db.
    QString importIni() const
    {
        const QString iniFile = folder.filePath(QStringLiteral("import.ini"));
        writeFile(iniFile, "[Db]\nDBType=sqlite3\nBaseName=" + archive.database().databaseName().toUtf8() + '\n');
        return iniFile;
    }

    QTemporaryDir folder;
    DeskSettings settings;
    TLog log;
    DeskArchive archive;
    QString error;
    KernelNotifyer kernel;
    CurrentUser user;
};

QString liveText(const DeskWindow& window)
{
    return window.findChild<QLabel*>(QStringLiteral("live"))->text();
}

} // namespace

class TestLive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheSource_data() { addTableRows("live-sources.txt"); }
    void choosesTheSource()
    {
        const bool listens = cell("from") == "terminals";
        Desk desk(QString::fromLatin1(cell("source")));
        QCOMPARE(desk.error, QString());
        ArchiveFiller filler;
        if (cell("filled") == "yes")
            QCOMPARE(filler.claim(desk.archive.database()), QString());
        DeskWindow window(desk.settings, desk.archive, desk.log, desk.kernel);
        desk.kernel.OnSetInformationAboutCurrentUser(desk.user);
        QCOMPARE(window.server.port() != 0, listens);
        QCOMPARE(liveText(window).contains(QLatin1String("live from the archive")), !listens);
    }

    void showsWhatOthersStore()
    {
        Desk desk(QStringLiteral("archive"));
        DeskWindow window(desk.settings, desk.archive, desk.log, desk.kernel);
        QCOMPARE(window.table->states().rowCount(), 2);
        const QString store = QStringLiteral("\"$simulate\" --terminals %1 --minutes 9 | \"$import\" $db");
        const Outcome before = runShell(store.arg(5), {}, desk.importIni()); // nobody is logged in yet
        QVERIFY2(before.status == 0, before.errors);
        desk.kernel.OnSetInformationAboutCurrentUser(desk.user);
        QTRY_COMPARE_WITH_TIMEOUT(window.table->states().rowCount(), 5, patience);
        const Outcome after = runShell(store.arg(9), {}, desk.importIni());
        QVERIFY2(after.status == 0, after.errors);
        QTRY_COMPARE_WITH_TIMEOUT(window.table->states().rowCount(), 9, patience);
    }

    void showsWhatTheReceiverTakes()
    {
        Desk desk(QStringLiteral("auto"));
        QProcess receiver;
        receiver.setStandardErrorFile(desk.folder.filePath(QStringLiteral("told")));
        receiver.start(QStringLiteral(PARDEL_RECEIVE),
                       {QStringLiteral("--ini"), desk.importIni(), QStringLiteral("--group"), QStringLiteral("Db"),
                        QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"), QStringLiteral("--spool"),
                        desk.folder.filePath(QStringLiteral("spool"))});
        QTRY_VERIFY_WITH_TIMEOUT(ArchiveFiller::isClaimed(desk.archive.database()), patience);
        DeskWindow window(desk.settings, desk.archive, desk.log, desk.kernel);
        desk.kernel.OnSetInformationAboutCurrentUser(desk.user);
        QCOMPARE(liveText(window), QStringLiteral("live from the archive"));
        QProcess terminals;
        terminals.start(QStringLiteral("/bin/sh"),
                        {QStringLiteral("-c"),
                         QStringLiteral("exec \"$0\" --terminals 6 --rate 9 --connect 127.0.0.1:$(sed -n "
                                        "'s/.*listening on .* port //p' \"$1\")"),
                         QStringLiteral(PARDEL_SIMULATE), desk.folder.filePath(QStringLiteral("told"))});
        QTRY_COMPARE_WITH_TIMEOUT(window.table->states().rowCount(), 6, patience);
        terminals.kill();
        terminals.waitForFinished();
        receiver.terminate();
        QVERIFY(receiver.waitForFinished(patience));
        QVERIFY(!ArchiveFiller::isClaimed(desk.archive.database()));
    }

    /// What cannot be stored is kept, and keeps nobody waiting.
    void closesBesideALockedArchive()
    {
        Desk desk(QStringLiteral("terminals"));
        desk.log.Enabled(true);
        auto window = std::make_unique<DeskWindow>(desk.settings, desk.archive, desk.log, desk.kernel);
        desk.kernel.OnSetInformationAboutCurrentUser(desk.user);
        QTRY_VERIFY_WITH_TIMEOUT(!window->alarms->isExchanging(), patience);
        const QString copy = QStringLiteral("locks");
        {
            QSqlDatabase other = QSqlDatabase::cloneDatabase(desk.archive.database(), copy);
            QVERIFY(other.open());
            QCOMPARE(ArchiveSchema::attachArchive(other), QString());
            QVERIFY(QSqlQuery(other).exec(QStringLiteral("BEGIN EXCLUSIVE")));
            Simulation simulation({});
            QTcpSocket terminal;
            terminal.connectToHost(QStringLiteral("127.0.0.1"), window->server.port());
            QVERIFY(terminal.waitForConnected());
            terminal.write(simulation.next());
            QTRY_COMPARE_WITH_TIMEOUT(window->server.counters().decoded.packets, 1, patience);
            window->alarms->list.take(1, {100, 1, 1, 0, 0, true}, true);
            QElapsedTimer closing;
            closing.start();
            QVERIFY(!window->finish());
            QVERIFY2(closing.elapsed() < 5000, QByteArray::number(closing.elapsed()));
        }
        QSqlDatabase::removeDatabase(copy);
        QString told;
        for (const QFileInfo& file : QDir(desk.settings.logFolder()).entryInfoList(QDir::Files))
            told += QString::fromUtf8(contentOf(file.filePath()));
        QVERIFY2(told.contains(QLatin1String("the next start stores them first")), qPrintable(told));
        QVERIFY2(told.contains(QLatin1String("Changes of alarms that are not stored: 1")), qPrintable(told));
    }

    /// A report that is not shown is told, of each object once.
    void tellsOfWrongClocks()
    {
        Desk desk(QStringLiteral("terminals"));
        DeskWindow window(desk.settings, desk.archive, desk.log, desk.kernel);
        desk.kernel.OnSetInformationAboutCurrentUser(desk.user);
        const auto toldOf = [&](qint32 time) {
            window.statusBar()->clearMessage();
            Q_EMIT window.changes.statesChanged({MobData{1, 10, 10, 0, 0, time, {}}});
            return window.statusBar()->currentMessage();
        };
        QCOMPARE(toldOf(static_cast<qint32>(2'147'483'649U)), // in January 2038, as the records have it
                 QStringLiteral("Van 001: reports of 2038-01-18 22:14:09 -05:00 are not shown, as that is no time of "
                                "now: look at the clocks of terminal and desk"));
        QCOMPARE(toldOf(2'000'000'000), QString());
        QCOMPARE(toldOf(1'000'000'000), QString());
        QCOMPARE(toldOf(MobData::noTime), QStringLiteral("Van 001: reports without a time are not shown"));
    }

    void saysWhatAnOldArchiveLacks()
    {
        Desk desk(QStringLiteral("archive"));
        for (const char* statement :
             {"DROP INDEX archive.lastdata_changed", "ALTER TABLE archive.lastdata DROP COLUMN changed"})
            QVERIFY(QSqlQuery(desk.archive.database()).exec(QLatin1String(statement)));
        DeskWindow window(desk.settings, desk.archive, desk.log, desk.kernel);
        desk.kernel.OnSetInformationAboutCurrentUser(desk.user);
        QTRY_COMPARE_WITH_TIMEOUT(liveText(window), QStringLiteral("no live data from the archive"), patience);
        QVERIFY(window.statusBar()->currentMessage().contains(QLatin1String("pardel-archive create")));
    }
};

QTEST_MAIN(TestLive)
#include "tst_live.moc"
