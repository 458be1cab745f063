#include <Pardel/commonclass.h>
#include <Pardel/inifiles.h>

#include "testfiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class TestCommonclassSettings : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(text("some.ini"));
    const QString m_file = QLatin1Char('/') + QDir(QCoreApplication::applicationDirPath()).relativeFilePath(m_path);
    Commonclass m_common;

private Q_SLOTS:
    void init()
    {
        QFile::remove(m_path);
        QDir(QCoreApplication::applicationDirPath() + text("/Settings")).removeRecursively();
    }

    void cleanupTestCase() { init(); }

    void values_data() { addTableRows("commonclass.txt"); }
    void values()
    {
        writeFile(m_path, cell("file"));
        const QString group = QString::fromUtf8(cell("group"));
        QCOMPARE(m_common.iniValue(group, QString::fromUtf8(cell("key")), text("default"), m_file), cell("value"));
    }

    void storesValues()
    {
        writeFile(m_path, "[g]\nother=Север\nlatin=Gr\xfc\xdf\xe9\n");
        // What it has read is what all others of the process see. Qt 6 alone would take the second value for bad UTF-8.
        QSettings application(m_path, QT_VERSION_MAJOR == 5 ? QSettings::IniFormat : pardelIniFormat());
        QCOMPARE(application.allKeys().size(), 2);
        const std::pair<const char*, const char*> values[] = {
            {"k", "a, \"b\"; c=\n"}, {"deep/k", "Größe Юг"}, {"ключ", "v"}, {"", "v"}};
        for (const auto& [key, value] : values)
            m_common.iniSetValue(text("g"), text(key), text(value), m_file);
        const auto value = [&](const char* key) { return m_common.iniValue(text("g"), text(key), text("Юг"), m_file); };
        QCOMPARE(value("k"), QByteArray("a, \"b\"; c=\n"));
        QCOMPARE(value("deep/k"), QByteArray("Größe Юг"));
        QCOMPARE(value("ключ"), QByteArray("Юг"));
        QCOMPARE(value("other"), QByteArray("Север"));
        QCOMPARE(value("latin"), QByteArray("Grüßé"));
        QVERIFY(contentOf(m_path).contains("deep\\k=Gr\\xf6\\xdf\\x65 \\x42e\\x433\nk=\"a, \\\"b\\\"; c=\\n\"\n"));
        QVERIFY(contentOf(m_path).contains("\n%D0%BA%D0%BB%D1%8E%D1%87=v\n"));
        m_common.iniClear(text("another"), m_file);
        QCOMPARE(contentOf(m_path).trimmed(), QByteArray());
    }

    void regions_data() { addTableRows("regions.txt"); }
    void regions()
    {
        QVERIFY(m_common.GetFilterRegionsIDList().isEmpty());
        const QString folder = QCoreApplication::applicationDirPath() + text("/Settings");
        QVERIFY(QDir().mkpath(folder));
        writeFile(folder + text("/Filter.ini"), cell("file"));
        QCOMPARE(m_common.GetFilterRegionsIDList().join(text("; ")).toUtf8().left(40), cell("regions"));
        QCOMPARE(m_common.GetFilterRegionsIDList().size(), cell("count").toInt());
    }

    void currentUser()
    {
        QCOMPARE(m_common.Get_DispID(), 0U);
        QCOMPARE(m_common.Get_DispFIO(), text("  "));
        m_common.currentUser = {
            {{0, 5}, {1, 4000000000U}}, {{0, text("x")}, {1, text("Surname")}}, {{text("r"), 1, 2}}};
        QCOMPARE(m_common.Get_DispID(), 4000000000U);
        QCOMPARE(m_common.Get_DispFIO(), text("Surname  "));
        m_common.currentUser.nameParts = {{1, text("S")}, {2, text("G")}, {3, text("P")}};
        QCOMPARE(m_common.Get_DispFIO(), text("S G P"));
        QCOMPARE(m_common.toolBarStyle, text(" QToolBar {  background-color: qlineargradient(spread:reflect, "
                                             "x1:0.995494, y1:1, x2:1, y2:0.159, stop:0 rgba(61, 61, 61, 255), "
                                             "stop:1 rgba(225, 225, 225, 255)); } "));
        QVERIFY(!m_common.parent());
    }
};

QTEST_GUILESS_MAIN(TestCommonclassSettings)
#include "tst_commonclass_settings.moc"
