// What a desk hears of last states that others store: all of it, each once, whatever commits when and whatever breaks.

#include "archivechanges.h"

#include "archivefiller.h"
#include "archiveschema.h"
#include "archivewriter.h"
#include "changedstates.h"
#include "databasetest.h"
#include "reporttext.h"
#include "shell.h"

#include <Pardel/archive.h>

#include <QProcess>
#include <QSqlQuery>

#include <limits>
#include <memory>

namespace {

constexpr int patience = 20'000; // ms
const auto now = static_cast<qint32>(QDateTime::currentSecsSinceEpoch());

MobData reportOf(qint32 object, int secondsAgo, float value)
{
    return {object, 5, 6, 7, 8, now - secondsAgo, {makeSensor(15, 0), makeSensor(65, value, 3)}};
}

void store(const QSqlDatabase& db, const QList<MobData>& reports)
{
    ArchiveWriter writer(db);
    for (const MobData& report : reports)
        writer.add(report);
    writer.flush();
    QCOMPARE(writer.error(), QString());
}

/// What has been heard, and how often of each object.
class Listener
{
public:
    explicit Listener(const QSqlDatabase& db) : changes(std::make_unique<ArchiveChanges>(db))
    {
        QObject::connect(changes.get(), &ArchiveChanges::statesChanged, changes.get(),
                         [this](const QVector<MobData>& states) {
                             for (const MobData& state : states) {
                                 last[static_cast<quint32>(state.idObject)] = reportText(state);
                                 ++count[static_cast<quint32>(state.idObject)];
                             }
                         });
        QObject::connect(changes.get(), &ArchiveChanges::troubleChanged, changes.get(),
                         [this](const QString& trouble) { troubles += trouble; });
    }

    std::unique_ptr<ArchiveChanges> changes;
    QMap<quint32, QByteArray> last;
    QMap<quint32, int> count;
    QStringList troubles;
};

} // namespace

class TestArchiveChanges : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void tellsOfEachChangeOnce()
    {
        makeArchiveAnew();
        store(db, {reportOf(1, 90, 1), reportOf(2, 90, 1)});
        Listener listener(db);
        store(db, {reportOf(2, 80, 2), reportOf(-2, 80, 2)}); // before it listens
        listener.changes->start();
        const quint32 large = 4'294'967'294;
        QTRY_COMPARE_WITH_TIMEOUT(listener.last.keys(), (QList<quint32>{2, large}), patience);
        QCOMPARE(listener.last[large], reportText(reportOf(-2, 80, 2)));
        store(db, {reportOf(2, 70, 3)});
        store(db, {reportOf(2, 95, 4)}); // late: changes nothing
        QTRY_COMPARE_WITH_TIMEOUT(listener.count[2], 2, patience);
        QCOMPARE(listener.last[2], reportText(reportOf(2, 70, 3)));
        QList<MobData> many;
        for (qint32 object = 1; object <= 1000; ++object) // several pages
            many += reportOf(object, 60, 5);
        store(db, many);
        QTRY_COMPARE_WITH_TIMEOUT(listener.count.size(), 1001, patience);
        QCOMPARE(listener.count[2], 3);
        QCOMPARE(listener.count[large], 1);
        QCOMPARE(listener.troubles, QStringList());
    }

    void missesNoLateCommit()
    {
        makeArchiveAnew();
        store(db, {reportOf(1, 90, 1), reportOf(2, 90, 1), reportOf(3, 90, 1)});
        ChangedStates states(ChangedStates::present(db));
        QCOMPARE(states.use(db), QString());
        QCOMPARE(objectsOf(states), QString());
        QSqlDatabase other = openAnother(QStringLiteral("late") + db.driverName());
        if (ArchiveSchema::isPostgres(db)) {
            const QString change =
                QStringLiteral("UPDATE archive.lastdata SET changed = pg_current_xact_id()::text::bigint WHERE "
                               "id_object = %1");
            other.transaction();
            QVERIFY(QSqlQuery(other).exec(change.arg(1)));
            execute(change.arg(2)); // begins later and commits earlier
            QCOMPARE(objectsOf(states), QStringLiteral("2"));
            QCOMPARE(objectsOf(states), QString());
            execute(change.arg(3));
            other.commit();
            QCOMPARE(objectsOf(states), QStringLiteral("1 3"));
        } else {
            ArchiveSchema::attachArchive(other);
            store(other, {reportOf(1, 80, 1)});
            execute("DELETE FROM archive.lastdata WHERE id_object = 1");
            store(other, {reportOf(2, 80, 1), reportOf(3, 80, 1)});
            QCOMPARE(objectsOf(states), QStringLiteral("2 3"));
        }
        QCOMPARE(objectsOf(states), QString());
        other.close();
    }

    void beginsAnewInAnotherDatabase()
    {
        makeArchiveAnew();
        store(db, {reportOf(1, 90, 1)});
        ChangedStates states(std::numeric_limits<qint64>::max()); // of one whose numbers were greater
        QCOMPARE(states.use(db), QString());
        QCOMPARE(objectsOf(states), QStringLiteral("1"));
        QCOMPARE(objectsOf(states), QString());
    }

    void waitsForTheColumn()
    {
        makeArchiveAnew();
        execute("DROP INDEX archive.lastdata_changed");
        execute("ALTER TABLE archive.lastdata DROP COLUMN changed");
        Listener listener(db);
        listener.changes->start();
        QTRY_COMPARE_WITH_TIMEOUT(listener.troubles.size(), 1, patience);
        QVERIFY(listener.troubles[0].contains(QLatin1String("pardel-archive create")));
        store(db, {reportOf(1, 90, 1)});
        QCOMPARE(ArchiveSchema::create(db), QString());
        store(db, {reportOf(2, 90, 1)});
        QTRY_COMPARE_WITH_TIMEOUT(listener.last.keys(), QList<quint32>{2}, patience);
        QCOMPARE(listener.troubles.mid(1), QStringList(QString()));
    }

    void goesOnAfterALostConnection()
    {
        if (!ArchiveSchema::isPostgres(db))
            return; // there is none
        makeArchiveAnew();
        Listener listener(db);
        listener.changes->start();
        store(db, {reportOf(1, 90, 1)});
        QTRY_COMPARE_WITH_TIMEOUT(listener.count[1], 1, patience);
        QCOMPARE(valuesOf("SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity WHERE pid <> pg_backend_pid() "
                          "AND query LIKE '%id_object%'"),
                 "1");
        store(db, {reportOf(2, 90, 1)});
        QTRY_COMPARE_WITH_TIMEOUT(listener.troubles.size(), 1, patience);
        QVERIFY2(listener.troubles[0].contains(QLatin1String("server closed the connection")),
                 qPrintable(listener.troubles[0]));
        QTRY_COMPARE_WITH_TIMEOUT(listener.count[2], 1, patience);
        QCOMPARE(listener.troubles.size(), 2);
        QCOMPARE(listener.count[1], 1);
    }

    void hearsTwoWritersAtOnce()
    {
        makeArchiveAnew();
        Listener listener(db);
        listener.changes->start();
        QProcess writers; // commit each minute of every object
        startShell(
            writers,
            QStringLiteral("for S in 1 2; do for M in 1 2 3 4 5 6 7 8 9; do \"$simulate\" --terminals 400 --minutes $M "
                           "--seed $S | \"$import\" $db 2>&1 || echo failed; done & done; wait"),
            iniFile);
        QTRY_COMPARE_WITH_TIMEOUT(writers.state(), QProcess::NotRunning, patience);
        QVERIFY2(!writers.readAll().contains("failed"), "one of them cannot store");
        QMap<quint32, QByteArray> expected;
        QList<qint16> types;
        readSensorTypes(types, db);
        readLastStates(types, db, [&](const MobData& state) {
            expected[static_cast<quint32>(state.idObject)] = reportText(state);
            return true;
        });
        QCOMPARE(expected.size(), 400);
        QTRY_COMPARE_WITH_TIMEOUT(listener.last, expected, patience);
        QCOMPARE(listener.troubles, QStringList());
    }

    void knowsWhetherSomebodyFills()
    {
        QVERIFY(!ArchiveFiller::isClaimed(db));
        for (const char* name : {"filler 1", "filler 2"}) {
            QSqlDatabase other = openAnother(QLatin1String(name) + db.driverName());
            {
                ArchiveFiller fillers[2];
                for (ArchiveFiller& filler : fillers)
                    QCOMPARE(filler.claim(other) + filler.claim(other), QString());
                QVERIFY(ArchiveFiller::isClaimed(db) && ArchiveFiller::isClaimed(other));
            }
            other.close();
            QTRY_VERIFY(!ArchiveFiller::isClaimed(db));
        }
    }

private:
    /// What a reading finds.
    static QString objectsOf(ChangedStates& states)
    {
        QString error = states.find();
        QStringList objects;
        while (error.isEmpty() && states.hasMore()) {
            QVector<MobData> page;
            error = states.read(&page);
            for (const MobData& state : qAsConst(page))
                objects += QString::number(state.idObject);
        }
        objects.sort();
        return error + objects.join(QLatin1Char(' '));
    }
};

QTEST_GUILESS_MAIN(TestArchiveChanges)
#include "tst_archivechanges.moc"
