#include "databasetest.h"

#include <Pardel/lookups.h>

#include <QRegularExpression>
#include <QSqlError>

namespace {

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
    return (value.toString().isNull() ? QStringLiteral("null") : value.toString()) + QLatin1String(" (") +
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
    TestLookups() : DatabaseTest("lookups.sql") {}

private Q_SLOTS:
    void finds_data() { addTableRows("lookups.txt"); }

    void finds()
    {
        const uint id = cell("id").toUInt();
        const QByteArray command = cell("command");
        const QString found =
            command.isEmpty() ? userAnswers(id, db).join(QLatin1String(", ")) : commandAnswer(id, command, db);
        QCOMPARE(found, QString::fromUtf8(cell("answer")));
    }

    void tellsTheCause()
    {
        const auto check = [](const QSqlDatabase& asked, const char* cause) {
            const QStringList answers = userAnswers(1, asked) << commandAnswer(1, "start", asked);
            const QRegularExpression told(QStringLiteral("^(null|false) \\(.*(%1)").arg(QLatin1String(cause)));
            QCOMPARE(answers.filter(told), answers);
        };
        check(QSqlDatabase(), "Driver not loaded");
        check(QSqlDatabase::cloneDatabase(db, QStringLiteral("closed")), "not open");
        QSqlDatabase::removeDatabase(QStringLiteral("closed"));
        QSqlDatabase stale = QSqlDatabase::cloneDatabase(db, QStringLiteral("stale"));
        QVERIFY(stale.open());
        stale.transaction();
        stale.transaction(); // an error with SQLite, which says nothing of the closing
        stale.close();
        check(stale, "not open");
        stale = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("stale"));
        execute(QStringLiteral("DROP TABLE \"Connections\""));
        execute(QStringLiteral("DROP TABLE \"Commands\""));
        check(db, "relation \"(Connections|Commands)\" does not exist|no such table: (Connections|Commands)");
        loseDatabase();
        check(db, "server closed the connection|not open");
    }
};

QTEST_GUILESS_MAIN(TestLookups)
#include "tst_lookups.moc"
