// How much longer pardel-decode --json takes on a large capture than framing and decoding alone, and what memory it
// needs. The capture is simulated; the output goes to /dev/null, so that no disk is measured.

#include "decodedpacket.h"
#include "toolruns.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int rounds = 5;
constexpr qint64 pieceSize = 1 << 18;

double secondsOfDecoding(const QString& path)
{
    QElapsedTimer timer;
    timer.start();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return 0;
    qint64 sensors = 0;
    PacketFramer framer;
    for (QByteArray piece = file.read(pieceSize); !piece.isEmpty(); piece = file.read(pieceSize)) {
        framer.feed(piece);
        for (PacketFramer::Frame frame; framer.next(frame);)
            sensors += decodePacket(frame, DecodeSettings()).report.sensors.size();
    }
    std::fprintf(stderr, "%lld sensors decoded\n", sensors);
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

struct ToolRun
{
    double seconds;
    long peakKib;
    bool succeeded;
};

ToolRun runTool(const QByteArray& path, const char* jobs = "1")
{
    QElapsedTimer timer;
    timer.start();
    const pid_t child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        execl(PARDEL_DECODE, "pardel-decode", "--json", "--jobs", jobs, path.constData(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = -1;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    return {static_cast<double>(timer.nsecsElapsed()) / 1e9, usage.ru_maxrss, status == 0};
}

} // namespace

int main()
{
    const QTemporaryDir folder;
    const QString small = folder.filePath(QStringLiteral("small.bin"));
    const QString large = folder.filePath(QStringLiteral("large.bin"));
    if (!simulateTo(small, 100) || !simulateTo(large, 1000)) {
        std::fprintf(stderr, "cannot write the captures under %s\n", qPrintable(folder.path()));
        return 1;
    }
    std::vector<double> alone;
    std::vector<double> whole;
    std::vector<double> two;
    long peakKib = 0;
    for (int round = 0; round < rounds; ++round) {
        alone.push_back(secondsOfDecoding(large));
        const ToolRun run = runTool(QFile::encodeName(large));
        if (!run.succeeded) {
            std::fprintf(stderr, "pardel-decode failed\n");
            return 1;
        }
        whole.push_back(run.seconds);
        two.push_back(runTool(QFile::encodeName(large), "2").seconds);
        peakKib = std::max(peakKib, run.peakKib);
    }
    const long smallPeakKib = runTool(QFile::encodeName(small)).peakKib;
    std::printf("1,000,000 packets: decoding alone %.3f s, pardel-decode --json %.3f s\n", fastest(alone),
                fastest(whole));
    std::printf("ratio pardel-decode --json / decoding alone: %.2f (target: at most 3.00)\n",
                fastest(whole) / fastest(alone));
    std::printf("ratio --jobs 1 / --jobs 2: %.2f (target: at least 1.70, with two processors to itself)\n",
                fastest(whole) / fastest(two));
    std::printf("peak memory: %.1f MiB, with a tenth of the packets %.1f MiB (target: flat, below 64)\n",
                static_cast<double>(peakKib) / 1024, static_cast<double>(smallPeakKib) / 1024);
    return 0;
}
