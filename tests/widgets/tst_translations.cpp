#include <Pardel/pardel.h>

#include "testfiles.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTranslator>

class TestTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void complete()
    {
        for (const char* name : {"pardel.ts", "pardel_de.ts", "pardel_ru.ts"}) {
            // Brought up to date with the sources, where a text that is new or gone would be marked.
            const QTemporaryDir folder;
            const QString file = folder.filePath(QLatin1String(name));
            QVERIFY(QFile::copy(QStringLiteral(SOURCES "/translations/") + QLatin1String(name), file));
            QProcess lupdate;
            lupdate.setWorkingDirectory(QStringLiteral(SOURCES));
            lupdate.start(QStringLiteral(LUPDATE),
                          QStringLiteral("src include -I include -ts").split(QLatin1Char(' ')) + QStringList(file));
            QVERIFY(lupdate.waitForFinished());
            const QByteArray report = lupdate.readAll();
            QVERIFY2(report.contains("(0 new and ") && !report.contains("obsolete"), report);
            const bool isTemplate = qstrcmp(name, "pardel.ts") == 0;
            QCOMPARE(contentOf(file).contains("unfinished"), isTemplate);
        }
    }

    void loaded()
    {
        for (const auto& [locale, texts] : {
                 std::pair(QLocale(QLocale::German, QLocale::Austria), "Anmeldung, Treffer: 1, Unbekannt"),
                 {QLocale(QLocale::Russian), "Вход, Найдено: 1, Неизвестно"},
                 {QLocale(QLocale::French), "Login, Match: 1, Unknow"},
             }) {
            QTranslator translator;
            if (translator.load(locale, QStringLiteral("pardel"), QStringLiteral("_"), QStringLiteral(TRANSLATIONS)))
                QCoreApplication::installTranslator(&translator);
            DialogObjsFromTo dialog;
            QStandardItemModel objects;
            objects.appendRow(new QStandardItem(QStringLiteral("x")));
            dialog.tree->setModelAndCheckedO(&objects, nullptr);
            dialog.searchEdit->setText(QStringLiteral("x"));
            const QStringList seen = {fdPassword().windowTitle(), dialog.findLabel->text(), TUtils::TypeToString(1)};
            QCOMPARE(seen.join(QStringLiteral(", ")), QString::fromUtf8(texts));
        }
    }
};

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
