// pardel-simulate as its users run it.

#include "shell.h"
#include "testfiles.h"

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
    }

    void saysWhatFails_data() { addTableRows("simulateoptions.txt"); }
    void saysWhatFails() { runRow("simulate"); }
};

QTEST_GUILESS_MAIN(TestSimulate)
#include "tst_simulate.moc"
