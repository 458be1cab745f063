#include "commandline.h"
#include "decoderun.h"

#include <QCommandLineParser>
#include <QCoreApplication>

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
    parser.addOptions({convert, hex, json, crcInit});
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("Captures: packets back to back. None or - is standard input."),
                                 QStringLiteral("[FILE...]"));
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;

    const QString start = parser.value(crcInit);
    if (start != QLatin1String("0") && start != QLatin1String("ffff"))
        return wrongUsage(QStringLiteral("--crc-init takes 0 or ffff, not \"%1\".").arg(start));

    DecodeOptions options;
    options.settings.convert = parser.isSet(convert);
    options.settings.checksumFromZero = start == QLatin1String("0");
    options.input = parser.isSet(hex) ? CaptureFramer::Hex : CaptureFramer::Raw;
    options.output = parser.isSet(json) ? DecodeOptions::Form::Json : DecodeOptions::Form::Table;
    options.files = parser.positionalArguments();
    return decodeFiles(options);
}
