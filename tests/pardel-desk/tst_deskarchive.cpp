// Which archives receive the sample, and with it users whose passwords everyone knows.

#include "deskarchive.h"

#include "archiveschema.h"
#include "desksettings.h"
#include "series.h"

#include "testfiles.h"

#include <Pardel/inifiles.h>

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QSqlQuery>
#include <QTemporaryDir>

class TestDeskArchive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("made"));
    }

    void sample_data() { addTableRows("desk-samples.txt"); }
    void sample()
    {
        const QTemporaryDir folder;
        DeskSettings settings(folder.path());
        settings.ini().setValue(QStringLiteral("Database/DBType"), QStringLiteral("sqlite3"));
        settings.ini().setValue(QStringLiteral("Sample/Terminals"), 2);
        settings.ini().setValue(QStringLiteral("Sample/Minutes"), 2);
        if (!cell("before").isEmpty())
            makeArchive(folder.filePath(QStringLiteral("pardel-desk.db")), cell("before").split(';'));
        cleanup();
        DeskArchive archive;
        const QByteArray told = archive.open(settings, {}).toUtf8();
        QVERIFY2(told.isEmpty() == cell("error").isEmpty() && told.contains(cell("error")), told);
        QCOMPARE(count(archive, "\"Connections\""), cell("users").toInt());
        QCOMPARE(count(archive, "archive.lastdata"), cell("objects").toInt());
        QCOMPARE(archive.newestTime() > 0, count(archive, "archive.lastdata") > 0);
    }

    void settingsThatCannotBeRead()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(QFileInfo(getIniNameDefault(false)).fileName()));
        const QByteArray told = DeskSettings(folder.path()).error().toUtf8();
        QVERIFY2(told.contains(".ini cannot be read and was left as it is; "), told);
    }

    void series_data() { addTableRows("series.txt"); }
    void series()
    {
        const QTemporaryDir folder;
        QByteArrayList rows;
        for (const QByteArray& state : cell("states").split(','))
            rows += "INSERT INTO archive.master_table (id_object, fingerprint, time_unix, sens_3, sens_65, status_65) "
                    "VALUES (7, zeroblob(16), " +
                    state.simplified().replace(' ', ',') + ", 0)";
        makeArchive(folder.filePath(QStringLiteral("series.db")), rows);
        const auto read = [this](qint16 type) {
            const Series values = Series::read(m_db, 7, type, 1000, 3000);
            QByteArray text = values.error.toUtf8();
            for (const auto& piece : values.pieces) {
                text += text.isEmpty() ? "" : " | ";
                for (const QPointF& point : piece)
                    text += (&point == &piece.first() ? "" : " ") + QByteArray::number(qRound(point.x())) + "=" +
                            QByteArray::number(point.y());
            }
            return text;
        };
        QCOMPARE(read(Series::speed), cell("speed").replace('/', "|"));
        QCOMPARE(read(Series::supply), cell("supply").replace('/', "|"));
        QCOMPARE(Series::typesOf(m_db).mid(0, 2), (QVector<qint16>{Series::speed, Series::supply}));
        m_db.close();
        QVERIFY(!Series::read(m_db, 7, Series::speed, 1000, 3000).error.isEmpty());
    }

private:
    void makeArchive(const QString& file, const QByteArrayList& statements)
    {
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("made"));
        m_db.setDatabaseName(file);
        QVERIFY(m_db.open());
        QCOMPARE(ArchiveSchema::attachArchive(m_db), QString());
        QCOMPARE(ArchiveSchema::create(m_db), QString());
        for (const QByteArray& statement : statements)
            QVERIFY(QSqlQuery(m_db).exec(QString::fromLatin1(statement)));
    }

    static int count(const DeskArchive& archive, const char* table)
    {
        QSqlQuery query(QStringLiteral("SELECT count(*) FROM ") + QLatin1String(table), archive.database());
        return query.next() ? query.value(0).toInt() : -1;
    }

    QSqlDatabase m_db; // that makeArchive has made
};

QTEST_GUILESS_MAIN(TestDeskArchive)
#include "tst_deskarchive.moc"
