#include "terminalserver.h"

#include "testfiles.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/interfaces.h>

#include <QDateTime>
#include <QEventLoop>
#include <QProcess>
#include <QSettings>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

namespace {

constexpr int patience = 20000; // ms, after which a test has failed

QByteArray sealed(const char* hex)
{
    QByteArray packet = QByteArray::fromHex(hex);
    Append_CRC_CCITT(packet, false);
    return packet;
}

const QByteArray good = sealed("a4d50000110d0001024123");

/// The bytes of a word as terminals.txt describes it, but for its slash.
QByteArray wordBytes(const QByteArray& word)
{
    static const QHash<QByteArray, QByteArray> packets{
        {"P", good},
        {"F", sealed("a4d50000121800010ee2010000000200000003000000")},
        {"B", good.left(11) + "??"},
        {"J", sealed("a4d50000110d0001ff4123")},
        {"N", sealed("a4d500001113000802e2e2e2e2e2e2e2e2")},
        {"L", QByteArray::fromHex("a4d6") + QByteArray(543, '\x11')},
    };
    const int star = word.indexOf('*');
    const QByteArray once = star < 0 ? word : word.left(star);
    return packets.value(once, QByteArray::fromHex(once)).repeated(star < 0 ? 1 : word.mid(star + 1).toInt());
}

/// A hub, a server on a free port of this machine, and all that comes out of them.
class Desk
{
public:
    explicit Desk(const TerminalSettings& settings = freePort())
        : server(std::make_unique<TerminalServer>(hub, settings))
    {
        QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &hub, [this](MobData& report) {
            reports += QByteArray::number(report.idObject) + '@' + QByteArray::number(report.timeUnix);
            if (receiver)
                receiver();
            if (look)
                look();
        });
        QObject::connect(server.get(), &TerminalServer::happened, &hub, [this](const QString& text) {
            log += text;
            if (look)
                look();
        });
        QVERIFY2(server->listen(), qPrintable(server->errorString()));
    }

    static TerminalSettings freePort()
    {
        TerminalSettings settings;
        settings.port = 0;
        settings.maximumBuffer = 4096;
        return settings;
    }

    /// Runs the event loop until this holds; it is looked at after every report and every text for the log.
    bool until(const std::function<bool()>& holds)
    {
        if (holds())
            return true;
        QEventLoop loop;
        look = [&] {
            if (holds())
                loop.quit();
        };
        QTimer::singleShot(patience, &loop, &QEventLoop::quit);
        loop.exec();
        look = nullptr;
        return holds();
    }

    std::unique_ptr<QTcpSocket> terminal()
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), server->port());
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        socket->waitForConnected(patience);
        return socket;
    }

    /// "object@time" of every report, "*N" behind those that come N times in a row.
    QByteArray announced() const
    {
        QByteArrayList words;
        for (int i = 0, run = 1; i < reports.size(); ++i, ++run) {
            if (i + 1 < reports.size() && reports[i + 1] == reports[i])
                continue;
            words += reports[i] + (run > 1 ? '*' + QByteArray::number(run) : QByteArray());
            run = 0;
        }
        return words.join(' ');
    }

    DataPumpNotifyer hub;
    std::unique_ptr<TerminalServer> server;
    QByteArrayList reports;
    QStringList log;
    std::function<void()> receiver; // of every report
    std::function<void()> look;
};

void send(QTcpSocket& socket, const QByteArray& bytes, int pieceSize)
{
    for (int i = 0; i < bytes.size(); i += pieceSize) {
        socket.write(bytes.mid(i, pieceSize));
        socket.flush();
        QCoreApplication::processEvents();
    }
}

QByteArray endText(const TerminalCounters& counters)
{
    QByteArray text;
    for (const auto& [name, count] : {std::pair("ended", counters.ended), std::pair("cutOff", counters.cutOff),
                                      std::pair("closedForRubbish", counters.closedForRubbish),
                                      std::pair("closedForSilence", counters.closedForSilence)})
        text += count > 0 ? QByteArray(name) + (count > 1 ? "!" : "") : QByteArray();
    return text;
}

} // namespace

class TestTerminalServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void terminals_data() { addTableRows("terminals.txt"); }

    void terminals()
    {
        QByteArrayList words = cell(0).simplified().split(' ');
        const bool waits = words.removeAll("silence") > 0;
        TerminalSettings settings = Desk::freePort();
        if (waits)
            settings.idle = std::chrono::milliseconds(30);
        Desk desk(settings);
        const std::unique_ptr<QTcpSocket> other = waits ? nullptr : desk.terminal();
        const std::unique_ptr<QTcpSocket> terminal = desk.terminal();
        for (const QByteArray& word : words) {
            const bool byteByByte = word.startsWith('/');
            const QByteArray bytes = wordBytes(word.mid(byteByByte ? 1 : 0));
            send(*terminal, bytes, byteByByte ? 1 : qMax(bytes.size(), 1));
        }
        if (!waits)
            terminal->disconnectFromHost();
        QVERIFY(desk.until([&] { return !endText(desk.server->counters()).isEmpty(); }));

        const TerminalCounters counters = desk.server->counters();
        const DecodeCounts& decoded = counters.decoded;
        QCOMPARE(endText(counters), cell(2));
        QCOMPARE(desk.announced(), cell(1));
        QCOMPARE(decoded.reports, desk.reports.size());
        QByteArrayList numbers;
        for (const qint64 count : {decoded.packets, decoded.badChecksums, decoded.rejected, decoded.skippedBytes})
            numbers += QByteArray::number(count);
        QCOMPARE(numbers.join(' '), cell(3));

        // Whatever it was, it is the matter of that one connection.
        desk.reports.clear();
        const std::unique_ptr<QTcpSocket> later = desk.terminal();
        for (QTcpSocket* socket : {other.get(), later.get()}) {
            if (socket)
                socket->write(good);
        }
        QVERIFY(desk.until([&] { return desk.reports.size() == (waits ? 1 : 2); }));
    }

    void connectionsAreLimited()
    {
        TerminalSettings settings = Desk::freePort();
        settings.maximumConnections = 3;
        Desk desk(settings);
        std::vector<std::unique_ptr<QTcpSocket>> sockets(40); // more than are taken in at a time, and than texts told
        for (auto& socket : sockets)
            socket = desk.terminal();
        QVERIFY(desk.until([&] { return desk.server->counters().refused == 37; }));
        QCOMPARE(desk.server->counters().open, 3);
        sockets.front()->write(good);
        sockets.front()->disconnectFromHost();
        QVERIFY(desk.until([&] { return desk.reports.size() == 1 && desk.server->counters().open == 2; }));
        // A listener, 3 taken, 37 refused, one closed: what is not told is counted.
        QVERIFY(desk.until([&] {
            qint64 texts = 0;
            for (const QString& text : qAsConst(desk.log))
                texts += text.contains(QStringLiteral("left out")) ? text.section(QLatin1Char(' '), 0, 0).toInt() : 1;
            return texts == 1 + 3 + 37 + 1 && desk.log.size() < texts;
        }));
        const std::unique_ptr<QTcpSocket> next = desk.terminal();
        next->write(good);
        QVERIFY(desk.until([&] { return desk.reports.size() == 2; }));
        QCOMPARE(desk.server->counters().accepted, 4);
    }

    void aFloodLeavesRoom()
    {
        Desk desk;
        const std::unique_ptr<QTcpSocket> flood = desk.terminal();
        const std::unique_ptr<QTcpSocket> other = desk.terminal();
        constexpr int packets = 30000;
        flood->write(good.repeated(packets));
        other->write(wordBytes("F"));
        int turns = 0;
        QTimer heartbeat;
        connect(&heartbeat, &QTimer::timeout, this, [&] { ++turns; });
        heartbeat.start(0);
        QElapsedTimer work;
        desk.receiver = [&] { // takes 20 µs for a report
            for (work.start(); work.nsecsElapsed() < 20000;)
                ;
        };
        QVERIFY(desk.until([&] { return desk.reports.size() == packets + 2; }));
        QVERIFY2(desk.reports.indexOf("18@3") < 500, "after some turns of the flood");
        QVERIFY2(turns > 50, qPrintable(QString::number(turns))); // of 600 ms with 5 ms of work each
    }

    void aReceiverMayDoAnything()
    {
        Desk desk;
        const auto sendAll = [&] {
            auto terminal = desk.terminal();
            terminal->write(good.repeated(3));
            return terminal;
        };
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        sockets.push_back(sendAll());
        int depth = 0;
        int deepest = 0;
        desk.receiver = [&] { // as a message box does
            deepest = qMax(deepest, ++depth);
            QEventLoop loop;
            QTimer::singleShot(5, &loop, &QEventLoop::quit);
            sockets.push_back(desk.terminal());
            loop.exec();
            --depth;
        };
        QVERIFY(desk.until([&] { return desk.reports.size() == 3 && depth == 0; }));
        QCOMPARE(deepest, 1);

        desk.receiver = [&] { desk.server->close(); };
        sockets.push_back(sendAll());
        QVERIFY(desk.until([&] { return desk.reports.size() == 4; }));
        QCOMPARE(desk.server->counters().open, 0);
        QVERIFY(desk.server->listen());
        desk.receiver = [&] { desk.server.reset(); };
        sockets.push_back(sendAll());
        QVERIFY(desk.until([&] { return desk.reports.size() == 5; }));
    }

    void cannotListen()
    {
        const Desk desk;
        TerminalSettings settings;
        settings.port = desk.server->port();
        DataPumpNotifyer hub;
        TerminalServer second(hub, settings);
        QVERIFY(!second.listen() && second.port() == 0);
        QVERIFY2(second.errorString().contains(QString::number(settings.port)), qPrintable(second.errorString()));
        settings.address = QStringLiteral("desk");
        QVERIFY(!TerminalServer(hub, settings).listen());
    }

    void settings()
    {
        const QTemporaryDir folder;
        QSettings ini(folder.filePath(QStringLiteral("desk.ini")), QSettings::IniFormat);
        TerminalSettings read = TerminalSettings::read(ini);
        QVERIFY(read.address == QLatin1String("127.0.0.1") && read.port == 20545 && read.complaints.isEmpty());
        const auto set = [&](const char* key, const char* value) {
            ini.setValue(QStringLiteral("Terminals/") + QLatin1String(key), QLatin1String(value));
        };
        set("Address", "0.0.0.0");
        set("Port", "0");
        set("MaximumConnections", "0");
        set("MaximumBuffer", "lots");
        set("IdleSeconds", "0.05");
        set("Convert", "false");
        read = TerminalSettings::read(ini);
        QVERIFY(read.address == QLatin1String("0.0.0.0") && read.port == 0 && !read.decode.convert);
        QVERIFY(read.maximumConnections == 2000 && read.maximumBuffer == 131072 && read.idle.count() == 50);
        QCOMPARE(read.complaints.join(QLatin1Char('|')),
                 QStringLiteral("MaximumConnections=0 is no number from 1 to 30000; 2000 is used|"
                                "MaximumBuffer=lots is no number from 1024 to 16777216; 131072 is used"));
    }

    void simulatedTerminals()
    {
        Desk desk;
        QProcess simulate;
        const auto run = [&](const QString& rest) {
            simulate.start(
                QStringLiteral(PARDEL_SIMULATE),
                QStringLiteral("--connect localhost:%1 %2").arg(desk.server->port()).arg(rest).split(QLatin1Char(' ')));
        };
        connect(&simulate, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, [&] {
            if (desk.look)
                desk.look();
        });
        const qint64 begin = QDateTime::currentSecsSinceEpoch();
        QMap<int, qint64> last;
        connect(&desk.hub, &DataPumpNotifyer::OnDataRecievedSignal, this, [&](MobData& report) {
            const qint64 now = QDateTime::currentSecsSinceEpoch();
            QVERIFY(report.timeUnix >= begin - 1 && report.timeUnix <= now);
            QVERIFY(report.latitude > 54 * 10000000 && report.latitude < 57 * 10000000);
            last[report.idObject] = report.timeUnix;
        });
        const auto ended = [&] {
            return simulate.state() == QProcess::NotRunning && desk.server->counters().open == 0;
        };
        QElapsedTimer time;
        time.start();
        run(QStringLiteral("--terminals 60 --rate 20 --packets 10"));
        QVERIFY(simulate.waitForStarted() && desk.until(ended));
        QCOMPARE(simulate.readAllStandardError(), QByteArray());
        QCOMPARE(simulate.exitCode(), 0);
        QVERIFY2(time.elapsed() >= 10 * 1000 / 20 - 50, "at the rate, not at once");
        const TerminalCounters counters = desk.server->counters();
        QVERIFY(counters.accepted == 60 && counters.ended == 60 && counters.decoded.packets == 600);
        QVERIFY(last.firstKey() == 1 && last.lastKey() == 60 && last.size() == 60);

        run(QStringLiteral("--terminals 2 --rate 100"));
        const int before = desk.reports.size();
        QVERIFY(desk.until([&] { return desk.reports.size() > before; }));
        const quint16 port = desk.server->port();
        desk.server->close();
        QVERIFY(desk.until([&] { return simulate.state() == QProcess::NotRunning; }));
        QCOMPARE(simulate.exitCode(), 2);
        const QString errors = QString::fromUtf8(simulate.readAllStandardError());
        QVERIFY2(errors.count(QLatin1Char('\n')) == 1 &&
                     errors.contains(QStringLiteral("has lost its connection to localhost:%1: ").arg(port)),
                 qPrintable(errors));
    }
};

QTEST_GUILESS_MAIN(TestTerminalServer)
#include "tst_terminalserver.moc"
