// The command line tools as their users run them.

#include "simulation.h"

#include "testfiles.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <QProcess>
#include <QTest>

#include <cmath>

#include <sys/resource.h>

namespace {

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

/// Runs a shell's command, in which $0 is pardel-decode and $1 pardel-simulate.
Outcome run(const QString& command, const QByteArray& input = QByteArray())
{
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TEST_DATA));
    process.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), command, QStringLiteral(PARDEL_DECODE), QStringLiteral(PARDEL_SIMULATE)});
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000))
        return Outcome();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class TestPrograms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesTheSampleCapture()
    {
        const Outcome json = run(QStringLiteral("\"$0\" --json --convert - < sample.bin"));
        QCOMPARE(json.status, 0);
        QCOMPARE(json.output, contentOf(QStringLiteral("sample.json")));
        QCOMPARE(json.errors, QByteArray());

        const Outcome table = run(QStringLiteral("\"$0\" --convert sample.bin"));
        QCOMPARE(table.output, contentOf(QStringLiteral("sample.table")));
        QVERIFY2(table.errors.startsWith("packets 24, reports 35, rejected 0, skipped bytes 0,"), table.errors);

        // What cannot be read does not keep the rest from being decoded; offsets begin anew in every file.
        const Outcome several = run(QStringLiteral("\"$0\" --json --convert sample.bin /nowhere/x sample.bin"));
        QCOMPARE(several.status, 2);
        QCOMPARE(several.output, json.output + json.output);
    }

    void decodes_data() { addTableRows("decode.txt"); }

    void decodes()
    {
        const QByteArray input = cell(1);
        const QByteArray output = cell(3);
        const QByteArray errors = cell(4);
        const Outcome outcome = run(QLatin1String("\"$0\" ") + QLatin1String(cell(0)),
                                    input.startsWith('x') ? QByteArray::fromHex(input) : input);
        QCOMPARE(outcome.status, cell(2).toInt());
        QVERIFY2(outcome.errors.startsWith(errors) && outcome.errors.isEmpty() == errors.isEmpty(), outcome.errors);
        QVERIFY2(outcome.output.contains(output) && outcome.output.isEmpty() == output.isEmpty(), outcome.output);
    }

    void endsWhenNobodyReads()
    {
        const Outcome headOnly = run(QStringLiteral("{ \"$1\" --terminals 9 --minutes 999; echo $? >&2; } | "
                                                    "{ \"$0\"; echo $? >&2; } | head -c 4"));
        QCOMPARE(headOnly.output + headOnly.errors, QByteArray("TIME0\n0\n"));
        const Outcome full = run(QStringLiteral("\"$1\" | \"$0\" --json > /dev/full"));
        QCOMPARE(full.status, 2);
        QCOMPARE(full.errors, QByteArray("pardel-decode: cannot write to standard output: No space left on device\n"));
    }

    void memoryStaysBounded()
    {
#if defined(__SANITIZE_ADDRESS__)
        QSKIP("the sanitizer's own memory would be measured");
#endif
        // The packet that makes most of its bytes: records of tag 226 that hold nothing but their tag, a report each.
        const QByteArray groups = ("\xFF\x02" + QByteArray(255, '\xE2')).repeated(254);
        const QByteArray packet = QByteArray::fromHex("a4d5000011 07ff") + groups + "??"; // 65 287 bytes
        QCOMPARE(run(QStringLiteral("\"$0\" --json"), packet.repeated(3)).status, 0);
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        QVERIFY2(usage.ru_maxrss < 64 * 1024, qPrintable(QString::number(usage.ru_maxrss)));
    }

    void simulatesTheSampleCapture()
    {
        const QString options = QStringLiteral("\"$1\" --terminals 3 --minutes 8 --seed 47");
        const Outcome raw = run(options);
        QCOMPARE(raw.output, contentOf(QStringLiteral("sample.bin")));
        QVERIFY(run(options + QStringLiteral("9")).output != raw.output);

        const Outcome hex = run(options + QStringLiteral(" --hex"));
        QCOMPARE(QByteArray::fromHex(hex.output), raw.output);
        QCOMPARE(hex.output.count('\n'), 24);

        for (const char* wrong :
             {"--terminals 0", "--terminals 32768", "--minutes x", "--seed -1", "extra", "--rate 1", "--packets 1",
              "--connect x", "--connect :1", "--connect x:0", "--connect x:65536", "--connect x:1 --hex",
              "--connect x:1 --rate 0.01", "--connect x:1 --rate nan", "--connect x:1 --packets 0"}) {
            const Outcome outcome = run(QLatin1String("\"$1\" ") + QLatin1String(wrong));
            QVERIFY2(outcome.status == 2 && outcome.errors.count('\n') == 1 && outcome.output.isEmpty(), wrong);
        }
    }

    void simulatesPlausibleTracks()
    {
        SimulationSettings settings;
        settings.terminals = 20;
        settings.minutes = 600;
        Simulation simulation(settings);
        QMap<int, MobData> last;
        int packets = 0;
        for (QByteArray packet = simulation.next(); !packet.isEmpty(); packet = simulation.next()) {
            MobData report;
            bool statusBit = false;
            QCOMPARE(TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, true), 1U);
            QVERIFY(statusBit && CRC_CCITT(packet, false) == 0);
            ++packets;
            const MobData before = last.value(report.idObject, report);
            const double north = (report.latitude - before.latitude) * 111.32e-7; // km
            const double east = (report.longitude - before.longitude) * 111.32e-7 * std::cos(0.96);
            QVERIFY(report.speed <= 110 && std::hypot(north, east) < 110.0 / 60 * 1.1);
            last[report.idObject] = report;
        }
        QCOMPARE(packets, settings.terminals * settings.minutes);
    }
};

QTEST_GUILESS_MAIN(TestPrograms)
#include "tst_programs.moc"
