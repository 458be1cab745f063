// Which archives receive the sample, and with it users whose passwords everyone knows.

#include "deskarchive.h"

#include "archiveschema.h"
#include "desksettings.h"
#include "series.h"

#include "testfiles.h"

#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

class TestDeskArchive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sample_data()
    {
        QTest::addColumn<QStringList>("before"); // in an archive that is there already
        QTest::addColumn<int>("users");
        QTest::addColumn<int>("objects");
        QTest::addColumn<QString>("error");
        QTest::newRow("a new one") << QStringList() << 4 << 2 << QString();
        QTest::newRow("a sample that was ended in the middle")
            << QStringList{QStringLiteral("CREATE TABLE \"DeskSample\" (\"Begun\" integer)")} << 4 << 2 << QString();
        QTest::newRow("someone's, of which nothing is known yet")
            << QStringList{QStringLiteral("DELETE FROM archive.lastdata")} << 0 << 0 << QString();
        QTest::newRow("someone's, of after January 2038")
            << QStringList{QStringLiteral("INSERT INTO archive.lastdata (id_object, time_unix) VALUES (7, 2200000000)")}
            << 0 << 1 << QString();
        QTest::newRow("someone's that is damaged")
            << QStringList{QStringLiteral("DROP TABLE archive.lastdata")} << 0 << -1 << QStringLiteral("lastdata");
        QTest::newRow("someone's of which the archive's file is lost")
            << QStringList{QStringLiteral("DROP TABLE archive.lastdata"),
                           QStringLiteral("DROP TABLE archive.master_table")}
            << 0 << -1 << QStringLiteral("master_table");
    }

    void sample()
    {
        QFETCH(QStringList, before);
        const QTemporaryDir folder;
        DeskSettings settings(folder.path());
        settings.ini().setValue(QStringLiteral("Database/DBType"), QStringLiteral("sqlite3"));
        settings.ini().setValue(QStringLiteral("Sample/Terminals"), 2);
        settings.ini().setValue(QStringLiteral("Sample/Minutes"), 2);
        const QString name = QStringLiteral("before");
        if (!before.isEmpty()) {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            db.setDatabaseName(folder.filePath(QStringLiteral("pardel-desk.db")));
            QVERIFY(db.open());
            QCOMPARE(ArchiveSchema::attachArchive(db), QString());
            QCOMPARE(ArchiveSchema::create(db), QString());
            for (const QString& statement : before)
                QVERIFY(QSqlQuery(db).exec(statement));
        }
        QSqlDatabase::removeDatabase(name);
        DeskArchive archive;
        QFETCH(QString, error);
        const QString told = archive.open(settings, {});
        QVERIFY2(told.isEmpty() == error.isEmpty() && told.contains(error), qPrintable(told));
        QTEST(count(archive, "\"Connections\""), "users");
        QTEST(count(archive, "archive.lastdata"), "objects");
        if (count(archive, "archive.lastdata") > 0)
            QVERIFY(archive.newestTime() > 0);
    }

    void series_data() { addTableRows("series.txt"); }
    void series()
    {
        const QTemporaryDir folder;
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("series"));
        db.setDatabaseName(folder.filePath(QStringLiteral("series.db")));
        QVERIFY(db.open());
        QCOMPARE(ArchiveSchema::attachArchive(db), QString());
        QCOMPARE(ArchiveSchema::create(db), QString());
        for (const QByteArray& state : cell("states").split(','))
            QVERIFY(QSqlQuery(db).exec(
                QStringLiteral(
                    "INSERT INTO archive.master_table (id_object, fingerprint, time_unix, sens_3, sens_65, status_65) "
                    "VALUES (7, zeroblob(16), %1, 0)")
                    .arg(QString::fromLatin1(state.simplified().replace(' ', ',')))));
        const auto read = [&](qint16 type) {
            const Series values = Series::read(db, 7, type, 1000, 3000);
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
        QCOMPARE(Series::typesOf(db).mid(0, 2), (QVector<qint16>{Series::speed, Series::supply}));
        db.close();
        QVERIFY(!Series::read(db, 7, Series::speed, 1000, 3000).error.isEmpty());
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("series"));
    }

private:
    static int count(const DeskArchive& archive, const char* table)
    {
        QSqlQuery query(QStringLiteral("SELECT count(*) FROM ") + QLatin1String(table), archive.database());
        return query.next() ? query.value(0).toInt() : -1;
    }
};

QTEST_GUILESS_MAIN(TestDeskArchive)
#include "tst_deskarchive.moc"
