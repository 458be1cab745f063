// How many reports a second pardel-import stores in an SQLite file and, run through scripts/with-postgres, in
// PostgreSQL beside a COPY of the same rows in one piece.

#include "copyrows.h"
#include "postgres.h"
#include "toolruns.h"

#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <cstdio>
#include <vector>

namespace {

constexpr int rounds = 3;

double secondsOfImport(const QString& ini, const QString& group, const QString& capture)
{
    QElapsedTimer timer;
    timer.start();
    const int status =
        QProcess::execute(QStringLiteral(PARDEL_IMPORT), {QStringLiteral("--ini"), ini, QStringLiteral("--group"),
                                                          group, QStringLiteral("--create"), capture});
    return status == 0 ? static_cast<double>(timer.nsecsElapsed()) / 1e9 : 0;
}

/// Columns that hold something, as COPY takes them.
const char copiedColumns[] =
    "id_object, time_unix, fingerprint, sens_1, sens_2, sens_3, sens_4, sens_13, status_13, sens_14, "
    "status_14, sens_15, status_15, sens_20, status_20, sens_49, status_49, sens_50, status_50, "
    "sens_54, status_54, sens_56, status_56, sens_65, status_65, sens_66, status_66, sens_72, "
    "status_72, sens_76, status_76, sens_97, status_97, sens_106, status_106, sens_112, status_112, "
    "sens_113, status_113, sens_114, status_114, sens_115, status_115, sens_150, status_150";

/// The rows of master_table in COPY's text format, in the order of time.
QByteArray rowsOf(const QSqlDatabase& db, qint64* count)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.exec(
        QStringLiteral("SELECT concat_ws(E'\\t', id_object, time_unix, E'\\\\\\\\x' || encode(fingerprint, 'hex'), %1) "
                       "FROM archive.master_table ORDER BY time_unix")
            .arg([] {
                QStringList texts;
                for (const QString& column : QString::fromLatin1(copiedColumns).split(QStringLiteral(", ")).mid(3))
                    texts += QStringLiteral("coalesce(%1::text, E'\\\\N')").arg(column);
                return texts.join(QStringLiteral(", "));
            }()));
    QByteArray rows;
    for (*count = 0; query.next(); ++*count)
        rows += query.value(0).toByteArray() + '\n';
    return rows;
}

int measurePostgres(const QString& ini, const QString& capture)
{
    std::vector<double> imported;
    std::vector<double> copied;
    qint64 count = 0;
    for (int round = 0; round < rounds; ++round) {
        QString name = QStringLiteral("import%1").arg(round);
        if (!makePostgresDatabase(name, ini, name))
            return 1;
        imported.push_back(secondsOfImport(ini, name, capture));
        QSettings settings(ini, QSettings::IniFormat);
        if (imported.back() <= 0 ||
            openDataBaseBySettings(name, settings, name, QString()).type() != QSqlError::NoError)
            return 1;
        const QSqlDatabase db = QSqlDatabase::database(name);
        const QByteArray rows = rowsOf(db, &count);
        QSqlQuery(db).exec(QStringLiteral("TRUNCATE archive.master_table"));
        QElapsedTimer timer;
        timer.start();
        const CopyResult result = copyRows(db, "archive.master_table", copiedColumns, rows);
        copied.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e9);
        if (result.outcome != CopyResult::Copied) {
            std::fprintf(stderr, "%s\n", qPrintable(result.error));
            return 1;
        }
    }
    std::printf("PostgreSQL: %lld reports imported in %.2f s (%.0f a second), COPY of the same rows %.2f s\n", count,
                fastest(imported), static_cast<double>(count) / fastest(imported), fastest(copied));
    std::printf("ratio COPY / pardel-import: %.2f (target: at least 0.50)\n", fastest(copied) / fastest(imported));
    return 0;
}

int measureSqlite(const QTemporaryDir& folder, const QString& ini, const QString& capture)
{
    std::vector<double> imported;
    qint64 count = 0;
    for (int round = 0; round < rounds; ++round) {
        const QString name = QStringLiteral("import%1").arg(round);
        describeSqliteFile(folder.filePath(name + QStringLiteral(".db")), ini, name);
        imported.push_back(secondsOfImport(ini, name, capture));
        if (imported.back() <= 0)
            return 1;
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("count ") + name);
        db.setDatabaseName(folder.filePath(name + QStringLiteral("-archive.db")));
        db.open();
        QSqlQuery query(QStringLiteral("SELECT count(*) FROM master_table"), db);
        query.next();
        count = query.value(0).toLongLong();
    }
    std::printf("SQLite: %lld reports imported in %.2f s: %.0f a second (target: at least 50000)\n", count,
                fastest(imported), static_cast<double>(count) / fastest(imported));
    return 0;
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
    const int status = measureSqlite(folder, ini, capture);
    return status != 0 || !hasPostgres() ? status : measurePostgres(ini, capture);
}
