#include "databasetest.h"

#include <Pardel/lookups.h>

#include <QRegularExpression>
#include <QSqlError>
#include <QTest>

namespace {

const QStringList tables = {
    QStringLiteral(R"(CREATE TABLE "Connections" ("Id" BIGINT, "Login" TEXT, "Description" TEXT, "Admin" BOOLEAN))"),
    QStringLiteral(R"(INSERT INTO "Connections" VALUES (1, 'root', 'Über alles', TRUE), (2, 'guest', '', FALSE), )"
                   "(3, NULL, NULL, NULL), (4294967295, 'last', 'x', TRUE)"),
    QStringLiteral(R"(CREATE TABLE "Commands" ("Id_object" BIGINT, "Name" TEXT, "Description" TEXT))"),
    QStringLiteral(
        R"(INSERT INTO "Commands" VALUES (1, 'start', 'Starts'), (1, 'стоп', 'Stops'), (2, 'stop', 'Brakes'), )"
        "(3, 'stop', NULL), (4294967295, 'stop', 'Far')"),
};

/// What a look-up answers, and in brackets the error if it touches that. Whoever wants no error is to get the same.
template <typename Ask>
QString answer(Ask ask)
{
    const QSqlError untouched(QStringLiteral("untouched"), QString(), QSqlError::TransactionError);
    QSqlError error = untouched;
    const QVariant value = ask(&error);
    if (QVariant(ask(nullptr)) != value)
        return QStringLiteral("another one without an error");
    if (error == untouched)
        return value.toString();
    return (value.isNull() ? QStringLiteral("null") : value.toString()) + QLatin1String(" (") +
           (error.type() == QSqlError::NoError ? QStringLiteral("not found") : error.text()) + QLatin1Char(')');
}

QString commandAnswer(uint object, const QByteArray& name, const QSqlDatabase& db)
{
    return answer([&](QSqlError* error) { return descCommandByName(object, name, db, error); });
}

/// The answers of all three about a user.
QStringList userAnswers(uint id, const QSqlDatabase& db)
{
    return {answer([&](QSqlError* error) { return userNameByID(id, db, error); }),
            answer([&](QSqlError* error) { return userDescByID(id, db, error); }),
            answer([&](QSqlError* error) { return userIsAdminByID(id, db, error); })};
}

} // namespace

class TestLookups : public DatabaseTest
{
    Q_OBJECT

public:
    TestLookups() : DatabaseTest(tables) {}

private Q_SLOTS:
    void findsUsers_data();
    void findsUsers();
    void findsCommands_data();
    void findsCommands();
    void tellsTheCause();
};

void TestLookups::findsUsers_data()
{
    QTest::addColumn<uint>("id");
    QTest::addColumn<QString>("expected");
    QTest::newRow("administrator") << 1U << "root, Über alles, true";
    QTest::newRow("guest") << 2U << "guest, , false";
    QTest::newRow("NULL") << 3U << ", , false";
    QTest::newRow("above 2^31") << 4294967295U << "last, x, true";
    QTest::newRow("unknown") << 4U << "null (not found), null (not found), false (not found)";
}

void TestLookups::findsUsers()
{
    QFETCH(uint, id);
    QTEST(userAnswers(id, db).join(QLatin1String(", ")), "expected");
}

void TestLookups::findsCommands_data()
{
    QTest::addColumn<uint>("object");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("exact") << 1U << QByteArray("start") << "Starts";
    QTest::newRow("UTF-8") << 1U << QByteArray("стоп") << "Stops";
    QTest::newRow("wildcard %") << 1U << QByteArray("%rt") << "Starts";
    QTest::newRow("wildcard _") << 2U << QByteArray("st_p") << "Brakes";
    QTest::newRow("wildcard _ is one character") << 2U << QByteArray("st_") << "null (not found)";
    QTest::newRow("quotes") << 1U << QByteArray("' or 'a' = 'a") << "null (not found)";
    QTest::newRow("up to a zero byte") << 1U << QByteArray("start\0x", 7) << "Starts";
    QTest::newRow("zero byte first") << 1U << QByteArray("\0start", 6) << "null (not found)";
    QTest::newRow("object above 2^31") << 4294967295U << QByteArray("stop") << "Far";
    QTest::newRow("another object's") << 2U << QByteArray("start") << "null (not found)";
    QTest::newRow("NULL") << 3U << QByteArray("stop") << "";
}

void TestLookups::findsCommands()
{
    QFETCH(uint, object);
    QFETCH(QByteArray, name);
    QTEST(commandAnswer(object, name, db), "expected");
}

void TestLookups::tellsTheCause()
{
    const auto check = [](const QSqlDatabase& asked, const char* cause) {
        const QStringList answers = userAnswers(1, asked) << commandAnswer(1, "start", asked);
        const QRegularExpression told(QStringLiteral("^(null|false) \\(.*(%1)").arg(QLatin1String(cause)));
        QCOMPARE(answers.filter(told), answers);
    };
    check(QSqlDatabase(), "Driver not loaded");
    check(QSqlDatabase::cloneDatabase(db, QStringLiteral("closed")), "not open");
    QSqlDatabase::removeDatabase(QStringLiteral("closed"));
    execute(QStringLiteral("DROP TABLE \"Connections\""));
    execute(QStringLiteral("DROP TABLE \"Commands\""));
    check(db, "relation \"(Connections|Commands)\" does not exist|no such table: (Connections|Commands)");
    loseDatabase();
    check(db, "server closed the connection|not open");
}

QTEST_GUILESS_MAIN(TestLookups)
#include "tst_lookups.moc"
