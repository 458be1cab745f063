#include "shell.h"

#include <QProcess>

Outcome runShell(const QString& command, const QByteArray& input, const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("archive"), QStringLiteral(PARDEL_ARCHIVE));
    environment.insert(QStringLiteral("decode"), QStringLiteral(PARDEL_DECODE));
    environment.insert(QStringLiteral("import"), QStringLiteral(PARDEL_IMPORT));
    environment.insert(QStringLiteral("simulate"), QStringLiteral(PARDEL_SIMULATE));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(QStringLiteral(TEST_DATA));
    process.start(QStringLiteral("/bin/sh"),
                  QStringList{QStringLiteral("-c"), command, QStringLiteral("sh")} + arguments);
    process.write(input);
    process.closeWriteChannel();
    constexpr int patience = 120'000; // ms
    if (!process.waitForFinished(patience))
        return Outcome();
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}
