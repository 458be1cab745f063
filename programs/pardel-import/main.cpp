#include "commandline.h"
#include "importrun.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace {

constexpr double mostDaysAhead = 3650;

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-import"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Stores the reports that packets of tracking terminals hold in the monitoring archive.\n\n"
        "Exit status: 0 every packet accepted, 1 some packet damaged or rejected or bytes skipped, or a signal came\n"
        "before the end of a file, 2 wrong usage, unreadable input or a database that cannot be opened or written.\n"
        "A report that is there already is not stored again. "
        "SIGTERM and SIGINT end it as the end of the input does."));
    const QCommandLineOption ini(QStringLiteral("ini"), QStringLiteral("The settings file (INI)."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption group(QStringLiteral("group"), QStringLiteral("Its group that describes the database."),
                                   QStringLiteral("GROUP"));
    const QCommandLineOption create(QStringLiteral("create"),
                                    QStringLiteral("Make the tables that are missing, empty."));
    const QCommandLineOption raw(QStringLiteral("raw"), QStringLiteral("Captures are packets back to back (default)."));
    const QCommandLineOption hex(QStringLiteral("hex"),
                                 QStringLiteral("Captures are one packet a line in hex digits; # begins a comment."));
    const QCommandLineOption noConvert(
        QStringLiteral("no-convert"),
        QStringLiteral("Coordinates are decimal degrees, not packed degrees and minutes."));
    const QCommandLineOption crcInit(QStringLiteral("crc-init"),
                                     QStringLiteral("Where the checksum starts: 0 or ffff (default)."),
                                     QStringLiteral("0|ffff"), QStringLiteral("ffff"));
    const QCommandLineOption acceptDamaged(
        QStringLiteral("accept-damaged"),
        QStringLiteral("Store packets whose checksum does not match too: for links without checksum."));
    const QCommandLineOption ahead(
        QStringLiteral("ahead"),
        QStringLiteral("How far in the future a report may be to become a last state, 0 to 3650 days (default 1)."),
        QStringLiteral("DAYS"), QStringLiteral("1"));
    parser.addOptions({ini, group, create, raw, hex, noConvert, crcInit, acceptDamaged, ahead});
    parser.addPositionalArgument(QStringLiteral("CAPTURE"), QStringLiteral("Captures; none or - is standard input."),
                                 QStringLiteral("[CAPTURE...]"));
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;
    if (!parser.isSet(ini) || !parser.isSet(group))
        return wrongUsage(QStringLiteral("--ini and --group are needed."));
    if (parser.isSet(raw) && parser.isSet(hex))
        return wrongUsage(QStringLiteral("--raw and --hex exclude each other."));

    const QString start = parser.value(crcInit);
    if (start != QLatin1String("0") && start != QLatin1String("ffff"))
        return wrongUsage(QStringLiteral("--crc-init takes 0 or ffff, not \"%1\".").arg(start));
    bool isNumber = false;
    const double days = parser.value(ahead).toDouble(&isNumber);
    if (!isNumber || !(days >= 0 && days <= mostDaysAhead))
        return wrongUsage(
            QStringLiteral("--ahead takes a number of days from 0 to 3650, not \"%1\".").arg(parser.value(ahead)));

    ImportOptions options;
    options.iniFile = parser.value(ini);
    options.group = parser.value(group);
    options.create = parser.isSet(create);
    options.form = parser.isSet(hex) ? CaptureFramer::Hex : CaptureFramer::Raw;
    options.decode.convert = !parser.isSet(noConvert);
    options.decode.checksumFromZero = start == QLatin1String("0");
    options.decode.acceptDamaged = parser.isSet(acceptDamaged);
    options.ahead = std::chrono::seconds(static_cast<qint64>(days * 24 * 60 * 60));
    options.files = parser.positionalArguments();
    return importFiles(options);
}
