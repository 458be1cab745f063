#include "capturereplay.h"
#include "packetbuilder.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QTemporaryFile>
#include <QThread>

#include <functional>
#include <memory>

namespace {

constexpr int patience = 20000;         // ms, after which a test has failed
constexpr qint32 begin = 1'700'000'000; // Unix seconds; 0 is no time

/// A packet for each of these seconds since the beginning.
QByteArray captureOf(const QList<qint32>& seconds)
{
    QByteArray capture;
    for (const qint32 second : seconds)
        capture += PacketBuilder(17).group({RecordBuilder(1).little32(static_cast<quint32>(begin + second))}).sealed();
    return capture;
}

/// A replay, and what comes out of it.
class Player
{
public:
    Player() : replay(std::make_unique<CaptureReplay>(hub, DecodeSettings{true, false}))
    {
        QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &hub, [this](MobData&) {
            moments += time.elapsed();
            if (receiver)
                receiver();
        });
        QObject::connect(replay.get(), &CaptureReplay::positionChanged, &hub,
                         [this](double position) { positions += position; });
        QObject::connect(replay.get(), &CaptureReplay::happened, &hub, [this](const QString& text) { last = text; });
    }

    void play(const QByteArray& capture, double speed)
    {
        QVERIFY(file.open() && file.write(capture) == capture.size() && file.flush());
        replay->setSpeed(speed);
        time.start();
        QVERIFY(replay->start(file.fileName()));
    }

    DataPumpNotifyer hub;
    QTemporaryFile file;
    QElapsedTimer time;
    std::unique_ptr<CaptureReplay> replay;
    QList<qint64> moments; // ms, of each report
    QList<double> positions;
    QString last;                   // text for the log
    std::function<void()> receiver; // of every report
};

} // namespace

class TestCaptureReplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeCaptures_data() { addTableRows("replays.txt"); }

    void wholeCaptures()
    {
        QByteArray capture = cell("capture");
        capture.replace("P", captureOf({0}).toHex());
        capture.replace("S", contentOf(QStringLiteral("sample.bin")).toHex());
        Player player;
        player.play(cell("form") == "raw" ? QByteArray::fromHex(capture) : capture, CaptureReplay::asFastAsPossible);
        QTRY_COMPARE_WITH_TIMEOUT(player.replay->state(), CaptureReplay::State::Stopped, patience);
        QCOMPARE(player.moments.size(), cell("reports").toInt());
        QCOMPARE(player.replay->counts().reports, cell("reports").toInt());
        QVERIFY2(player.last.endsWith(QLatin1String(cell("log"))), qPrintable(player.last));
    }

    void waitsAsTheTerminalsDid()
    {
        Player player;
        player.play(captureOf({0, -5, 1, -begin, 2, 86402, 86403, 3, 4}), 10);
        QTRY_COMPARE_WITH_TIMEOUT(player.replay->state(), CaptureReplay::State::Stopped, patience);
        const QList<qint64> due{0, 0, 100, 100, 200, 200, 300, 300, 400}; // ms: jumps and late packets cost nothing
        QCOMPARE(player.moments.size(), due.size());
        for (int i = 0; i < due.size(); ++i)
            QVERIFY2(player.moments[i] >= due[i] - 2, qPrintable(QString::number(player.moments[i])));
        QVERIFY2(player.moments.last() < 10000, "the jumps were waited for");
    }

    void pausesChangesSpeedAndStops()
    {
        Player player;
        player.receiver = [&] { player.replay->pause(); };
        player.play(captureOf({0, 0, 500, 1000}), 1);
        QTRY_COMPARE_WITH_TIMEOUT(player.replay->state(), CaptureReplay::State::Paused, patience);
        QCOMPARE(player.moments.size(), 1);
        player.receiver = [&] {
            if (player.moments.size() == 3)
                player.replay->stop();
        };
        player.replay->resume();
        QTRY_COMPARE_WITH_TIMEOUT(player.moments.size(), 2, patience);
        player.replay->setSpeed(10000);
        QTRY_COMPARE_WITH_TIMEOUT(player.replay->state(), CaptureReplay::State::Stopped, patience);
        QCOMPARE(player.moments.size(), 3);
        QVERIFY2(player.moments[2] - player.moments[1] >= 48, "the wait became shorter, but did not go");
    }

    void aReceiverMayDoAnything()
    {
        Player player;
        int depth = 0;
        player.receiver = [&] {
            QCOMPARE(++depth, 1);
            QTest::qWait(20); // as a message box does
            --depth;
            if (player.moments.size() == 3)
                player.replay.reset();
        };
        player.play(captureOf({0, 0, 0, 0}), CaptureReplay::asFastAsPossible);
        QTRY_VERIFY_WITH_TIMEOUT(!player.replay, patience);
        QCOMPARE(player.moments.size(), 3);
    }

    void leavesRoom()
    {
        Player player;
        player.receiver = [] { QThread::usleep(100); };
        player.play(captureOf({0}).repeated(3000), CaptureReplay::asFastAsPossible);
        QTRY_COMPARE_WITH_TIMEOUT(player.replay->state(), CaptureReplay::State::Stopped, patience);
        QCOMPARE(player.moments.size(), 3000);
        QVERIFY2(player.positions.size() > 50, "one for every turn of 5 ms");
        QVERIFY(std::is_sorted(player.positions.cbegin(), player.positions.cend()));
        QCOMPARE(player.positions.indexOf(1.0), player.positions.size() - 1);
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
