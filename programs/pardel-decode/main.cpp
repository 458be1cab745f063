#include "commandline.h"
#include "decoderun.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QThread>

constexpr int mostJobs = 256;

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-decode"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the reports that packets of tracking terminals hold.\n\n"
                                                    "Exit status: 0 every packet accepted, 1 some packet rejected or "
                                                    "bytes skipped, 2 wrong usage, unreadable input\n"
                                                    "or unwritable output."));
    const QCommandLineOption convert(
        QStringLiteral("convert"), QStringLiteral("Coordinates are packed degrees and minutes: show decimal degrees."));
    const QCommandLineOption hex(
        QStringLiteral("hex"),
        QStringLiteral("The input is one packet a line in hex digits (at most 1 MiB of bytes); # begins a comment."));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Write one JSON object a line for every packet."));
    const QCommandLineOption crcInit(QStringLiteral("crc-init"),
                                     QStringLiteral("Where the checksum starts: 0 or ffff (default)."),
                                     QStringLiteral("0|ffff"), QStringLiteral("ffff"));
    const QCommandLineOption jobs(QStringLiteral("jobs"),
                                  QStringLiteral("Decode on so many threads, 1 to 256; as many as there are processors "
                                                 "without it. The output is the same."),
                                  QStringLiteral("N"));
    parser.addOptions({convert, hex, json, crcInit, jobs});
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("Captures: packets back to back. None or - is standard input."),
                                 QStringLiteral("[FILE...]"));
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;

    const QString start = parser.value(crcInit);
    if (start != QLatin1String("0") && start != QLatin1String("ffff"))
        return wrongUsage(QStringLiteral("--crc-init takes 0 or ffff, not \"%1\".").arg(start));

    bool isNumber = true;
    const int threads = parser.isSet(jobs) ? parser.value(jobs).toInt(&isNumber) : QThread::idealThreadCount();
    if (!isNumber || (parser.isSet(jobs) && (threads < 1 || threads > mostJobs)))
        return wrongUsage(QStringLiteral("--jobs takes a number from 1 to %1, not \"%2\".")
                              .arg(QString::number(mostJobs), parser.value(jobs)));

    DecodeOptions options;
    options.jobs = qBound(1, threads, mostJobs);
    options.settings.convert = parser.isSet(convert);
    options.settings.checksumFromZero = start == QLatin1String("0");
    options.input = parser.isSet(hex) ? CaptureFramer::Hex : CaptureFramer::Raw;
    options.output = parser.isSet(json) ? DecodeOptions::Form::Json : DecodeOptions::Form::Table;
    options.files = parser.positionalArguments();
    return decodeFiles(options);
}
