#include "commandline.h"

#include "output.h"

#include <Pardel/pardelversion.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

#include <unistd.h>

namespace {

int print(const QString& text)
{
    Output output(STDOUT_FILENO);
    output.write(text.toLocal8Bit());
    if (!output.failed())
        return Done;
    tellError(QStringLiteral("cannot write to standard output: %1").arg(output.errorString()));
    return Failed;
}

} // namespace

void tellError(const QString& sentence)
{
    const QString line = QStringLiteral("%1: %2\n").arg(QCoreApplication::applicationName(), sentence);
    std::fputs(line.toLocal8Bit().constData(), stderr);
}

int wrongUsage(const QString& sentence)
{
    tellError(QStringLiteral("%1 (see %2 --help)").arg(sentence, QCoreApplication::applicationName()));
    return Failed;
}

std::optional<int> parseCommandLine(QCommandLineParser& parser, const QStringList& arguments)
{
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(arguments))
        return wrongUsage(parser.errorText());
    if (parser.isSet(help))
        return print(parser.helpText());
    if (parser.isSet(version))
        return print(QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(), getPardelVersion()));
    return std::nullopt;
}
