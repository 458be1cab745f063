#include "testfiles.h"

#include <Pardel/inifiles.h>

#include <QColor>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLineF>
#include <QPoint>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>

namespace {

const QString printNames = QStringLiteral("--print-names");

} // namespace

class TestIniFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namedAfterTheExecutable()
    {
        QTemporaryDir folder;
        // A folder's dots do not count, and its name is no pattern.
        const QString base = folder.filePath(QStringLiteral("a %2.d/monitor"));
        const QString copy = base + QStringLiteral(".bin.x");
        QVERIFY(QDir().mkdir(QFileInfo(base).path()) && QFile::copy(QCoreApplication::applicationFilePath(), copy));
        QProcess process;
        process.start(copy, {printNames});
        QVERIFY(process.waitForFinished());
        QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
                 QStringLiteral("%1.ini\n%1.ini_def\n").replace(QLatin1String("%1"), base));
    }

    void mergesTheTemplate_data() { addTableRows("inifiles.txt"); }

    void mergesTheTemplate()
    {
        const QTemporaryDir folder;
        const QString workingFile = folder.filePath(QStringLiteral("x.ini"));
        const QString templateFile = folder.filePath(QStringLiteral("x.ini_def"));
        writeFile(workingFile, cell("before"));
        writeFile(templateFile, cell("template"));
        QSettings settings(workingFile, pardelIniFormat());
        QSettings defaults(templateFile, pardelIniFormat());
        for (int time = 0; time < 2; ++time) {
            rebuildSettingsByTemplate(settings, defaults);
            QCOMPARE(contentOf(workingFile), cell("after"));
        }
        QCOMPARE(contentOf(templateFile), cell("template"));
        QCOMPARE(settings.group() + defaults.group(), QString());
    }

    void sharedFormat_data() { addTableRows("iniformat.txt"); }

    void sharedFormat()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("x.ini"));
        writeFile(path, cell("file").replace("<e9>", "\xe9").replace("<bom>", "\xef\xbb\xbf"));
        QSettings settings(path, pardelIniFormat());
        const QString key = QString::fromUtf8(cell("key"));
        QCOMPARE(settings.value(key).toStringList().join(QLatin1Char('&')).toUtf8(), cell("value"));
        settings.setValue(QStringLiteral("zz"), 1); // so that all of it is written anew
        settings.sync();
        QCOMPARE(contentOf(path), "[General]\nzz=1\n\n" + cell("saved").replace("<b>", "\\"));
        const QSettings copy(path, QSettings::IniFormat); // as any program of either Qt reads it
        QCOMPARE(copy.value(key), settings.value(key));
    }

    void whatCannotBeReadStays()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("x.ini"));
        const QByteArray content("[g]\nk=v\n");
        writeFile(path, content);
        const QByteArray temporary = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/dev/null"); // where the format keeps what Qt reads
        QSettings settings(path, pardelIniFormat());
        temporary.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", temporary);
        QCOMPARE(settings.status(), QSettings::FormatError);
        QCOMPARE(QSettings(folder.path(), pardelIniFormat()).status(), QSettings::AccessError);
        settings.setValue(QStringLiteral("g/l"), 1);
        settings.sync();
        QCOMPARE(contentOf(path), content);
    }

    void streamedValues()
    {
        // What QSettings writes as a stream comes back, alone and in lists.
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("x.ini"));
        const QDateTime moment(QDate(2026, 2, 28), QTime(1, 2), Qt::UTC);
        const QVariantList values{QColor(1, 2, 3),
                                  moment,
                                  QLineF(1, 2, 3, 4),
                                  QStringLiteral("@Variant(x)"),
                                  0.5F,
                                  QVariantMap{{QStringLiteral("@D"), QStringLiteral("Ж, \"=\\")}},
                                  QPoint(1, 2),
                                  QByteArray("@Variant(\0,@D\"\\", 14),
                                  QStringList{QStringLiteral("@V"), QString()}};
        QVariantMap written{{QStringLiteral("all"), values}};
        for (const QVariant& value : values)
            written.insert(QStringLiteral("a@V%1").arg(written.size()), value);
        {
            QSettings settings(path, QSettings::IniFormat);
            for (auto value = written.cbegin(); value != written.cend(); ++value)
                settings.setValue(value.key(), value.value());
        }
        // Copies, as Qt still knows what it has written.
        for (const QString& copy : {path + QLatin1Char('1'), path + QLatin1String("12")}) {
            QVERIFY(QFile::copy(copy.chopped(1), copy));
            QSettings settings(copy, pardelIniFormat());
            for (auto value = written.cbegin(); value != written.cend(); ++value)
                QCOMPARE(settings.value(value.key()), value.value());
            settings.setValue(QStringLiteral("zz"), copy); // so that all of it is written anew
        }
        // Few bytes for their size: for a fourth one there is no room.
        QImage image(6000, 6000, QImage::Format_Mono);
        image.fill(0);
        const QString large = folder.filePath(QStringLiteral("large.ini"));
        for (const QChar key : QStringLiteral("abcd"))
            QSettings(large, QSettings::IniFormat).setValue(key, image);
        const QString copy = folder.filePath(QStringLiteral("copy.ini"));
        QVERIFY(QFile::copy(large, copy));
        QCOMPARE(QSettings(copy, pardelIniFormat()).allKeys().size(), 3);
    }
};

/// As a copy of itself under another name, the program prints the names that follow from it.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) == printNames) {
        for (bool isTemplate : {false, true})
            std::puts(qUtf8Printable(getIniNameDefault(isTemplate)));
        return 0;
    }
    TestIniFiles test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_inifiles.moc"
