#include "fuzz.h"

#include <Pardel/inifiles.h>

#include <QFile>
#include <QMap>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <algorithm>
#include <iterator>

namespace {

using Values = QMap<QString, QStringList>;

QStringList textOf(const QVariant& value)
{
    const bool isList = value.userType() == QMetaType::QStringList || value.userType() == QMetaType::QVariantList;
    const QStringList texts = isList ? value.toStringList() : QStringList();
    return texts.isEmpty() ? QStringList(value.toString()) : texts; // Qt saves a list of nothing as no value
}

/// As texts: numbers of a stream come back as texts, and not all values equal themselves.
Values valuesOf(const QSettings& settings)
{
    Values values;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys) {
        // Whatever the case of its letters, Qt writes this group as "[%General]".
        if (key.section(QLatin1Char('/'), 0, 0).compare(QLatin1String("General"), Qt::CaseInsensitive) != 0)
            values.insert(key, textOf(settings.value(key)));
    }
    return values;
}

/// Without the keys of empty names, which QSettings lists and takes for others when it is asked for them.
Values named(Values values)
{
    for (auto value = values.begin(); value != values.end();)
        value = value.key().split(QLatin1Char('/')).contains(QString()) ? values.erase(value) : std::next(value);
    return values;
}

/// What a merge into an empty file takes over: neither keys outside of groups nor those of groups within groups.
Values merged(Values values)
{
    for (auto value = values.begin(); value != values.end();)
        value = value.key().count(QLatin1Char('/')) == 1 ? std::next(value) : values.erase(value);
    return values;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // A name of its own for each input, as QSettings keeps what it has read of a file.
    static const QTemporaryDir folder;
    static int number = 0;
    const QString path = folder.filePath(QString::number(++number));
    const QString plain = path + QStringLiteral(".plain");
    const QString saved = path + QStringLiteral(".saved");
    const QByteArray bytes = bytesOf(data, size);
    for (const QString& name : {path, plain}) {
        QFile file(name);
        expect(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "the file is written");
    }
    {
        QSettings settings(path, pardelIniFormat());
        const Values values = valuesOf(settings);
        const bool asQt = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
            return static_cast<signed char>(byte) >= 0 && byte != '@' && byte != '\\';
        });
        expect(settings.status() == QSettings::NoError, "whatever it has, it is read");
        expect(!asQt || values == named(valuesOf(QSettings(plain, QSettings::IniFormat))),
               "as QSettings alone reads it");
        QSettings added(saved, pardelIniFormat());
        rebuildSettingsByTemplate(added, settings);
        expect(valuesOf(added) == merged(values), "a merge takes over what it is to");
        expect(added.status() == QSettings::NoError, "what was merged is saved");
        expect(QFile::copy(saved, saved + QStringLiteral(".copy")) || merged(values).isEmpty(), "it is copied");
        const QSettings copy(saved + QStringLiteral(".copy"), pardelIniFormat());
        expect(valuesOf(copy) == merged(values), "nothing gets lost or changes when it is saved");
    }
    for (const char* suffix : {"", ".plain", ".saved", ".saved.copy"})
        QFile::remove(path + QLatin1String(suffix));
    return 0;
}
