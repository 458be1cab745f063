// pardel-import as its users run it, on both databases.

#include "archiveschema.h"
#include "reporttext.h"

#include <Pardel/archive.h>
#include <Pardel/connection.h>

#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

class TestImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void storesOnceAndReadsBack();
    void leavesWhatIsThere();
    void saysWhatFails();
    void goesOnAfterAFailure();

private:
    struct Outcome
    {
        int status;
        QByteArray errors;
    };

    /// Runs @p program, in which $0 is the importer with its settings.
    Outcome run(const QString& program, const QByteArray& input = QByteArray()) const;
    /// Makes an empty database of this name and the settings group Db that describes it.
    void makeDatabase(const QString& name);
    QSqlDatabase open();
    static int count(const QSqlDatabase& db, const QString& table);

    QTemporaryDir m_folder;
    QString m_ini = m_folder.filePath(QStringLiteral("import.ini"));
};

void TestImport::initTestCase_data()
{
    QVERIFY2(qEnvironmentVariableIsSet("PARDEL_POSTGRES_STOP"), "run this through scripts/with-postgres");
    QTest::addColumn<bool>("postgres");
    QTest::newRow("SQLite") << false;
    QTest::newRow("PostgreSQL") << true;
}

TestImport::Outcome TestImport::run(const QString& program, const QByteArray& input) const
{
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TEST_DATA));
    process.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), program, QStringLiteral(PARDEL_IMPORT), m_ini, QStringLiteral(PARDEL_SIMULATE),
                   qEnvironmentVariable("PARDEL_POSTGRES_STOP")});
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(120000);
    return {process.exitCode(), process.readAllStandardError()};
}

void TestImport::makeDatabase(const QString& name)
{
    QFETCH_GLOBAL(bool, postgres);
    QFile::remove(m_ini);
    QSettings settings(m_ini, QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("Db"));
    settings.setValue(QStringLiteral("BaseName"), postgres ? name : m_folder.filePath(name + QStringLiteral(".db")));
    settings.setValue(QStringLiteral("DBType"), postgres ? QStringLiteral("postgres") : QStringLiteral("sqlite3"));
    settings.setValue(QStringLiteral("SqlHostName"), qEnvironmentVariable("PGHOST"));
    settings.setValue(QStringLiteral("SqlPort"), qEnvironmentVariable("PGPORT"));
    settings.sync();
    QVERIFY(!postgres || QProcess::execute(QStringLiteral("createdb"), {name}) == 0);
}

QSqlDatabase TestImport::open()
{
    QFETCH_GLOBAL(bool, postgres);
    QString name;
    QSettings settings(m_ini, QSettings::IniFormat);
    openDataBaseBySettings(name, settings, QStringLiteral("Db"), QString());
    QSqlDatabase db = QSqlDatabase::database(name);
    if (!postgres)
        ArchiveSchema::attachArchive(db);
    return db;
}

int TestImport::count(const QSqlDatabase& db, const QString& table)
{
    QSqlQuery query(QStringLiteral("SELECT count(*) FROM %1").arg(table), db);
    return query.next() ? query.value(0).toInt() : -1;
}

void TestImport::storesOnceAndReadsBack()
{
    makeDatabase(QStringLiteral("once"));
    const QString import = QStringLiteral("\"$0\" --ini \"$1\" --group Db --create sample.bin");
    const Outcome first = run(import);
    QVERIFY2(first.errors.contains("reports 35, stored 35, there already 0, rejected 0, skipped bytes 0,"),
             first.errors);
    QCOMPARE(first.status, 0);
    const Outcome second = run(import);
    QVERIFY2(second.errors.contains("reports 35, stored 0, there already 35,"), second.errors);

    const QSqlDatabase db = open();
    QCOMPARE(count(db, QStringLiteral("archive.master_table")), 35);
    QCOMPARE(count(db, QStringLiteral("archive.lastdata")), 3);
    QCOMPARE(count(db, QStringLiteral("\"Connections\"")), 3);
    MobData state;
    state.idObject = 2;
    state.sensors = {makeSensor(15), makeSensor(0), makeSensor(56), makeSensor(0)}; // the first half is read
    readLastData(state, db);
    QCOMPARE(reportText(state), QByteArray("2 562396313,363842381 14/338 @1767226033 15=1:15 0=0 56=0 0=0"));
    state.sensors = {makeSensor(65)};
    QVERIFY(readPrevData(state, 1767226033, 3600, db)); // a block of a track
    QCOMPARE(reportText(state), QByteArray("2 562354526,363820823 61/30 @1767225973 65=24"));
}

void TestImport::leavesWhatIsThere()
{
    makeDatabase(QStringLiteral("there"));
    QSqlDatabase db = open();
    QSqlQuery(db).exec(QStringLiteral("CREATE TABLE \"Connections\" (\"Id\" integer)"));
    QCOMPARE(run(QStringLiteral("\"$0\" --ini \"$1\" --group Db --create sample.bin")).status, 0);
    QCOMPARE(count(db, QStringLiteral("\"Connections\"")), 0);
    // An older state than the last one, an object number above 2^15, types without columns and twice, no number.
    const QByteArray older = "a4d500fffe 2e00 0105 0164000000 0205 0301000000 0302000000 0402 0f01 4123 4139 0700 0106 "
                             "32007fc00000 cccc\n";
    const Outcome outcome = run(QStringLiteral("\"$0\" --ini \"$1\" --group Db --hex"), older + older);
    QVERIFY2(outcome.errors.contains("stored 1, there already 1,"), outcome.errors);
    MobData state;
    state.idObject = -2;
    state.sensors = {makeSensor(65), makeSensor(56)};
    readLastData(state, db);
    QCOMPARE(reportText(state), QByteArray("-2 0,3 0/0 @100 65=7 56=0"));
}

void TestImport::saysWhatFails()
{
    makeDatabase(QStringLiteral("fails"));
    const QList<QPair<QString, QByteArray>> failures = {
        {QStringLiteral("\"$0\" --ini /nowhere --group Db"), "pardel-import: cannot read the settings file /nowhere\n"},
        {QStringLiteral("\"$0\" --ini \"$1\" --group No"), "import.ini has no group No\n"},
        {QStringLiteral("\"$0\" --ini \"$1\""), "--ini and --group are needed. (see pardel-import --help)\n"},
        {QStringLiteral("\"$0\" --ini \"$1\" --group Db sample.bin"), "master_table"}, // no table and no --create
        {QStringLiteral("\"$0\" --ini \"$1\" --group Db --create no.bin"), "cannot read no.bin: No such file"},
    };
    for (const auto& [program, error] : failures) {
        const Outcome outcome = run(program);
        QVERIFY2(outcome.status == 2 && outcome.errors.contains(error), outcome.errors);
    }
}

void TestImport::goesOnAfterAFailure()
{
    QFETCH_GLOBAL(bool, postgres);
    makeDatabase(QStringLiteral("interrupted"));
    const QString all = QStringLiteral("\"$2\" --terminals 500 --minutes 60 | \"$0\" --ini \"$1\" --group Db --create");
    if (postgres) {
        // The server stops while packets still come.
        const Outcome lost =
            run(QStringLiteral("{ \"$2\" --terminals 500 --minutes 60; \"$3\"; \"$2\" --seed 2; } | \"$0\" "
                               "--ini \"$1\" --group Db --create"));
        QVERIFY2(lost.status == 2 && lost.errors.contains("cannot store reports: "), lost.errors);
        return;
    }
    // A file that may not grow any more, after the first of two transactions.
    const Outcome full = run(QStringLiteral("trap '' XFSZ; ulimit -f 32000; ") + all);
    QVERIFY2(full.status == 2 && full.errors.contains("cannot store reports: "), full.errors);
    QCOMPARE(count(open(), QStringLiteral("archive.master_table")), 20000);
    const Outcome again = run(all);
    QVERIFY2(again.status == 0 && again.errors.contains("there already 20000,"), again.errors);
}

QTEST_GUILESS_MAIN(TestImport)
#include "tst_import.moc"
