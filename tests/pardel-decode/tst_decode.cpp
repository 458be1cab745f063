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

    void jobsMakeNoDifference()
    {
        // Damage among the packets, and one whose text is more than a job may hold back.
        const QByteArray flood =
            QByteArray::fromHex("a4d500001107ff") + ("\xFF\x02" + QByteArray(255, '\xE2')).repeated(254);
        const QByteArray packets =
            runShell(QStringLiteral("\"$simulate\" --terminals 40 --minutes 20")).output + "damage";
        const QByteArray capture = packets + flood + "??" + packets.repeated(3) + flood + "??" + packets;
        for (const char* form : {"", "--json"}) {
            Outcome one;
            for (const char* jobs : {"--jobs 1", "--jobs 2", "--jobs 7", ""}) {
                const QString command = QStringLiteral("\"$decode\" %1 %2 2> /dev/null");
                const Outcome several = runShell(command.arg(QLatin1String(form), QLatin1String(jobs)), capture);
                if (one.output.isEmpty())
                    one = several;
                QVERIFY2(several.output == one.output && several.status == one.status && one.status == 1, jobs);
            }
            QVERIFY(one.output.size() > 1 << 20);
        }
    }
};

QTEST_GUILESS_MAIN(TestDecode)
#include "tst_decode.moc"
