#include "ratios.h"

#include <Pardel/tlog.h>

#include <QIODevice>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <spdlog/fmt/bin_to_hex.h>
#include <spdlog/sinks/daily_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int entriesPerRun = 20000; // fixed, so that the files stay small

/// Sends standard error elsewhere while it lives.
class StandardErrorTo
{
public:
    explicit StandardErrorTo(const QString& path) : m_kept(dup(STDERR_FILENO))
    {
        const int file = open(path.toLocal8Bit().constData(), O_WRONLY | O_CREAT, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~StandardErrorTo()
    {
        dup2(m_kept, STDERR_FILENO);
        close(m_kept);
    }
    Q_DISABLE_COPY(StandardErrorTo)

private:
    int m_kept;
};

QByteArray samplePacket()
{
    QByteArray packet;
    for (int i = 0; i < 100; ++i)
        packet.append(static_cast<char>(37 * i));
    return packet;
}

QByteArray content(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

void data(benchmark::State& state)
{
    const QTemporaryDir folder;
    const StandardErrorTo nowhere(QStringLiteral("/dev/null"));
    const QByteArray packet = samplePacket();
    QString label = QStringLiteral("terminal 17");
    TLog log(folder.path());
    log.Enabled(true);
    for (auto _ : state)
        log.Data(label, packet, true);
}

/// The same bytes, prepared beforehand: a header of four lines with a flush behind each, the rest, the echo.
void dataBare(benchmark::State& state)
{
    const QTemporaryDir folder;
    QString label = QStringLiteral("terminal 17");
    TLog log(folder.path());
    {
        const StandardErrorTo echoFile(folder.filePath(QStringLiteral("echo")));
        log.Enabled(true);
        log.Data(label, samplePacket(), true);
    }
    const QByteArray echo = content(folder.filePath(QStringLiteral("echo")));
    const QString entry = QString::fromLocal8Bit(content(log.getFilePath(QDate::currentDate())));
    const QString separator = entry.section(QLatin1Char('\n'), 2, 2);
    const QString timeStamp = entry.section(QLatin1Char('\n'), 3, 3);
    const QString rest = entry.section(QLatin1Char('\n'), 4);

    const StandardErrorTo nowhere(QStringLiteral("/dev/null"));
    QFile file(folder.filePath(QStringLiteral("bare")));
    file.open(QIODevice::Append);
    QTextStream stream(&file);
    for (auto _ : state) {
        stream << Qt::endl << Qt::endl << separator << Qt::endl << timeStamp << Qt::endl << rest << Qt::flush;
        std::fwrite(echo.constData(), 1, static_cast<std::size_t>(echo.size()), stderr);
    }
}

/// The peer dumps the same packet, to a file a day and to standard error, with a flush each.
void spdlogDump(benchmark::State& state)
{
    const QTemporaryDir folder;
    const StandardErrorTo nowhere(QStringLiteral("/dev/null"));
    const QByteArray packet = samplePacket();
    const std::string label = "terminal 17";
    const auto file = std::make_shared<spdlog::sinks::daily_file_sink_st>(
        folder.filePath(QStringLiteral("spdlog")).toStdString(), 0, 0);
    spdlog::logger log("peer", {file, std::make_shared<spdlog::sinks::stderr_sink_st>()});
    log.flush_on(spdlog::level::info);
    for (auto _ : state)
        log.info("{} Received {:a}", label, spdlog::to_hex(packet, 16));
}

BENCHMARK(spdlogDump)->Iterations(entriesPerRun);
BENCHMARK(data)->Iterations(entriesPerRun);
BENCHMARK(dataBare)->Iterations(entriesPerRun);

} // namespace

int main(int argc, char* argv[])
{
    return runWithRatios(argc, argv,
                         {{"data/iterations:20000", "dataBare/iterations:20000", Ratio::AtMost, 1.5},
                          {"data/iterations:20000", "spdlogDump/iterations:20000", Ratio::AtMost, 1.5}});
}
