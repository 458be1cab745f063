#include <Pardel/tlog.h>

#include "testfiles.h"
#include "tlog_p.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <functional>
#include <unistd.h>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

namespace {

int today = 9;
QStringList warnings;

QString filePath(TLog& log, int day)
{
    return log.getFilePath({2024, 3, day});
}

QByteArray content(TLog& log, int day)
{
    return contentOf(filePath(log, day));
}

/// Not the echo's UTF-8 for the file, so that a mix-up shows, where Qt has codecs of another kind at all.
void leaveUtf8()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
#endif
}

/// What @p action writes to standard error.
QByteArray echoOf(const std::function<void()>& action)
{
    QTemporaryFile file;
    file.open();
    const int kept = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    action();
    dup2(kept, STDERR_FILENO);
    close(kept);
    file.seek(0);
    return file.readAll();
}

} // namespace

class TestTLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        leaveUtf8();
        DailyLog::millisecondsSinceEpoch = [] {
            return QDateTime(QDate(2024, 3, today), QTime(23, 4, 5, 6)).toMSecsSinceEpoch();
        };
        qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { warnings.append(text); });
    }

    void init() { today = 9; }
    void cleanup() { QCOMPARE(warnings.join(QLatin1Char('\n')), QString()); }
    void entries_data() { addTableRows("log.txt"); }

    void entries()
    {
        const auto filled = [](QByteArray text) {
            for (const int spaces : {33, 36, 45})
                text.replace('{' + QByteArray::number(spaces) + '}', QByteArray(spaces, ' '));
            text.replace("{large}", QByteArray(40000, 'x'));
            return QString::fromUtf8(text.constData(), text.size()); // with its zeros
        };
        const QByteArray direction = cell("direction");
        const bool packet = !direction.isEmpty();
        const QString text = filled(cell("content"));
        const QByteArray echo = filled(cell("echo")).toUtf8();
        QString label = QStringLiteral("La%%bel");
        const QTemporaryDir folder;
        TLog log(folder.filePath(QStringLiteral("new/logs")));
        const auto write = [&] {
            packet ? log.Data(label, text.toLatin1(), direction == "Received") : log.Message(text);
        };

        QCOMPARE(echoOf([&] { log.SendHeader(), write(), log.Enabled(true); }), QByteArray());
        QCOMPARE(content(log, 9), QByteArray());
        QCOMPARE(echoOf(write), packet ? "Data: \r\n" + echo : echo);
        QCOMPARE(content(log, 9), "\n\n--------------------------------------------------\n2024-03-09 23:04:05.006\n" +
                                      (packet ? "La%%bel\n" + direction + '\n' : "") +
                                      filled(cell("file")).toLocal8Bit());
    }

    void dayChange()
    {
        const QTemporaryDir folder;
        {
            TLog log(folder.path());
            log << "dropped";
            log.Enabled(true);
            log << "9 ";
            log.TimerUpdate();
            today = 10;
            log << "still 9";
            log.TimerUpdate();
            QCOMPARE(content(log, 9), QByteArray("9 still 9"));
            log << "10";
            today = 11;
            log.Enabled(true);
            QCOMPARE(content(log, 10), QByteArray("10"));
            today = 12;
            log.Enabled(false);
            log.TimerUpdate();
            QCOMPARE(echoOf([&] { log.SendHeader(), log.Message(QStringLiteral("off")); }), QByteArray());
            log << "11 ";
        }
        today = 11;
        TLog restarted(folder.path());
        restarted.Enabled(true);
        restarted << "continued" << Qt::flush;
        QCOMPARE(content(restarted, 11), QByteArray("11 continued"));
        QCOMPARE(content(restarted, 12), "cannot read " + filePath(restarted, 12).toUtf8());
    }

    void changedZone()
    {
        const auto clock = DailyLog::millisecondsSinceEpoch;
        DailyLog::millisecondsSinceEpoch = [] { return Q_INT64_C(1710000000000); }; // 2024-03-09 16:00 UTC
        const QByteArray zone = qgetenv("TZ");
        const QTemporaryDir folder;
        TLog log(folder.path());
        for (const char* other : {"UTC", "AHEAD-10"}) {
            qputenv("TZ", other);
            log.Enabled(true);
        }
        qputenv("TZ", zone);
        tzset();
        DailyLog::millisecondsSinceEpoch = clock;
        QVERIFY(QFile::exists(filePath(log, 9)) && QFile::exists(filePath(log, 10)));
    }

    void fileThatTakesNothing()
    {
        for (const bool opens : {false, true}) {
            const QTemporaryDir folder;
            TLog log(folder.path());
            today = 9;
            log.Enabled(true);
            QVERIFY(opens ? QFile::link(QStringLiteral("/dev/full"), filePath(log, 10))
                          : QDir().mkdir(filePath(log, 10)));
            today = 10;
            const QByteArray told =
                "Cann't open file " + filePath(log, 10).toUtf8() + " for append. Log goes on when it can.\n";
            QCOMPARE(echoOf([&] { log.TimerUpdate(), log.TimerUpdate(); }), opens ? QByteArray() : told);
            warnings.clear(); // Qt minds that the end of a device cannot be found.
            QCOMPARE(echoOf([&] { log.Message(QStringLiteral("echoed")); }), QByteArray("echoed\n"));
            log << "lost";
            if (!opens) {
                QVERIFY(QDir().rmdir(filePath(log, 10)));
                QCOMPARE(echoOf([&] { log.Message(QStringLiteral("again")); }), QByteArray("again\n"));
                QVERIFY(content(log, 10).endsWith("\nagain\n"));
            }
            today = 11;
            log.TimerUpdate();
            log << "saved" << Qt::flush;
            QCOMPARE(content(log, 9), QByteArray());
            QCOMPARE(content(log, 11), QByteArray("saved"));
        }
    }

    void cannotStart()
    {
        const QTemporaryDir folder;
        QVERIFY(QFile(folder.filePath(QStringLiteral("%%n"))).open(QIODevice::WriteOnly));
        TLog nowhere(folder.filePath(QStringLiteral("%%n/logs")));
        QCOMPARE(echoOf([&] { nowhere.Enabled(true), nowhere.Message(QString()); }),
                 "Cann't make dir " + folder.path().toUtf8() + "/%n/logs. Log is off.\n");

        TLog log(QDir::current().relativeFilePath(folder.path()));
        QVERIFY(QDir().mkdir(filePath(log, 9)));
        QCOMPARE(echoOf([&] { log.Enabled(true), log.Message(QString()); }),
                 "Cann't open file " + folder.path().toUtf8() + "/2024-03-09.txt for append. Log is off.\n");
        log << "dropped";
        QVERIFY(QDir().rmdir(filePath(log, 9)));
        log.Enabled(true);
        log << "saved" << Qt::flush;
        QCOMPARE(content(log, 9), QByteArray("saved"));

        QCOMPARE(TLog::getDirPathDefault(QStringLiteral("x")),
                 QCoreApplication::applicationDirPath() + QStringLiteral("/Logs/Log_x"));
    }
};

QTEST_GUILESS_MAIN(TestTLog)
#include "tst_tlog.moc"
