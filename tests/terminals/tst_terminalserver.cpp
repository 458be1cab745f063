#include "terminalserver.h"

#include "descriptors.h"
#include "hubannouncer.h"

#include "shell.h"
#include "testfiles.h"

#include <QDateTime>
#include <QProcess>
#include <QSettings>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>

#include <functional>
#include <map>
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
const QByteArray longForm = "\xA4\xD6" + QByteArray(543, '\x11');

TerminalSettings usualSettings()
{
    TerminalSettings settings;
    settings.port = 0;
    settings.maximumBuffer = 4096;
    settings.maximumConnections = 100;
    settings.idle = std::chrono::minutes(1);
    settings.pause = std::chrono::milliseconds(100);
    return settings;
}

/// A hub, a server on a free port of this machine, and all that comes out of them.
class Desk : public HubAnnouncer
{
public:
    explicit Desk(const TerminalSettings& settings = usualSettings()) : HubAnnouncer(hub)
    {
        server = std::make_unique<TerminalServer>(*this, settings);
        QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &hub, [this](MobData& report) {
            reports += QByteArray::number(report.idObject) + '@' + QByteArray::number(report.timeUnix);
            if (receiver)
                receiver();
        });
        QObject::connect(server.get(), &TerminalServer::happened, &hub, [this](const QString& text) { log += text; });
        QVERIFY2(server->listen(), qPrintable(server->errorString()));
    }

    void takePacket(const QByteArray& packet) override { packets += packet; }

    std::unique_ptr<QTcpSocket> terminal(const QByteArray& bytes = QByteArray(),
                                         const QString& source = QString()) const
    {
        auto socket = std::make_unique<QTcpSocket>();
        if (!source.isEmpty())
            socket->bind(QHostAddress(source));
        socket->connectToHost(QStringLiteral("127.0.0.1"), server->port());
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        socket->waitForConnected(patience);
        socket->write(bytes);
        return socket;
    }

    DataPumpNotifyer hub;
    std::unique_ptr<TerminalServer> server;
    QByteArrayList packets;
    QByteArrayList reports;
    QStringList log;
    std::function<void()> receiver; // of every report
};

QByteArray endsOf(const TerminalCounters& counters)
{
    const auto times = [](const char* end, qint64 count) { return QByteArray(end).repeated(static_cast<int>(count)); };
    return times("ended", counters.ended) + times("cutOff", counters.cutOff) +
           times("closedForRubbish", counters.closedForRubbish) + times("closedForSilence", counters.closedForSilence) +
           times("closedForObject", counters.closedForObject) + times("closedHere", counters.closedHere);
}

QByteArray numbers(const QList<qint64>& counts)
{
    QByteArrayList texts;
    for (const qint64 count : counts)
        texts += QByteArray::number(count);
    return texts.join(' ');
}

qint64 sumOfEnds(const TerminalCounters& counters)
{
    return counters.ended + counters.cutOff + counters.closedForRubbish + counters.closedForSilence +
           counters.closedForObject + counters.madeRoom + counters.closedHere;
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
        QCOMPARE(desk.packets.size(), decoded.packets + decoded.rawOnly);
        for (const QByteArray& packet : desk.packets)
            QVERIFY2(packet == good || packet == bytesOf("F") || packet == longForm, packet.toHex());
        QCOMPARE(
            numbers({decoded.packets, decoded.badChecksums, decoded.rejected, decoded.skippedBytes, decoded.rawOnly}),
            cell("counts"));

        // Whatever it was, it is the matter of that one connection.
        desk.reports.clear();
        other->write(good);
        const auto later = desk.terminal(good);
        QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), 2, patience);
    }

    void silenceEndsAConnection_data() { addTableRows("terminals-silence.txt"); }

    void silenceEndsAConnection()
    {
        const int closed = cell("closed").toInt();
        TerminalSettings settings = usualSettings();
        settings.idle = std::chrono::milliseconds(cell("idle").toInt());
        settings.newcomer = std::chrono::milliseconds(cell("newcomer").toInt());
        settings.maximumBuffer = 1 << 20;
        Desk desk(settings);
        const auto longForms = desk.terminal();
        const auto halfAPacket = desk.terminal(good + good.left(5));
        const auto rubbish = desk.terminal();
        const auto talking = desk.terminal();
        QTimer beat;
        connect(&beat, &QTimer::timeout, this, [&] {
            rubbish->write("?");
            longForms->write(longForm);
            talking->write(good);
        });
        beat.start(10);
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().closedForSilence, closed, patience);
        QCOMPARE(desk.server->counters().open, 4 - closed);
    }

    void unfinishedPacketsAreLimitedTogether()
    {
        TerminalSettings settings = usualSettings();
        settings.maximumBuffer = 1 << 20;
        settings.maximumHeld = 70000;
        Desk desk(settings);
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        for (int round = 1; round <= 3; ++round) { // what is closed is held no more
            for (int i = 0; i < 3; ++i)
                sockets.push_back(desk.terminal(bytesOf("a4d500001160ff") + bytesOf("55*30000")));
            QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().closedForRubbish, round, patience);
            QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 2, patience);
            const auto terminal = desk.terminal(good + good.left(5));
            QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), round, patience);
            sockets.clear();
            QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 1, patience);
        }
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

    void oneThatIsTooFastWaits()
    {
        constexpr int packets = 2000;
        TerminalSettings settings = usualSettings(); // its pause is short beside the wait in the middle of packets
        settings.bytesPerSecond = static_cast<int>(packets * good.size() / 2);
        Desk desk(settings);
        QElapsedTimer time;
        time.start();
        const auto fast = desk.terminal(good.repeated(packets));
        fast->disconnectFromHost();
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().slowed, 1, patience);
        const auto other = desk.terminal(bytesOf("F"));
        QTRY_COMPARE_WITH_TIMEOUT(endsOf(desk.server->counters()), QByteArray("ended"), patience);
        QVERIFY2(time.elapsed() > 900, qPrintable(QString::number(time.elapsed()))); // half of it at once
        QCOMPARE(desk.reports.size(), packets + 2);
        QVERIFY2(desk.reports.indexOf("18@3") < packets * 3 / 4, "the other waited too");
        QCOMPARE(desk.server->counters().decoded.skippedBytes, 0);
        QVERIFY(desk.server->counters().slowedMilliseconds > 500);
        QCOMPARE(desk.log.filter(QStringLiteral("BytesPerSecond")).size(), 1);
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

    void roomIsMade_data() { addTableRows("terminals-room.txt"); }

    void roomIsMade()
    {
        TerminalSettings settings = usualSettings();
        settings.maximumConnections = 3;
        Desk desk(settings);
        std::map<char, std::unique_ptr<QTcpSocket>> terminals;
        QMap<QString, char> names; // by what the log calls them
        for (const QByteArray& step : cell("steps").split(' ')) {
            auto& terminal = terminals[step[0]];
            const qint64 accepted = desk.server->counters().accepted;
            if (!terminal) {
                terminal = desk.terminal();
                names.insert(QStringLiteral("port %1 closed").arg(terminal->localPort()), step[0]);
                QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().accepted, accepted + 1, patience);
            }
            if (step.size() > 1) {
                const auto before = desk.packets.size();
                terminal->write(step[1] == '+' ? good : longForm);
                QTRY_COMPARE_WITH_TIMEOUT(desk.packets.size(), before + 1, patience);
            }
            QCoreApplication::processEvents(); // what has become of it is judged after it was handed over
        }
        QByteArray gone;
        for (const QString& text : desk.log.filter(QStringLiteral("makes room"))) {
            const QString name = text.section(QLatin1Char(' '), 1, 3).remove(QLatin1Char(':'));
            gone += names.value(name, '?');
        }
        QCOMPARE(gone, cell("gone"));
        QCOMPARE(sumOfEnds(desk.server->counters()), gone.size());
    }

    void strangersThatComeBackKeepNoTerminalOut()
    {
        constexpr int many = 2000;
        TerminalSettings settings = usualSettings();
        settings.maximumConnections = many;
        settings.perAddress = 0;
        Desk desk(settings);
        allowDescriptors(2 * (many + 100));
        const quint16 port = desk.server->port();
        std::vector<QTcpSocket> strangers(many + 100);
        for (QTcpSocket& stranger : strangers) {
            const auto come = [&stranger, port] { stranger.connectToHost(QStringLiteral("127.0.0.1"), port); };
            connect(&stranger, &QTcpSocket::disconnected, &stranger, come, Qt::QueuedConnection);
            come();
        }
        QTRY_VERIFY_WITH_TIMEOUT(desk.server->counters().madeRoom >= many, patience);
        const auto terminal = desk.terminal();
        const qint64 enough = desk.server->counters().madeRoom + many;
        QElapsedTimer time;
        time.start();
        while (desk.server->counters().madeRoom < enough || desk.reports.size() < 50) {
            QVERIFY(time.elapsed() < patience);
            const auto reports = desk.reports.size();
            terminal->write(good);
            QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), reports + 1, 1000);
        }
        const TerminalCounters counters = desk.server->counters();
        QCOMPARE(counters.open, many);
        QCOMPARE(counters.accepted, counters.open + sumOfEnds(counters));
    }

    void addresses_data() { addTableRows("terminals-addresses.txt"); }

    void addresses()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("terminals.ini"));
        writeFile(file, "[Terminals]\nPort=0\n" + cell("ini"));
        QSettings ini(file, QSettings::IniFormat);
        const TerminalSettings settings = TerminalSettings::read(ini);
        QCOMPARE(settings.complaints.size(), cell("complaints").toInt());
        Desk desk(settings);
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        const auto refused = [&] {
            const TerminalCounters counters = desk.server->counters();
            return counters.refusedForAddress + counters.refusedPerAddress;
        };
        for (const QByteArray& source : cell("sources").split(' ')) {
            const qint64 before = desk.server->counters().accepted + refused();
            if (source == "-") {
                sockets.front()->disconnectFromHost();
                QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().ended, 1, patience);
                continue;
            }
            sockets.push_back(desk.terminal(QByteArray(), QString::fromLatin1(source)));
            QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().accepted + refused(), before + 1, patience);
        }
        const TerminalCounters counters = desk.server->counters();
        QCOMPARE(numbers({counters.accepted, counters.refusedForAddress, counters.refusedPerAddress}), cell("counts"));
        QCOMPARE(desk.log.filter(QStringLiteral("refused")).size(), refused());
    }

    void readingCanWait()
    {
        TerminalSettings settings = usualSettings();
        settings.idle = std::chrono::milliseconds(300);
        settings.maximumConnections = 3;
        Desk desk(settings);
        desk.receiver = [&] { desk.server->setReading(false); };
        std::vector<std::unique_ptr<QTcpSocket>> terminals;
        terminals.push_back(desk.terminal()); // silent, and served when reading ends
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 1, patience);
        for (int i = 0; i < 4; ++i) { // the last two wait for room
            terminals.push_back(desk.terminal(bytesOf("F*2")));
            QTRY_VERIFY_WITH_TIMEOUT(!desk.reports.isEmpty(), patience);
        }
        QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 3, patience);
        QTest::qWait(900); // three times what ends a connection
        QCOMPARE(desk.server->counters().open, 3);
        QCOMPARE(sumOfEnds(desk.server->counters()), 0);
        QCOMPARE(desk.reports, (QByteArrayList{"18@3", "18@0"})); // of a packet all
        desk.receiver = nullptr;
        desk.server->setReading(true);
        QTRY_COMPARE_WITH_TIMEOUT(desk.reports.size(), 16, patience);
    }

    void drainTakesWhatHasCome()
    {
        Desk desk;
        std::vector<std::unique_ptr<QTcpSocket>> terminals;
        for (int i = 0; i < 60; ++i) {
            terminals.push_back(desk.terminal(good.repeated(3000) + good.left(5)));
            terminals.back()->waitForBytesWritten(patience);
            if (i == 30)
                QTRY_COMPARE_WITH_TIMEOUT(desk.server->counters().open, 31, patience);
        }
        desk.server->drain(std::chrono::seconds(20));
        QCOMPARE(desk.reports.size(), 60 * 3000);
        QCOMPARE(desk.server->counters().closedHere, 60);
        QCOMPARE(desk.server->counters().open, 0);
        QCOMPARE(desk.terminal()->state(), QAbstractSocket::UnconnectedState);
    }

    void drainEndsInTime()
    {
        Desk desk;
        desk.receiver = [] { QThread::msleep(10); };
        const auto terminal = desk.terminal(good.repeated(1000));
        QTRY_VERIFY_WITH_TIMEOUT(desk.reports.size() > 1, patience);
        QElapsedTimer time;
        time.start();
        desk.server->drain(std::chrono::milliseconds(100));
        QVERIFY2(time.elapsed() < 1000, qPrintable(QString::number(time.elapsed())));
        QVERIFY(desk.reports.size() < 1000);
        QVERIFY2(desk.log.join(QString()).contains(QStringLiteral("unread")), qPrintable(desk.log.join(QString())));
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
        const TerminalSettings receiver = TerminalSettings::readReceiver(ini);
        QVERIFY(receiver.address == QLatin1String("::1") && receiver.port == 7 && !receiver.decode.convert);
        QVERIFY(receiver.decode.checksumFromZero && receiver.maximumConnections == 10000 && receiver.perAddress == 0);
        QVERIFY(receiver.allowFrom.size() == 2 && receiver.complaints.isEmpty());
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
            startShell(simulate,
                       QStringLiteral("exec \"$simulate\" --connect %1 ").arg(place) + QLatin1String(options));
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
