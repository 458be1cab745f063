#include "capturereplay.h"
#include "packetbuilder.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QEventLoop>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

namespace {

constexpr qint32 begin = 1'700'000'000; // Unix seconds

QByteArray packetOf(qint16 object, qint32 time)
{
    return PacketBuilder(object).group({RecordBuilder(1).little32(static_cast<quint32>(time))}).sealed();
}

/// A replay, and what comes out of it.
class Player
{
public:
    Player() : replay(std::make_unique<CaptureReplay>(hub, DecodeSettings{true, false}))
    {
        QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &hub, [this](MobData& report) {
            moments += time.elapsed();
            objects += report.idObject;
            if (receiver)
                receiver();
        });
        QObject::connect(replay.get(), &CaptureReplay::positionChanged, &hub,
                         [this](double position) { positions += position; });
        QObject::connect(replay.get(), &CaptureReplay::happened, &hub, [this](const QString& text) { last = text; });
        QObject::connect(replay.get(), &CaptureReplay::stateChanged, &loop, [this](CaptureReplay::State state) {
            if (state != CaptureReplay::State::Running)
                loop.quit();
        });
    }

    /// Plays until it stops or pauses.
    bool play(const QByteArray& capture, double speed)
    {
        QFile file(folder.filePath(QStringLiteral("capture")));
        if (!file.open(QIODevice::WriteOnly) || file.write(capture) != capture.size())
            return false;
        file.close();
        replay->setSpeed(speed);
        time.start();
        return replay->start(file.fileName()) && wait();
    }

    bool wait()
    {
        bool inTime = true;
        QTimer::singleShot(20000, &loop, [&] {
            inTime = false;
            loop.quit();
        });
        loop.exec();
        return inTime;
    }

    DataPumpNotifyer hub;
    QTemporaryDir folder;
    QEventLoop loop;
    QElapsedTimer time;
    std::unique_ptr<CaptureReplay> replay;
    QList<int> objects;
    QList<qint64> moments; // ms
    QList<double> positions;
    QString last;                   // text for the log
    std::function<void()> receiver; // of every report
};

} // namespace

class TestCaptureReplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeCaptures_data()
    {
        QTest::addColumn<QByteArray>("capture");
        QTest::addColumn<int>("reports");
        QTest::addColumn<QString>("played");
        const QByteArray sample = contentOf(QStringLiteral("sample.bin"));
        const QByteArray packet = packetOf(17, begin);
        const QString good = QStringLiteral("(%1 packets, 0 bad checksums, 0 rejected, 0 bytes skipped)");
        QTest::newRow("raw") << sample << 35 << good.arg(24);
        QTest::newRow("many pieces") << sample.repeated(100) << 3500 << good.arg(2400);
        QTest::newRow("hex") << "# two\n" + packet.toHex() + "\n" + packet.toHex(' ') << 2 << good.arg(2);
        QTest::newRow("nothing") << QByteArray() << 0 << good.arg(0);
        QTest::newRow("rubbish, a bad checksum, a packet that is cut off")
            << "\xff\xff" + packet.left(packet.size() - 1) + '?' + packet + packet.left(6) << 1
            << QStringLiteral("(1 packets, 1 bad checksums, 0 rejected, 8 bytes skipped)");
        QTest::newRow("a packet inside one that is cut off")
            << QByteArray::fromHex("a4d5000011ffff") + packet << 1
            << QStringLiteral("(1 packets, 0 bad checksums, 0 rejected, 7 bytes skipped)");
    }

    void wholeCaptures()
    {
        QFETCH(const QByteArray, capture);
        QFETCH(const int, reports);
        QFETCH(const QString, played);
        Player player;
        QVERIFY(player.play(capture, CaptureReplay::asFastAsPossible));
        QCOMPARE(player.objects.size(), reports);
        QCOMPARE(player.replay->counts().reports, reports);
        QVERIFY2(player.last.endsWith(played), qPrintable(player.last));
        QVERIFY(std::is_sorted(player.positions.cbegin(), player.positions.cend()));
        QCOMPARE(player.positions.last(), 1.0);
        QCOMPARE(player.positions.count(1.0), 1);
    }

    void waitsAsTheTerminalsDid()
    {
        Player player;
        const QByteArray capture = packetOf(1, begin) + packetOf(2, begin - 5) + packetOf(3, begin + 1) +
                                   packetOf(4, 0) + packetOf(5, begin + 2) + packetOf(6, begin + 86402) +
                                   packetOf(7, begin + 86403) + packetOf(8, begin + 3) + packetOf(9, begin + 4);
        QVERIFY(player.play(capture, 10));
        QCOMPARE(player.objects, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
        const qint64 due[] = {0, 0, 100, 100, 200, 200, 300, 300, 400}; // ms: jumps and late packets cost nothing
        for (int i = 0; i < 9; ++i)
            QVERIFY2(player.moments[i] >= due[i] - 2, qPrintable(QString::number(player.moments[i])));
        QVERIFY2(player.moments.last() < 10000, "the jumps were waited for");
    }

    void pausesAndChangesSpeed()
    {
        Player player;
        player.receiver = [&] {
            if (player.objects.size() == 1)
                player.replay->pause();
        };
        const QByteArray capture = packetOf(1, begin) + packetOf(2, begin) + packetOf(3, begin + 500);
        QVERIFY(player.play(capture, 1));
        QCOMPARE(player.objects.size(), 1);
        QCOMPARE(player.replay->state(), CaptureReplay::State::Paused);
        player.receiver = [&] { QTimer::singleShot(0, player.replay.get(), [&] { player.replay->setSpeed(10000); }); };
        player.replay->resume();
        QVERIFY(player.wait());
        QCOMPARE(player.objects.size(), 3);
        QVERIFY2(player.moments[2] - player.moments[1] >= 48, "the wait became shorter, but did not go");
    }

    void aReceiverMayDoAnything()
    {
        Player player;
        int depth = 0;
        int deepest = 0;
        const QByteArray capture = packetOf(1, begin).repeated(3);
        player.receiver = [&] { // as a message box does
            deepest = qMax(deepest, ++depth);
            QEventLoop loop;
            QTimer::singleShot(5, &loop, &QEventLoop::quit);
            loop.exec();
            --depth;
        };
        QVERIFY(player.play(capture, CaptureReplay::asFastAsPossible));
        QVERIFY(player.objects.size() == 3 && deepest == 1);
        player.receiver = [&] { player.replay->stop(); };
        QVERIFY(player.play(capture, CaptureReplay::asFastAsPossible));
        QCOMPARE(player.objects.size(), 4);
        player.receiver = [&] {
            player.receiver = nullptr;
            player.replay->start(player.folder.filePath(QStringLiteral("capture")));
        };
        player.play(capture, CaptureReplay::asFastAsPossible); // ends the waiting when it stops for the new start
        if (player.replay->state() == CaptureReplay::State::Running)
            QVERIFY(player.wait());
        QCOMPARE(player.objects.size(), 4 + 1 + 3);
        player.receiver = [&] {
            player.replay.reset();
            player.loop.quit();
        };
        QVERIFY(player.play(capture, CaptureReplay::asFastAsPossible));
        QCOMPARE(player.objects.size(), 9);
    }

    void leavesRoom()
    {
        Player player;
        int turns = 0;
        QTimer heartbeat;
        connect(&heartbeat, &QTimer::timeout, this, [&] { ++turns; });
        heartbeat.start(0);
        QElapsedTimer work;
        player.receiver = [&] { // takes 20 µs for a report
            for (work.start(); work.nsecsElapsed() < 20000;)
                ;
        };
        QVERIFY(player.play(packetOf(1, begin).repeated(20000), CaptureReplay::asFastAsPossible));
        QCOMPARE(player.objects.size(), 20000);
        QVERIFY2(turns > 40, qPrintable(QString::number(turns))); // of 400 ms with 5 ms of work each
    }

    void cannotPlay()
    {
        Player player;
        for (const QString& path : {QStringLiteral("/nowhere/x"), QStringLiteral("/"), QStringLiteral("/dev/zero")}) {
            QVERIFY(!player.replay->start(path));
            QVERIFY2(player.replay->errorString().contains(path), qPrintable(player.replay->errorString()));
            QCOMPARE(player.replay->state(), CaptureReplay::State::Stopped);
        }
    }
};

QTEST_GUILESS_MAIN(TestCaptureReplay)
#include "tst_capturereplay.moc"
