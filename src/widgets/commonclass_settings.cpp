#include <Pardel/commonclass.h>
#include <Pardel/inifiles.h>

#include <QCoreApplication>
#include <QSettings>

namespace {

QString pathOf(const QString& file)
{
    return QCoreApplication::applicationDirPath() + file;
}

/**
 * A value in UTF-8. What another program has written in UTF-8 arrives as Latin-1, one character for each byte: a text
 * of such characters whose bytes are valid UTF-8 is taken back to these. A codec would not do: all QSettings of a
 * process share what the first of them has read from a file, and one that writes the file again destroys what the codec
 * did not understand.
 */
QByteArray bytesOf(const QVariant& value)
{
    if (value.userType() != QMetaType::QString)
        return value.toByteArray();
    const QString text = value.toString();
    const QByteArray bytes = text.toLatin1();
    const bool isUtf8 = QString::fromLatin1(bytes) == text && QString::fromUtf8(bytes).toUtf8() == bytes;
    return isUtf8 ? bytes : text.toUtf8();
}

/// More entries of the region filter than this are not made up for a count beyond those that are there.
constexpr int maximumMissingRegions = 65536;

} // namespace

Commonclass::Commonclass()
    : toolBarStyle(QStringLiteral(" QToolBar {  background-color: qlineargradient(spread:reflect, x1:0.995494, y1:1, "
                                  "x2:1, y2:0.159, stop:0 rgba(61, 61, 61, 255), stop:1 rgba(225, 225, 225, 255)); } "))
{}

Commonclass::~Commonclass() = default;

QByteArray Commonclass::iniValue(QString group, QString key, QString defaultValue, QString file)
{
    QSettings settings(pathOf(file), pardelIniFormat());
    settings.beginGroup(group);
    const QVariant value = key.isEmpty() ? QVariant() : settings.value(key);
    return value.isValid() ? bytesOf(value) : defaultValue.toUtf8();
}

void Commonclass::iniSetValue(QString group, QString key, QString value, QString file)
{
    if (key.isEmpty())
        return;
    QSettings settings(pathOf(file), pardelIniFormat());
    settings.beginGroup(group);
    settings.setValue(QString::fromLatin1(key.toUtf8()), value);
}

void Commonclass::iniClear(QString, QString file)
{
    QSettings(pathOf(file), pardelIniFormat()).clear();
}

QString Commonclass::Get_DispFIO()
{
    const QMap<int, QString>& parts = currentUser.nameParts;
    return parts.value(1) + QLatin1Char(' ') + parts.value(2) + QLatin1Char(' ') + parts.value(3);
}

unsigned int Commonclass::Get_DispID()
{
    return currentUser.identifiers.value(1);
}

QStringList Commonclass::GetFilterRegionsIDList()
{
    QSettings settings(pathOf(QStringLiteral("/Settings/Filter.ini")), pardelIniFormat());
    settings.beginGroup(QStringLiteral("Filter"));
    const int count = bytesOf(settings.value(QStringLiteral("count"))).toInt();
    QStringList regions;
    int missing = 0;
    for (int i = 1; i <= count && missing < maximumMissingRegions; ++i) {
        const QVariant region = settings.value(QStringLiteral("Region/%1").arg(i));
        if (!region.isValid())
            ++missing;
        regions += QString::fromUtf8(bytesOf(region));
    }
    return regions;
}
