// pardel-simulate as its users run it.

#include "shell.h"
#include "testfiles.h"

#include <QTest>

class TestSimulate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void simulatesTheSampleCapture()
    {
        const QString options = QStringLiteral("\"$simulate\" --terminals 3 --minutes 8 --seed 47");
        const Outcome raw = runShell(options);
        QCOMPARE(raw.output, contentOf(QStringLiteral("sample.bin")));
        QVERIFY(runShell(options + QStringLiteral("9")).output != raw.output);

        const Outcome hex = runShell(options + QStringLiteral(" --hex"));
        QCOMPARE(QByteArray::fromHex(hex.output), raw.output);
        QCOMPARE(hex.output.count('\n'), 24);

        for (const char* wrong :
             {"--terminals 0", "--terminals 32768", "--minutes x", "--seed -1", "extra", "--rate 1", "--packets 1",
              "--connect x", "--connect :1", "--connect x:0", "--connect x:65536", "--connect x:1 --hex",
              "--connect x:1 --rate 0.01", "--connect x:1 --rate nan", "--connect x:1 --packets 0"}) {
            const Outcome outcome = runShell(QLatin1String("\"$simulate\" ") + QLatin1String(wrong));
            QVERIFY2(outcome.status == 2 && outcome.errors.count('\n') == 1 && outcome.output.isEmpty(), wrong);
        }
    }
};

QTEST_GUILESS_MAIN(TestSimulate)
#include "tst_simulate.moc"
