// Keeps a module's log: one file a day, messages and packets as dumps, each with its time.

#include <Pardel/pardel.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QTemporaryDir folder; // an application takes TLog::getDirPathDefault("Kernel"), beside its executable
    TLog log(folder.filePath(QStringLiteral("Log_Kernel")));
    log.Enabled(true);

    QTimer day; // the file follows the date
    QObject::connect(&day, &QTimer::timeout, &application, [&log] { log.TimerUpdate(); });
    day.start(60 * 1000);

    log.Message(QStringLiteral("Started ") + getPardelVersion());
    QString terminal = QStringLiteral("terminal 17");
    log.Data(terminal, QByteArray::fromHex("a4d50000110d0001024123"), true);

    QFile file(log.getFilePath(QDate::currentDate()));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    std::fputs(file.readAll().constData(), stdout); // standard error has shown it as well
    return 0;
}
