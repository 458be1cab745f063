#include <Pardel/commonclass.h>

#include <QCoreApplication>
#include <QSettings>

namespace {

/// An INI file beside the application, its text read as UTF-8.
class IniFile : public QSettings
{
public:
    explicit IniFile(const QString& file)
        : QSettings(QCoreApplication::applicationDirPath() + file, QSettings::IniFormat)
    {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        setIniCodec("UTF-8");
#endif
    }

    /// From now on what is not ASCII is written as escapes, which readers with any codec understand.
    void escapeWhatIsWritten()
    {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        allKeys(); // decodes all of the file while the codec is still there
        setIniCodec(static_cast<QTextCodec*>(nullptr));
#endif
    }
};

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
    if (key.isEmpty())
        return defaultValue.toUtf8();
    IniFile settings(file);
    settings.beginGroup(group);
    return settings.value(key, defaultValue).toByteArray();
}

void Commonclass::iniSetValue(QString group, QString key, QString value, QString file)
{
    if (key.isEmpty())
        return;
    IniFile settings(file);
    settings.escapeWhatIsWritten();
    settings.beginGroup(group);
    settings.setValue(QString::fromLatin1(key.toUtf8()), value);
}

void Commonclass::iniClear(QString, QString file)
{
    IniFile(file).clear();
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
    IniFile settings(QStringLiteral("/Settings/Filter.ini"));
    settings.beginGroup(QStringLiteral("Filter"));
    const int count = settings.value(QStringLiteral("count"), 0).toByteArray().toInt();
    QStringList regions;
    int missing = 0;
    for (int i = 1; i <= count && missing < maximumMissingRegions; ++i) {
        const QVariant region = settings.value(QStringLiteral("Region/%1").arg(i));
        if (!region.isValid())
            ++missing;
        regions += QString::fromUtf8(region.toByteArray());
    }
    return regions;
}
