// What a desk hears of last states that others store: all of it, each once, whatever commits when and whatever breaks.

#include "archivechanges.h"

#include "archivefiller.h"
#include "archiveschema.h"
#include "archivewriter.h"
#include "changedstates.h"
#include "databasetest.h"
#include "reporttext.h"

#include <Pardel/archive.h>

#include <QSqlQuery>

#include <limits>
#include <memory>
#include <thread>

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
                                 last[static_cast<quint32>(state.idObject)] = state;
                                 ++count[static_cast<quint32>(state.idObject)];
                             }
                         });
        QObject::connect(changes.get(), &ArchiveChanges::troubleChanged, changes.get(),
                         [this](const QString& trouble) { troubles += trouble; });
    }

    std::unique_ptr<ArchiveChanges> changes;
    QMap<quint32, MobData> last;
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
        makeNew();
        store(db, {reportOf(1, 90, 1), reportOf(2, 90, 1)});
        Listener listener(db);
        store(db, {reportOf(2, 80, 2), reportOf(-2, 80, 2)}); // before it listens
        listener.changes->start();
        const quint32 large = 4'294'967'294;
        QTRY_COMPARE_WITH_TIMEOUT(listener.last.keys(), (QList<quint32>{2, large}), patience);
        QCOMPARE(reportText(listener.last[large]), reportText(reportOf(-2, 80, 2)));
        store(db, {reportOf(2, 70, 3)});
        store(db, {reportOf(2, 95, 4)}); // late: changes nothing
        QTRY_COMPARE_WITH_TIMEOUT(listener.count[2], 2, patience);
        QCOMPARE(reportText(listener.last[2]), reportText(reportOf(2, 70, 3)));
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
        makeNew();
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
            execute(QStringLiteral("DELETE FROM archive.lastdata WHERE id_object = 1"));
            store(other, {reportOf(2, 80, 1), reportOf(3, 80, 1)});
            QCOMPARE(objectsOf(states), QStringLiteral("2 3"));
        }
        QCOMPARE(objectsOf(states), QString());
        other.close();
    }

    void beginsAnewInAnotherDatabase()
    {
        makeNew();
        store(db, {reportOf(1, 90, 1)});
        ChangedStates states(std::numeric_limits<qint64>::max()); // of one whose numbers were greater
        QCOMPARE(states.use(db), QString());
        QCOMPARE(objectsOf(states), QStringLiteral("1"));
        QCOMPARE(objectsOf(states), QString());
    }

    void waitsForTheColumn()
    {
        makeNew();
        execute(QStringLiteral("DROP INDEX archive.lastdata_changed"));
        execute(QStringLiteral("ALTER TABLE archive.lastdata DROP COLUMN changed"));
        Listener listener(db);
        listener.changes->start();
        QTRY_COMPARE_WITH_TIMEOUT(listener.troubles.size(), 1, patience);
        QVERIFY(listener.troubles.constFirst().contains(QLatin1String("pardel-archive create")));
        store(db, {reportOf(1, 90, 1)});
        QCOMPARE(ArchiveSchema::create(db), QString());
        store(db, {reportOf(2, 90, 1)});
        QTRY_COMPARE_WITH_TIMEOUT(listener.last.keys(), QList<quint32>{2}, patience);
        QCOMPARE(listener.troubles.size(), 2);
        QCOMPARE(listener.troubles.constLast(), QString());
    }

    void goesOnAfterALostConnection()
    {
        if (!ArchiveSchema::isPostgres(db))
            return; // there is none
        makeNew();
        Listener listener(db);
        listener.changes->start();
        store(db, {reportOf(1, 90, 1)});
        QTRY_COMPARE_WITH_TIMEOUT(listener.count[1], 1, patience);
        QCOMPARE(valuesOf("SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity WHERE pid <> pg_backend_pid() "
                          "AND query LIKE '%id_object%'"),
                 "1");
        store(db, {reportOf(2, 90, 1)});
        QTRY_COMPARE_WITH_TIMEOUT(listener.troubles.size(), 1, patience);
        QVERIFY2(listener.troubles.constFirst().contains(QLatin1String("server closed the connection")),
                 qPrintable(listener.troubles.constFirst()));
        QTRY_COMPARE_WITH_TIMEOUT(listener.count[2], 1, patience);
        QCOMPARE(listener.troubles.size(), 2);
        QCOMPARE(listener.count[1], 1);
    }

    void hearsTwoWritersAtOnce()
    {
        makeNew();
        Listener listener(db);
        listener.changes->start();
        const auto write = [this](int which) {
            const QString name = QStringLiteral("writer %1 %2").arg(which).arg(db.driverName());
            {
                const QSqlDatabase own = openAnother(name);
                QSqlDatabase attached = own;
                if (!ArchiveSchema::isPostgres(own))
                    ArchiveSchema::attachArchive(attached);
                ArchiveWriter writer(own);
                for (int commit = 0; commit < 25; ++commit) {
                    for (qint32 object = 1; object <= 300; ++object)
                        writer.add(reportOf(object + 100 * which, 500 - 2 * commit - which, float(commit)));
                    writer.flush();
                }
            }
            QSqlDatabase::removeDatabase(name);
        };
        std::thread first(write, 0);
        std::thread second(write, 1);
        QTRY_COMPARE_WITH_TIMEOUT(listener.last.size(), 400, patience); // while they are at work
        first.join();
        second.join();
        QMap<quint32, QByteArray> expected;
        readLastStates({15, 65}, db, [&](const MobData& state) {
            expected[static_cast<quint32>(state.idObject)] = reportText(state);
            return true;
        });
        QCOMPARE(expected.size(), 400);
        const auto heard = [&] {
            QMap<quint32, QByteArray> texts;
            for (const MobData& state : qAsConst(listener.last))
                texts[static_cast<quint32>(state.idObject)] = reportText(state);
            return texts;
        };
        QTRY_COMPARE_WITH_TIMEOUT(heard(), expected, patience);
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
                QVERIFY(ArchiveFiller::isClaimed(db));
                QVERIFY(ArchiveFiller::isClaimed(other));
            }
            other.close();
            QTRY_VERIFY(!ArchiveFiller::isClaimed(db));
        }
    }

private:
    void makeNew()
    {
        execute(ArchiveSchema::isPostgres(db) ? QStringLiteral("SET client_min_messages = warning")
                                              : QStringLiteral("PRAGMA archive.synchronous = off"));
        execute(QStringLiteral("DROP TABLE IF EXISTS archive.master_table"));
        execute(QStringLiteral("DROP TABLE IF EXISTS archive.lastdata"));
        QCOMPARE(ArchiveSchema::create(db), QString());
    }

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
