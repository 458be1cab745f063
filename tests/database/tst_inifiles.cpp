#include <Pardel/inifiles.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

namespace {

const QString printNames = QStringLiteral("--print-names");

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestIniFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namedAfterTheExecutable();
    void mergesTheTemplate_data();
    void mergesTheTemplate();
};

void TestIniFiles::namedAfterTheExecutable()
{
    QTemporaryDir folder;
    // A folder's dots do not count, and its name is no pattern.
    const QString base = folder.filePath(QStringLiteral("a %2.d/monitor"));
    const QString copy = base + QStringLiteral(".bin.x");
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("a %2.d")));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
    QProcess process;
    process.start(copy, {printNames});
    QVERIFY(process.waitForFinished());
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
             QStringLiteral("%1.ini\n%1.ini_def\n").replace(QLatin1String("%1"), base));
}

void TestIniFiles::mergesTheTemplate_data()
{
    for (const char* column : {"tmpl", "working", "merged"})
        QTest::addColumn<QByteArray>(column);
    const auto row = [](const char* name, const QByteArray& tmpl, const QByteArray& working, const QByteArray& merged) {
        QTest::newRow(name) << tmpl << working << merged;
    };
    row("own values stay", "[Db]\nX=1\nY=2\nZ=3\n", "[Db]\nX=mine\nY=\n", "[Db]\nX=mine\nY=\nZ=3\n");
    row("own keys and groups stay", "[Db]\nX=1\n", "[Db]\nA=2\n\n[My]\nY=3\n", "[Db]\nA=2\nX=1\n\n[My]\nY=3\n");
    row("new groups", "[A]\nX=1\nY=\"a,b\"\n[B]\nX=a, b\n", "", "[A]\nX=1\nY=\"a,b\"\n\n[B]\nX=a, b\n");
    row("same key of another group", "[A]\nX=1\n[B]\nX=2\n", "[A]\nX=9\n", "[A]\nX=9\n\n[B]\nX=2\n");
    row("nested groups are not copied", "[Db]\nX=1\nIn\\Y=2\n[Only]\nIn\\Z=3\n", "", "[Db]\nX=1\n");
    row("keys outside groups are not copied", "X=1\n[General]\nY=2\n[Db]\nZ=3\n", "", "[Db]\nZ=3\n");
    row("empty template", "", "[Db]\nX=1\n", "[Db]\nX=1\n");
}

void TestIniFiles::mergesTheTemplate()
{
    QFETCH(QByteArray, tmpl);
    QFETCH(QByteArray, working);
    QTemporaryDir folder;
    const QString workingFile = folder.filePath(QStringLiteral("x.ini"));
    const QString templateFile = folder.filePath(QStringLiteral("x.ini_def"));
    write(workingFile, working);
    write(templateFile, tmpl);
    QSettings settings(workingFile, QSettings::IniFormat);
    QSettings defaults(templateFile, QSettings::IniFormat);
    for (int time = 0; time < 2; ++time) {
        rebuildSettingsByTemplate(settings, defaults);
        QTEST(contentOf(workingFile), "merged");
    }
    QCOMPARE(contentOf(templateFile), tmpl);
    QCOMPARE(settings.group() + defaults.group(), QString());
}

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
