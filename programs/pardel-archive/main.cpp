#include "archiverun.h"
#include "commandline.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QHash>

namespace {

constexpr int mostMonths = 1200;

QString description()
{
    return QStringLiteral(
        "Keeps the monitoring archive in order.\n\n"
        "Commands:\n"
        "  create     make the tables that are missing\n"
        "  status     show what the archive holds\n"
        "  partition  PostgreSQL: move what lies in the default partition into months' partitions\n"
        "  retain     keep the newest months and drop what is older\n\n"
        "Exit status: 0 done, 2 wrong usage or failure. Ended in the middle, it can be run again and goes on.");
}

/// What does not go together with the command, as a sentence; or nothing.
QString misfit(const QCommandLineParser& parser, ArchiveOptions::Command command)
{
    for (const auto& [option, wanted] : {std::pair("shard", ArchiveOptions::Create),
                                         {"json", ArchiveOptions::Status},
                                         {"months", ArchiveOptions::Retain},
                                         {"dry-run", ArchiveOptions::Retain}}) {
        if (parser.isSet(QLatin1String(option)) && command != wanted)
            return QStringLiteral("--%1 is for %2 only.")
                .arg(QLatin1String(option), wanted == ArchiveOptions::Create   ? QStringLiteral("create")
                                            : wanted == ArchiveOptions::Status ? QStringLiteral("status")
                                                                               : QStringLiteral("retain"));
    }
    return {};
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-archive"));

    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    const QCommandLineOption ini(QStringLiteral("ini"), QStringLiteral("The settings file (INI)."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption group(QStringLiteral("group"), QStringLiteral("Its group that describes the database."),
                                   QStringLiteral("GROUP"));
    const QCommandLineOption shard(
        QStringLiteral("shard"),
        QStringLiteral("create: PostgreSQL: another server, \"host=... port=... dbname=...\"; "
                       "given several times, these servers share the reports."),
        QStringLiteral("SERVER"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("status: write one JSON object."));
    const QCommandLineOption months(
        QStringLiteral("months"),
        QStringLiteral("retain: how many months stay, the present one counted (1 to %1).").arg(mostMonths),
        QStringLiteral("N"));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"),
                                    QStringLiteral("retain: tell what would go, and change nothing."));
    parser.addOptions({ini, group, shard, json, months, dryRun});
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("create, status, partition or retain."));
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;

    const QHash<QString, ArchiveOptions::Command> commands = {
        {QStringLiteral("create"), ArchiveOptions::Create},
        {QStringLiteral("status"), ArchiveOptions::Status},
        {QStringLiteral("partition"), ArchiveOptions::Partition},
        {QStringLiteral("retain"), ArchiveOptions::Retain},
    };
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 1 || !commands.contains(arguments.first()))
        return wrongUsage(QStringLiteral("One command is needed: create, status, partition or retain."));
    if (!parser.isSet(ini) || !parser.isSet(group))
        return wrongUsage(QStringLiteral("--ini and --group are needed."));

    ArchiveOptions options;
    options.iniFile = parser.value(ini);
    options.group = parser.value(group);
    options.command = commands.value(arguments.first());
    options.shards = parser.values(shard);
    options.json = parser.isSet(json);
    options.months = parser.value(months).toInt();
    options.dryRun = parser.isSet(dryRun);
    const QString wrong = misfit(parser, options.command);
    if (!wrong.isEmpty())
        return wrongUsage(wrong);
    if (options.command == ArchiveOptions::Retain && (options.months < 1 || options.months > mostMonths))
        return wrongUsage(QStringLiteral("retain needs --months with a number from 1 to %1.").arg(mostMonths));
    return runArchive(options);
}
