// What pardel-import costs beside the bare way of bringing the same rows into the same tables: COPY with psql into
// PostgreSQL (run through scripts/with-postgres), prepared INSERTs into an SQLite file. And what it costs once more.

#include "archiveschema.h"
#include "postgres.h"
#include "toolruns.h"

#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QVariant>

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

namespace {

constexpr int rounds = 3;
constexpr int rowsInTransaction = 20'000;

/// Fastest times in seconds, and how many rows.
struct Times
{
    std::vector<double> imported;
    std::vector<double> importedAgain;
    std::vector<double> bare;
    qint64 rows = 0;
};

double secondsOf(const QString& program, const QStringList& arguments)
{
    QElapsedTimer timer;
    timer.start();
    if (QProcess::execute(program, arguments) != 0)
        qFatal("%s fails", qPrintable(program));
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

double secondsOfImport(const QString& ini, const QString& group, const QString& capture)
{
    return secondsOf(QStringLiteral(PARDEL_IMPORT), {QStringLiteral("--ini"), ini, QStringLiteral("--group"), group,
                                                     QStringLiteral("--create"), capture});
}

QSqlDatabase opened(const QString& ini, const QString& group)
{
    QSettings settings(ini, QSettings::IniFormat);
    QString name = group;
    if (openDataBaseBySettings(name, settings, group, QString()).type() != QSqlError::NoError)
        qFatal("cannot open %s", qPrintable(group));
    return QSqlDatabase::database(name);
}

/// The columns of the archive's history that hold something.
QStringList columnsInUse(const QSqlDatabase& db)
{
    QStringList columns;
    QStringList counts;
    const QSqlRecord record = db.record(QStringLiteral("archive.master_table"));
    for (int i = 0; i < record.count(); ++i)
        counts += QStringLiteral("count(%1)").arg(record.fieldName(i));
    QSqlQuery query(QStringLiteral("SELECT %1 FROM archive.master_table").arg(counts.join(QLatin1Char(','))), db);
    query.next();
    for (int i = 0; i < record.count(); ++i) {
        if (query.value(i).toLongLong() > 0)
            columns += record.fieldName(i);
    }
    return columns;
}

/// The faster of COPY's two formats.
double secondsOfCopy(const QTemporaryDir& folder, const QString& database, const QSqlDatabase& db)
{
    const QString columns = columnsInUse(db).join(QLatin1Char(','));
    const auto psql = [&](const QString& command) {
        return secondsOf(QStringLiteral("psql"), {QStringLiteral("-qd"), database, QStringLiteral("-c"), command});
    };
    std::vector<double> seconds;
    for (const QString& format : {QStringLiteral("text"), QStringLiteral("binary")}) {
        const QString file =
            QStringLiteral("'%1' WITH (FORMAT %2)").arg(folder.filePath(QStringLiteral("rows")), format);
        psql(
            QStringLiteral("\\copy (SELECT %1 FROM archive.master_table ORDER BY time_unix) TO %2").arg(columns, file));
        psql(QStringLiteral("TRUNCATE archive.master_table"));
        psql(QStringLiteral("CHECKPOINT"));
        seconds.push_back(psql(QStringLiteral("\\copy archive.master_table (%1) FROM %2").arg(columns, file)));
    }
    return fastest(seconds);
}

void measurePostgres(const QTemporaryDir& folder, const QString& ini, const QString& capture, Times& times)
{
    for (int round = 0; round < rounds; ++round) {
        const QString name = QStringLiteral("import%1").arg(round);
        if (!makePostgresDatabase(name, ini, name))
            qFatal("cannot make a database");
        QSqlDatabase db = opened(ini, name);
        const auto checkpoint = [&db] { QSqlQuery(db).exec(QStringLiteral("CHECKPOINT")); };
        checkpoint();
        times.imported.push_back(secondsOfImport(ini, name, capture));
        checkpoint();
        times.importedAgain.push_back(secondsOfImport(ini, name, capture));
        times.bare.push_back(secondsOfCopy(folder, name, db));
        QSqlQuery query(QStringLiteral("SELECT count(*) FROM archive.master_table"), db);
        query.next();
        times.rows = query.value(0).toLongLong();
    }
}

/// A row without its columns that are null, and which these are.
struct BareRow
{
    QByteArray columns;
    QVariantList values;
};

std::vector<BareRow> readRows(const QSqlDatabase& db)
{
    const QStringList names = columnsInUse(db);
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.exec(QStringLiteral("SELECT %1 FROM archive.master_table ORDER BY rowid").arg(names.join(QLatin1Char(','))));
    std::vector<BareRow> rows;
    while (query.next()) {
        rows.emplace_back();
        for (int i = 0; i < names.size(); ++i) {
            const QVariant value = query.value(i);
            if (value.isNull())
                continue;
            rows.back().columns += (i == 0 ? "" : ",") + names[i].toLatin1();
            rows.back().values += value;
        }
    }
    return rows;
}

double secondsOfInserts(QSqlDatabase& db, const std::vector<BareRow>& rows)
{
    QElapsedTimer timer;
    timer.start();
    std::map<QByteArray, QSqlQuery> queries;
    int inTransaction = 0;
    for (const BareRow& row : rows) {
        if (inTransaction++ == 0)
            db.transaction();
        const auto [place, isNew] = queries.try_emplace(row.columns, db);
        QSqlQuery& query = place->second;
        if (isNew) {
            QStringList marks;
            for (int i = 0; i < row.values.size(); ++i)
                marks += QStringLiteral("?");
            query.prepare(QStringLiteral("INSERT INTO archive.master_table (%1) VALUES (%2)")
                              .arg(QString::fromLatin1(row.columns), marks.join(QLatin1Char(','))));
        }
        for (int i = 0; i < row.values.size(); ++i)
            query.bindValue(i, row.values[i]);
        if (!query.exec())
            qFatal("cannot insert a row");
        if (inTransaction == rowsInTransaction) {
            db.commit();
            inTransaction = 0;
        }
    }
    db.commit();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

void measureSqlite(const QTemporaryDir& folder, const QString& ini, const QString& capture, Times& times)
{
    std::vector<BareRow> rows;
    for (int round = 0; round < rounds; ++round) {
        const QString name = QStringLiteral("sqlite%1").arg(round);
        describeSqliteFile(folder.filePath(name + QStringLiteral(".db")), ini, name);
        times.imported.push_back(secondsOfImport(ini, name, capture));
        times.importedAgain.push_back(secondsOfImport(ini, name, capture));
        if (rows.empty()) {
            QSqlDatabase db = opened(ini, name);
            ArchiveSchema::attachArchive(db);
            rows = readRows(db);
        }
        const QString bare = name + QStringLiteral("bare");
        describeSqliteFile(folder.filePath(bare + QStringLiteral(".db")), ini, bare);
        QSqlDatabase db = opened(ini, bare);
        if (!ArchiveSchema::attachArchive(db).isEmpty() || !ArchiveSchema::create(db).isEmpty())
            qFatal("cannot make the tables");
        QSqlQuery(db).exec(QStringLiteral("PRAGMA archive.cache_size = -65536"));
        times.bare.push_back(secondsOfInserts(db, rows));
    }
    times.rows = static_cast<qint64>(rows.size());
}

void print(const char* database, const char* bare, const Times& times)
{
    const double imported = fastest(times.imported);
    std::printf("%s: %lld reports imported in %.2f s (%.0f a second), once more in %.2f s, %s %.2f s\n", database,
                times.rows, imported, static_cast<double>(times.rows) / imported, fastest(times.importedAgain), bare,
                fastest(times.bare));
    std::printf("ratio %s %s / import: %.2f (target: at least 0.90)\n", database, bare, fastest(times.bare) / imported);
    std::printf("ratio %s second import / first: %.2f (target: at most 1.20)\n", database,
                fastest(times.importedAgain) / imported);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString capture = folder.filePath(QStringLiteral("capture.bin"));
    const QString ini = folder.filePath(QStringLiteral("benchmark.ini"));
    if (!simulateTo(capture, 400)) {
        std::fprintf(stderr, "cannot write the capture under %s\n", qPrintable(folder.path()));
        return 1;
    }
    Times sqlite;
    measureSqlite(folder, ini, capture, sqlite);
    print("SQLite", "prepared inserts", sqlite);
    if (!hasPostgres())
        return 0;
    Times postgres;
    measurePostgres(folder, ini, capture, postgres);
    print("PostgreSQL", "COPY", postgres);
    return 0;
}
