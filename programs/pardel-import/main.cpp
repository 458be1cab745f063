#include "commandline.h"
#include "importrun.h"

#include <QCommandLineParser>
#include <QCoreApplication>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-import"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Stores the reports that packets of tracking terminals hold in the monitoring archive.\n\n"
        "Exit status: 0 every packet accepted, 1 some packet rejected or bytes skipped, 2 wrong usage, unreadable "
        "input\n"
        "or a database that cannot be opened or written. A report that is there already is not stored again."));
    const QCommandLineOption ini(QStringLiteral("ini"), QStringLiteral("The settings file (INI)."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption group(QStringLiteral("group"), QStringLiteral("Its group that describes the database."),
                                   QStringLiteral("GROUP"));
    const QCommandLineOption create(
        QStringLiteral("create"),
        QStringLiteral("Make the tables that are missing, with a few users, commands, sensors."));
    const QCommandLineOption raw(QStringLiteral("raw"), QStringLiteral("Captures are packets back to back (default)."));
    const QCommandLineOption hex(QStringLiteral("hex"),
                                 QStringLiteral("Captures are one packet a line in hex digits; # begins a comment."));
    const QCommandLineOption noConvert(
        QStringLiteral("no-convert"),
        QStringLiteral("Coordinates are decimal degrees, not packed degrees and minutes."));
    parser.addOptions({ini, group, create, raw, hex, noConvert});
    parser.addPositionalArgument(QStringLiteral("CAPTURE"), QStringLiteral("Captures; none or - is standard input."),
                                 QStringLiteral("[CAPTURE...]"));
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;
    if (!parser.isSet(ini) || !parser.isSet(group))
        return wrongUsage(QStringLiteral("--ini and --group are needed."));
    if (parser.isSet(raw) && parser.isSet(hex))
        return wrongUsage(QStringLiteral("--raw and --hex exclude each other."));

    ImportOptions options;
    options.iniFile = parser.value(ini);
    options.group = parser.value(group);
    options.create = parser.isSet(create);
    options.hex = parser.isSet(hex);
    options.convert = !parser.isSet(noConvert);
    options.files = parser.positionalArguments();
    return importFiles(options);
}
