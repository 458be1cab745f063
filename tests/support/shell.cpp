#include "shell.h"

#include "testfiles.h"

#include <Pardel/pardelversion.h>

#include <QProcess>

bool hasParts(const QByteArray& text, const QByteArray& parts)
{
    int place = 0;
    for (const QString& part : QString::fromUtf8(parts).split(QStringLiteral("..."))) {
        const QByteArray bytes = part.toUtf8();
        const auto found = static_cast<int>(text.indexOf(bytes, place));
        if (found < 0)
            return false;
        place = found + static_cast<int>(bytes.size());
    }
    return text.isEmpty() == parts.isEmpty();
}

void startShell(QProcess& process, const QString& command, const QString& iniFile)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("archive"), QStringLiteral(PARDEL_ARCHIVE));
    environment.insert(QStringLiteral("decode"), QStringLiteral(PARDEL_DECODE));
    environment.insert(QStringLiteral("import"), QStringLiteral(PARDEL_IMPORT));
    environment.insert(QStringLiteral("receive"), QStringLiteral(PARDEL_RECEIVE));
    environment.insert(QStringLiteral("simulate"), QStringLiteral(PARDEL_SIMULATE));
    environment.insert(QStringLiteral("db"), QStringLiteral("--ini %1 --group Db").arg(iniFile));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(QStringLiteral(TEST_DATA));
    process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command});
}

Outcome runShell(const QString& command, const QByteArray& input, const QString& iniFile)
{
    QProcess process;
    startShell(process, command, iniFile);
    process.write(input);
    process.closeWriteChannel();
    constexpr int patience = 120'000; // ms
    if (!process.waitForFinished(patience))
        return Outcome();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

void runRow(const char* program, const QString& iniFile)
{
    const QByteArray input = cell("input");
    const QString command = QStringLiteral("\"$%1\" %2").arg(QLatin1String(program), QLatin1String(cell("arguments")));
    const Outcome outcome = runShell(command, input.startsWith('x') ? QByteArray::fromHex(input) : input, iniFile);
    QVERIFY2(outcome.status == cell("status").toInt(), outcome.errors);
    QVERIFY2(outcome.status != 2 || outcome.errors.count('\n') == 1 || cell("errors").contains("..."), outcome.errors);
    QVERIFY2(hasParts(outcome.errors, cell("errors")), outcome.errors);
    QVERIFY2(hasParts(outcome.output, cell("output").replace("VERSION", getPardelVersion().toUtf8())), outcome.output);
}
