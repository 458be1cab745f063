#include "terminalserver.h"

#include "hubannouncer.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QDateTime>
#include <QProcess>
#include <QSettings>
#include <QTcpSocket>
#include <QThread>

#include <functional>
#include <memory>

namespace {

constexpr int patience = 20000; // ms, after which a test has failed

/// The bytes of a word as terminals.txt describes it.
QByteArray bytesOf(const QByteArray& word)
{
    const QByteArrayList parts = word.split('*');
    QByteArray hex = parts[0];
    hex.replace("P", "a4d50000110d00010241239521");
    hex.replace("F", "a4d50000121800010ee2010000000200000003000000735b");
    return QByteArray::fromHex(hex).repeated(parts.size() > 1 ? parts[1].toInt() : 1);
}

const QByteArray good = bytesOf("P");

/// A hub, a server on a free port of this machine, and all that comes out of them.
class Desk
{
public:
    explicit Desk(std::chrono::milliseconds idle = std::chrono::minutes(1))
    {
        TerminalSettings settings;
        settings.port = 0;
        settings.maximumBuffer = 4096;
        settings.maximumConnections = 100;
        settings.idle = idle;
        settings.pause = std::chrono::milliseconds(100);
        server = std::make_unique<TerminalServer>(announcer, settings);
        QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &hub, [this](MobData& report) {
            reports += QByteArray::number(report.idObject) + '@' + QByteArray::number(report.timeUnix);
            if (receiver)
                receiver();
        });
        QObject::connect(server.get(), &TerminalServer::happened, &hub, [this](const QString& text) { log += text; });
        QVERIFY2(server->listen(), qPrintable(server->errorString()));
    }

    std::unique_ptr<QTcpSocket> terminal(const QByteArray& bytes = QByteArray()) const
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), server->port());
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        socket->waitForConnected(patience);
        socket->write(bytes);
        return socket;
    }

    DataPumpNotifyer hub;
    HubAnnouncer announcer{hub};
    std::unique_ptr<TerminalServer> server;
    QByteArrayList reports;
    QStringList log;
    std::function<void()> receiver; // of every report
};

QByteArray endsOf(const TerminalCounters& counters)
{
    const auto times = [](const char* end, qint64 count) { return QByteArray(end).repeated(static_cast<int>(count)); };
    return times("ended", counters.ended) + times("cutOff", counters.cutOff) +
           times("closedForRubbish", counters.closedForRubbish) + times("closedForSilence", counters.closedForSilence);
}

} // namespace

class TestTerminalServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void terminals_data() { addTableRows("terminals.txt"); }

    void terminals()
    {
        Desk desk;
        const auto other = desk.terminal();
        const auto terminal = desk.terminal();
        for (const QByteArray& word : cell("sent").simplified().split(' ')) {
            terminal->write(bytesOf(word));
            terminal->flush();
            QCoreApplication::processEvents();
        }
        terminal->disconnectFromHost();
        QTRY_COMPARE_WITH_TIMEOUT(endsOf(desk.server->counters()), cell("end"), patience);
        QCOMPARE(desk.reports.join(' '), cell("announced"));
        const DecodeCounts decoded = desk.server->counters().decoded;
        QCOMPARE(decoded.reports, desk.reports.size());
        QByteArrayList numbers;
        for (const qint64 count :
             {decoded.packets, decoded.badChecksums, decoded.rejected, decoded.skippedBytes, decoded.rawOnly})
            numbers += QByteArray::number(count);
        QCOMPARE(numbers.join(' '), cell("counts"));

        // Whatever it was, it is the matter of that one connection.
        desk.reports.clear();
        other->write(good);
        const auto later = desk.terminal(good);
        QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), 2, patience);
    }

    void silenceEndsAConnection()
    {
        Desk desk(std::chrono::milliseconds(200));
        const auto halfAPacket = desk.terminal(good + good.left(5));
        const auto rubbish = desk.terminal();
        const auto talking = desk.terminal();
        QTimer beat;
        connect(&beat, &QTimer::timeout, this, [&] {
            rubbish->write("?");
            talking->write(good);
        });
        beat.start(10);
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().closedForSilence, 2, patience);
        QCOMPARE(desk.server->counters().open, 1);
    }

    void damagedLengthsKeepNothingBackForLong()
    {
        Desk desk;
        const auto terminal = desk.terminal(QByteArray::fromHex("a4d5000011ffff") + good);
        QTimer beat; // never silent for as long as a pause is
        connect(&beat, &QTimer::timeout, this, [&] { terminal->write(good); });
        beat.start(40);
        QTRY_VERIFY_WITH_TIMEOUT(desk.reports.size() >= 5, patience);
        QCOMPARE(desk.server->counters().decoded.skippedBytes, 7);
    }

    void connectionsAreLimited()
    {
        Desk desk;
        std::vector<std::unique_ptr<QTcpSocket>> sockets(140);
        for (auto& socket : sockets)
            socket = desk.terminal();
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().madeRoom, 40, patience);
        QCOMPARE(desk.server->counters().open, 100);
        QVERIFY2(desk.log.size() < 100, "a text for every connection");
        sockets.back()->disconnectFromHost();
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 99, patience);
        const auto next = desk.terminal(good);
        QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), 1, patience);
        QTRY_VERIFY_WITH_TIMEOUT(desk.log.join(QString()).contains(QStringLiteral("left out")), patience);
    }

    void aFloodLeavesRoom()
    {
        Desk desk;
        int inARow = 0;
        int most = 0;
        desk.receiver = [&] {
            QThread::usleep(100);
            most = qMax(most, ++inARow);
        };
        QTimer heartbeat;
        connect(&heartbeat, &QTimer::timeout, this, [&] { inARow = 0; });
        heartbeat.start(0);
        const auto flood = desk.terminal(good.repeated(5000));
        const auto other = desk.terminal(bytesOf("F"));
        QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), 5002, patience);
        QVERIFY2(desk.reports.indexOf("18@3") < 500, "after some turns of the flood");
        QVERIFY2(most < 200, qPrintable(QString::number(most))); // 5 ms are 50
    }

    void aReceiverMayDoAnything()
    {
        Desk desk;
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        int depth = 0;
        desk.receiver = [&] {
            QCOMPARE(++depth, 1);
            sockets.push_back(desk.terminal(good));
            QTest::qWait(20); // as a message box does
            --depth;
            if (desk.reports.size() == 3)
                desk.server.reset();
        };
        sockets.push_back(desk.terminal(good.repeated(3)));
        QTRY_VERIFY_WITH_TIMEOUT(!desk.server, patience);
        QCOMPARE(desk.reports.size(), 3);
    }

    void cannotListen()
    {
        Desk desk;
        TerminalSettings settings;
        settings.port = desk.server->port();
        TerminalServer second(desk.announcer, settings);
        QVERIFY(!second.listen());
        QVERIFY2(second.errorString().contains(QString::number(settings.port)), qPrintable(second.errorString()));
    }

    void settings()
    {
        QSettings ini(QStringLiteral(TEST_DATA "/terminals.ini"), QSettings::IniFormat);
        const TerminalSettings read = TerminalSettings::read(ini);
        QVERIFY(read.address == QLatin1String("0.0.0.0") && read.port == 0 && !read.decode.convert);
        QVERIFY(read.maximumConnections == 2000 && read.maximumBuffer == 131072 && read.idle.count() == 50);
        QCOMPARE(read.complaints.join(QLatin1Char('|')),
                 QStringLiteral("MaximumConnections=0 is no number from 1 to 30000; 2000 is used|"
                                "MaximumBuffer=lots is no number from 1024 to 16777216; 131072 is used"));
    }

    void simulatedTerminals()
    {
        Desk desk;
        QSet<int> objects;
        connect(&desk.hub, &DataPumpNotifyer::OnDataRecievedSignal, this, [&](MobData& report) {
            objects += report.idObject;
            QVERIFY(qAbs(report.timeUnix - QDateTime::currentSecsSinceEpoch()) < 60);
        });
        QProcess simulate;
        const QString place = QStringLiteral("localhost:%1").arg(desk.server->port());
        const auto run = [&](const char* options) {
            simulate.start(
                QStringLiteral(PARDEL_SIMULATE),
                (QStringLiteral("--connect %1 ").arg(place) + QLatin1String(options)).split(QLatin1Char(' ')));
        };
        QElapsedTimer time;
        time.start();
        run("--terminals 60 --rate 20 --packets 10");
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().ended, 60, patience);
        QVERIFY2(time.elapsed() >= 10 * 1000 / 20 - 50, "at the rate, not at once");
        QTRY_COMPARE_WITH_TIMEOUT(simulate.state(), QProcess::NotRunning, patience);
        QCOMPARE(simulate.exitCode(), 0);
        QCOMPARE(simulate.readAllStandardError(), QByteArray());
        QCOMPARE(desk.server->counters().decoded.packets, 600);
        QCOMPARE(objects.size(), 60);

        run("--terminals 2 --rate 100");
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 2, patience);
        desk.server->close();
        QTRY_COMPARE_WITH_TIMEOUT(simulate.state(), QProcess::NotRunning, patience);
        QCOMPARE(simulate.exitCode(), 2);
        const QByteArray errors = simulate.readAllStandardError();
        QVERIFY2(errors.count('\n') == 1 && errors.contains("has lost its connection to " + place.toUtf8()), errors);
    }
};

QTEST_GUILESS_MAIN(TestTerminalServer)
#include "tst_terminalserver.moc"
