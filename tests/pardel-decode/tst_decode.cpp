// pardel-decode as its users run it.

#include "shell.h"
#include "testfiles.h"

#include <sys/resource.h>

class TestDecode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesTheSampleCapture()
    {
        const Outcome json = runShell(QStringLiteral("\"$decode\" --json --convert - < sample.bin"));
        QCOMPARE(json.status, 0);
        QCOMPARE(json.output, contentOf(QStringLiteral("sample.json")));
        QCOMPARE(json.errors, QByteArray());

        const Outcome table = runShell(QStringLiteral("\"$decode\" --convert sample.bin"));
        QCOMPARE(table.output, contentOf(QStringLiteral("sample.table")));
        QVERIFY2(table.errors.startsWith("packets 24, reports 35, rejected 0, skipped bytes 0,"), table.errors);

        // What cannot be read does not keep the rest from being decoded; offsets begin anew in every file.
        const Outcome several =
            runShell(QStringLiteral("\"$decode\" --json --convert sample.bin /nowhere/x sample.bin"));
        QCOMPARE(several.status, 2);
        QCOMPARE(several.output, json.output + json.output);
    }

    void decodes_data() { addTableRows("decode.txt"); }

    void decodes() { runRow("decode"); }

    void endsWhenNobodyReads()
    {
        const Outcome headOnly =
            runShell(QStringLiteral("{ \"$simulate\" --terminals 9 --minutes 999; echo $? >&2; } | "
                                    "{ \"$decode\"; echo $? >&2; } | head -c 4"));
        QCOMPARE(headOnly.output + headOnly.errors, QByteArray("TIME0\n0\n"));
        const Outcome full = runShell(QStringLiteral("\"$simulate\" | \"$decode\" --json > /dev/full"));
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
        QCOMPARE(runShell(QStringLiteral("\"$decode\" --json"), packet.repeated(3)).status, 0);
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        QVERIFY2(usage.ru_maxrss < 64 * 1024, qPrintable(QString::number(usage.ru_maxrss)));
    }
};

QTEST_GUILESS_MAIN(TestDecode)
#include "tst_decode.moc"
