#include <Pardel/pardel.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCalendarWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QXmlStreamReader>

namespace {

/// "context|source" with the translation, which is null where it is marked unfinished.
using Texts = QMap<QString, QString>;

Texts textsOf(const QString& path)
{
    Texts texts;
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    QXmlStreamReader xml(&file);
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (!xml.readNextStartElement())
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("source")) {
            source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            const bool finished = !xml.attributes().hasAttribute(QLatin1String("type"));
            const QString text = xml.readElementText();
            texts.insert(context + QLatin1Char('|') + source, finished ? text : QString());
        }
    }
    return texts;
}

Texts shippedTexts(const char* file)
{
    return textsOf(QStringLiteral(SOURCES "/translations/") + QLatin1String(file));
}

/// What has to be the same in a text and its translation: spaces at the ends, places for numbers.
QString frame(const QString& text)
{
    static const QRegularExpression parts(QStringLiteral("^\\s+|\\s+$|%\\d"));
    QStringList found;
    for (auto i = parts.globalMatch(text); i.hasNext();)
        found += i.next().captured();
    return found.join(QLatin1Char('|'));
}

/// Translates every text to itself between marks.
class Marker : public QTranslator
{
public:
    bool isEmpty() const override { return false; }

    QString translate(const char*, const char* text, const char*, int) const override
    {
        return QLatin1Char('<') + QString::fromUtf8(text) + QLatin1Char('>');
    }
};

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("found.ts"));
        QProcess lupdate;
        lupdate.setWorkingDirectory(QStringLiteral(SOURCES));
        lupdate.start(QStringLiteral(LUPDATE), {QStringLiteral("src"), QStringLiteral("include"), QStringLiteral("-I"),
                                                QStringLiteral("include"), QStringLiteral("-ts"), file});
        QVERIFY(lupdate.waitForFinished());
        m_sources = textsOf(file).keys();
        QVERIFY(m_sources.contains(QStringLiteral("TUtils|Unknow")));
    }

    void complete()
    {
        QCOMPARE(shippedTexts("pardel.ts").keys(), m_sources);
        for (const char* file : {"pardel_de.ts", "pardel_ru.ts"}) {
            const Texts texts = shippedTexts(file);
            QCOMPARE(texts.keys(), m_sources);
            for (const QString& key : m_sources) {
                const QString source = key.section(QLatin1Char('|'), 1);
                QVERIFY2(!texts[key].isEmpty() && texts[key] != source, qPrintable(key));
                QCOMPARE(frame(texts[key]), frame(source));
            }
        }
    }

    void loaded()
    {
        for (const auto& [locale, texts] : {
                 std::pair(QLocale(QLocale::German, QLocale::Austria), "Anmeldung, Kein Treffer, Unbekannt"),
                 {QLocale(QLocale::Russian), "Вход, Не найдено, Неизвестно"},
                 {QLocale(QLocale::French), "Login, Match not found, Unknow"},
             }) {
            QTranslator translator;
            if (translator.load(locale, QStringLiteral("pardel"), QStringLiteral("_"), QStringLiteral(TRANSLATIONS)))
                QCoreApplication::installTranslator(&translator);
            DialogObjsFromTo dialog;
            dialog.searchEdit->setText(QStringLiteral("x"));
            const QStringList seen = {fdPassword().windowTitle(), dialog.findLabel->text(), TUtils::TypeToString(1)};
            QCOMPARE(seen.join(QStringLiteral(", ")), QString::fromUtf8(texts));
        }
    }

    void everythingGoesThroughTheTranslator()
    {
        Marker marker;
        QCoreApplication::installTranslator(&marker);
        DialogObjsFromTo dialog;
        const fdPassword login;
        const TreeObjCheckableE tree(nullptr);
        QStringList unmarked;
        for (const QWidget* widget : QApplication::allWidgets()) {
            if (dialog.calendar->calendarWidget->isAncestorOf(widget)) // months and years come from the locale
                continue;
            QStringList texts = {widget->windowTitle(), widget->toolTip(), widget->accessibleName(),
                                 widget->accessibleDescription()};
            if (qobject_cast<const QLabel*>(widget) || qobject_cast<const QAbstractButton*>(widget))
                texts += widget->property("text").toString();
            for (const QString& text : qAsConst(texts))
                unmarked += text.isEmpty() || text.startsWith(QLatin1Char('<')) ? QStringList() : QStringList(text);
        }
        QCOMPARE(unmarked.join(QLatin1Char('|')), QStringLiteral("Ok"));
    }

private:
    QStringList m_sources;
};

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
