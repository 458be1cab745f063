// The command line tools as their users run them.

#include "simulation.h"

#include "reporttext.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <QFile>
#include <QProcess>
#include <QTest>

#include <cmath>

#include <sys/resource.h>

namespace {

const QString decodeTool = QStringLiteral(PARDEL_DECODE);
const QString simulateTool = QStringLiteral(PARDEL_SIMULATE);

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Outcome run(const QString& program, const QString& arguments, const QByteArray& input = QByteArray())
{
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TEST_DATA));
    process.start(program, arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return Outcome();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QByteArray contentOf(const char* name)
{
    QFile file(QStringLiteral(TEST_DATA "/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot read ") + name;
}

QByteArray sealed(const QByteArray& hex, bool zeroInit = false)
{
    QByteArray packet = QByteArray::fromHex(hex);
    Append_CRC_CCITT(packet, zeroInit);
    return packet;
}

const QByteArray goodPacket = sealed("a4d5000011 0d00 01024123");

} // namespace

class TestPrograms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesTheSampleCapture();
    void decodes_data();
    void decodes();
    void writesAwkwardNumbers();
    void endsWhenNobodyReads();
    void memoryStaysBounded();
    void simulatesTheSampleCapture();
    void simulatesPlausibleTracks();
};

void TestPrograms::decodesTheSampleCapture()
{
    const QString path = QStringLiteral("sample.bin");
    const Outcome json = run(decodeTool, QStringLiteral("--json --convert -"), contentOf("sample.bin"));
    QCOMPARE(json.status, 0);
    QCOMPARE(json.output, contentOf("sample.json"));
    QCOMPARE(json.errors, QByteArray());

    const Outcome table = run(decodeTool, QStringLiteral("--convert ") + path);
    QCOMPARE(table.output, contentOf("sample.table"));
    QVERIFY2(table.errors.startsWith("packets 24, reports 35, rejected 0, skipped bytes 0, seconds 0."), table.errors);

    // What cannot be read does not keep the rest from being decoded; offsets begin anew in every file.
    const Outcome several = run(decodeTool, QStringLiteral("--json --convert %1 /nowhere/x %1").arg(path));
    QCOMPARE(several.status, 2);
    QCOMPARE(several.output, json.output + json.output);
}

void TestPrograms::decodes_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("errors");
    const auto row = [](const char* name, const char* arguments, const QByteArray& input, int status,
                        const QByteArray& output, const QByteArray& errors = QByteArray()) {
        QTest::newRow(name) << QString::fromLatin1(arguments) << input << status << output << errors;
    };
    const QByteArray status = "a4d5000011 0d00 01020c30";
    row("nothing", "--json", "", 0, "");
    row("accepted without a result", "--json", goodPacket, 0,
        R"({"offset":0,"size":13,"accepted":true,"result":0,"statusBit":null,"crc":"ok",)");
    row("status bit", "--json", sealed(status), 0, R"("result":1,"statusBit":false,"crc":"ok",)");
    row("checksum from 0", "--json --crc-init 0", sealed(status, true), 0, R"("crc":"ok",)");
    row("checksum wrong", "--json --crc-init 0", goodPacket, 0, R"("crc":"bad",)");
    row("skipped", "--json", "??" + goodPacket, 1, R"({"offset":2,)",
        "pardel-decode: standard input: skipped 2 bytes at offset 0\n");
    row("rejected", "--json", sealed("a4d5000011 0d00 01ff4123"), 1,
        R"("accepted":false,"result":0,"statusBit":null,"crc":"ok","report":{"idObject":17,)");
    row("long form", "--json --hex", "a4d60007" + QByteArray(1082, '0'), 0,
        R"({"offset":1,"size":545,"accepted":true,"result":128,"statusBit":null,"crc":"bad",)"
        R"("report":{"idObject":7,"latitude":0,"longitude":0,"speed":0,"course":0,"timeUnix":-1,"sensors":[]},)"
        R"("reports":[],"rawRecords":["0000)");
    row("table", "", sealed("a4d5000011 1e00 0102 34ff 010f 0b8f3c0d21 1f0a3efe 275c 00b95569"), 0,
        "\n2026-01-01 00:00:00       17  55.4515599   -2.9488609    72    184 ok   49=0 76=0 106=0 raw: 1, 2 bytes\n",
        "packets 1, reports 1, rejected 0, skipped bytes 0, seconds 0.");
    row("hex, a line skipped", "--json --hex", "# x\n" + goodPacket.toHex() + "\nxy\n", 1, R"({"offset":2,)",
        "pardel-decode: standard input: line 3 is not whole bytes in hex, or more than 1 MiB of them: skipped\n");
    row("hex, nothing but a checksum", "--json --hex", "ffff", 1,
        R"("size":2,"accepted":false,"result":0,"statusBit":null,"crc":"ok",)");
    row("hex, too small for a checksum", "--json --hex", "ff", 1, R"("crc":"bad",)");
    row("no file", "--json /nowhere/x", "", 2, "",
        "pardel-decode: cannot read /nowhere/x: No such file or directory\n");
    row("a folder", "--json /", "", 2, "", "pardel-decode: cannot read /: file to open is a directory\n");
    row("unknown option", "--jsn", "", 2, "", "pardel-decode: Unknown option 'jsn'. (see pardel-decode --help)\n");
    row("wrong start", "--crc-init 1", "", 2, "",
        "pardel-decode: --crc-init takes 0 or ffff, not \"1\". (see pardel-decode --help)\n");
    row("version", "--version", "", 0, "pardel-decode 5.4.574:c665e0a46fa2\n");
}

void TestPrograms::decodes()
{
    QFETCH(QString, arguments);
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, errors);
    const Outcome outcome = run(decodeTool, arguments, input);
    QTEST(outcome.status, "status");
    QVERIFY2(outcome.errors.startsWith(errors) && outcome.errors.isEmpty() == errors.isEmpty(), outcome.errors);
    QVERIFY2(outcome.output.contains(output) && outcome.output.isEmpty() == output.isEmpty(), outcome.output);
}

void TestPrograms::writesAwkwardNumbers()
{
    const Outcome outcome = run(decodeTool, QStringLiteral("--json"),
                                sealed("a4d5000011 3500 0706 32007fc00000 32007f800000 3200ff800000 320080000000 "
                                       "32003dcccccd 320000000001 32004f800000"));
    QByteArray expected;
    for (const char* value : {R"("nan")", R"("inf")", R"("-inf")", "-0.0", "0.1", "1e-45", "4294967296"}) {
        expected += QByteArray(R"({"number":-1,"type":50,"value":-21,"status":0},{"number":-1,"type":56,"value":)") +
                    value + R"(,"status":0},)";
    }
    QVERIFY2(outcome.output.contains(expected), outcome.output);
}

void TestPrograms::endsWhenNobodyReads()
{
    const auto shell = [](const char* script) {
        QProcess process;
        process.start(QStringLiteral("/bin/sh"),
                      {QStringLiteral("-c"), QLatin1String(script), decodeTool, simulateTool});
        process.waitForFinished(60000);
        return process.readAllStandardOutput() + process.readAllStandardError();
    };
    QCOMPARE(shell("{ \"$1\" --terminals 9 --minutes 999; echo $? >&2; } | { \"$0\"; echo $? >&2; } | head -c 4"),
             QByteArray("TIME0\n0\n"));
    QCOMPARE(shell("\"$1\" | \"$0\" --json > /dev/full; echo $?"),
             QByteArray("2\npardel-decode: cannot write to standard output: No space left on device\n"));
}

void TestPrograms::memoryStaysBounded()
{
#if defined(__SANITIZE_ADDRESS__)
    QSKIP("the sanitizer's own memory would be measured");
#endif
    // The packet that makes most of its bytes: records of tag 226 that hold nothing but their tag, a report each.
    const QByteArray groups = ("\xFF\x02" + QByteArray(255, '\xE2')).repeated(254);
    const QByteArray packet = QByteArray::fromHex("a4d5000011 07ff") + groups + "??"; // 65 287 bytes
    QCOMPARE(run(decodeTool, QStringLiteral("--json"), packet.repeated(3)).status, 0);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    QVERIFY2(usage.ru_maxrss < 64 * 1024, qPrintable(QString::number(usage.ru_maxrss)));
}

void TestPrograms::simulatesTheSampleCapture()
{
    const QString options = QStringLiteral("--terminals 3 --minutes 8 --seed 47");
    const Outcome raw = run(simulateTool, options);
    QCOMPARE(raw.output, contentOf("sample.bin"));
    QVERIFY(run(simulateTool, options + QStringLiteral("9")).output != raw.output);

    const Outcome hex = run(simulateTool, options + QStringLiteral(" --hex"));
    QCOMPARE(QByteArray::fromHex(hex.output), raw.output);
    QCOMPARE(hex.output.count('\n'), contentOf("sample.json").count('\n'));

    for (const char* wrong : {"--terminals 0", "--terminals 32768", "--minutes x", "--seed -1", "extra"}) {
        const Outcome outcome = run(simulateTool, QString::fromLatin1(wrong));
        QVERIFY2(outcome.status == 2 && outcome.errors.count('\n') == 1 && outcome.output.isEmpty(), wrong);
    }
}

void TestPrograms::simulatesPlausibleTracks()
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

QTEST_GUILESS_MAIN(TestPrograms)
#include "tst_programs.moc"
