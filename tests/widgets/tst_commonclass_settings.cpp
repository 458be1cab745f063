#include <Pardel/commonclass.h>

#include "testfiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly));
    file.write(content);
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
        write(m_path, cell(0));
        const QString group = QString::fromUtf8(cell(1));
        QCOMPARE(m_common.iniValue(group, QString::fromUtf8(cell(2)), text("default"), m_file), cell(3));
    }

    void storesValues()
    {
        QCOMPARE(m_common.iniValue(text("g"), text("k"), text("Юг"), m_file), QByteArray("Юг"));
        m_common.iniSetValue(text("g"), text("k"), text("a, \"b\"; c=\n"), m_file);
        m_common.iniSetValue(text("g"), text("deep/k"), text("Größe Юг"), m_file);
        m_common.iniSetValue(text("g"), text("ключ"), text("v"), m_file);
        m_common.iniSetValue(text("g"), QString(), text("v"), m_file);
        QCOMPARE(m_common.iniValue(text("g"), text("k"), QString(), m_file), QByteArray("a, \"b\"; c=\n"));
        QCOMPARE(m_common.iniValue(text("g"), text("deep/k"), QString(), m_file), QByteArray("Größe Юг"));
        QCOMPARE(m_common.iniValue(text("g"), text("ключ"), text("none"), m_file), QByteArray("none"));

        // As any other program sees it.
        QCOMPARE(contentOf(m_path), QByteArray("[g]\ndeep\\k=Gr\\xf6\\xdf\\x65 \\x42e\\x433\n"
                                               "k=\"a, \\\"b\\\"; c=\\n\"\n%D0%BA%D0%BB%D1%8E%D1%87=v\n"));
        QSettings settings(m_path, QSettings::IniFormat);
        QCOMPARE(settings.value(text("g/deep/k")).toString(), text("Größe Юг"));
        QCOMPARE(settings.value(QLatin1String("g/") + QString::fromLatin1("ключ")).toString(), text("v"));
    }

    void keepsWhatOthersWrote()
    {
        write(m_path, "[g]\nother=Север\nlatin=Gr\xfc\xdf\xe9\n");
        QSettings application(m_path, QSettings::IniFormat); // what it has read is what all others of the process see
        QCOMPARE(application.allKeys().size(), 2);
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(m_common.iniValue(text("g"), text("other"), QString(), m_file), QByteArray("Север"));
            QCOMPARE(m_common.iniValue(text("g"), text("latin"), QString(), m_file), QByteArray("Grüßé"));
            m_common.iniSetValue(text("g"), text("k"), text("v"), m_file);
        }
    }

    void clearsTheWholeFile()
    {
        write(m_path, "top=1\n[Filter]\ncount=2\nRegion\\1=10\n");
        m_common.iniClear(text("another"), m_file);
        QCOMPARE(contentOf(m_path).trimmed(), QByteArray());
    }

    void regions()
    {
        const QDir folder(QCoreApplication::applicationDirPath() + text("/Settings"));
        QVERIFY(m_common.GetFilterRegionsIDList().isEmpty());
        for (const auto& [content, expected] :
             {std::pair(text("count=2\nRegion\\1=10\n"), text("10|")),
              {text("count=3\nRegion\\1=10\nRegion\\3=Север и юг\nRegion\\4=4\n"), text("10||Север и юг")},
              {text("count=0\nRegion\\1=10\n"), QString()},
              {text("count=-1\nRegion\\1=10\n"), QString()},
              {text("count=two\nRegion\\1=10\n"), QString()},
              {text("Region\\1=10\n"), QString()},
              {text("count=2147483647\nRegion\\2=10\n"), QLatin1String("|10") + QString(65535, QLatin1Char('|'))}}) {
            write(folder.filePath(text("Filter.ini")), "[Filter]\n" + content.toUtf8());
            QCOMPARE(m_common.GetFilterRegionsIDList().join(QLatin1Char('|')), expected);
        }
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
