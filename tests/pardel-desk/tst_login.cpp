// Who may log in, and what the dialog says to the others.

#include "login.h"

#include "testfiles.h"

#include <Pardel/fdpassword.h>
#include <Pardel/interfaces.h>

#include <QLabel>
#include <QLineEdit>
#include <QSqlQuery>
#include <QtTest>

class TestLogin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("login"));
        m_db.setDatabaseName(QStringLiteral(":memory:"));
        QVERIFY(m_db.open());
        QSqlQuery query(m_db);
        QVERIFY(
            query.exec(QStringLiteral("CREATE TABLE \"Connections\" AS SELECT 11 AS \"Id\", 'berg' AS \"Login\", "
                                      "' Berg  Hanna Maria Luise' AS \"Description\", 0 AS \"Admin\" "
                                      "UNION SELECT 12, 'root', NULL, 1 UNION SELECT 13, 'none', 'No Password', 0")));
        for (const auto& [login, password] : {std::pair("berg", "first"), {"berg", "geheim ü"}, {"root", ""}})
            QCOMPARE(setPassword(m_db, QLatin1String(login), QString::fromUtf8(password)), QString());
    }

    void outcomes_data() { addTableRows("logins.txt"); }
    void outcomes()
    {
        const LoginResult result =
            checkLogin(m_db, QString::fromUtf8(cell("login")), QString::fromUtf8(cell("password")));
        QCOMPARE(result.error, QString());
        const QByteArrayList outcomes = {"Accepted", "UnknownName", "WrongPassword"};
        QCOMPARE(outcomes.value(result.outcome), cell("outcome"));
        const auto& parts = result.user.nameParts;
        QString user = QString::number(result.user.identifiers.value(1));
        user += QStringLiteral(" %1/%2/%3").arg(parts.value(1), parts.value(2), parts.value(3));
        for (const AccessRightsStructure& right : result.user.accessRights)
            user += QLatin1Char(' ') + right.name;
        QCOMPARE(user.toUtf8(), cell("user"));
    }

    void passwords()
    {
        QSqlQuery query(QStringLiteral("SELECT group_concat(length(\"Salt\") || ' ' || length(\"Digest\")), "
                                       "count(DISTINCT \"Salt\") FROM \"DeskPasswords\""),
                        m_db);
        QVERIFY(query.next());
        QCOMPARE(query.value(0).toString(), QStringLiteral("32 64,32 64"));
        QCOMPARE(query.value(1).toInt(), 2);
        QVERIFY(!setPassword(m_db, QStringLiteral("nobody"), QStringLiteral("x")).isEmpty());
        const LoginResult failed = checkLogin(QSqlDatabase(), QStringLiteral("berg"), QStringLiteral("x"));
        QVERIFY(failed.outcome == LoginResult::NoAnswer && !failed.error.isEmpty());
    }

    void capsLock_data() { addTableRows("capslock.txt"); }
    void capsLock()
    {
        const QMap<QByteArray, int> keys = {{"letter", Qt::Key_A}, {"digit", Qt::Key_1}, {"lock", Qt::Key_CapsLock}};
        const QKeyEvent key(QEvent::KeyPress, keys.value(cell("key")),
                            cell("shift") == "shift" ? Qt::ShiftModifier : Qt::NoModifier,
                            QString::fromUtf8(cell("text")));
        const auto told = capsLockToldBy(key);
        QCOMPARE(QByteArray(!told ? "?" : *told ? "on" : "off"), cell("told"));
    }

    void pauses()
    {
        QByteArray pauses;
        for (const int failures : {0, 2, 3, 4, 5, 6, 7, 99, 1'000'000})
            pauses += QByteArray::number(pauseAfter(failures)) + ' ';
        QCOMPARE(pauses, QByteArray("0 0 5 10 20 40 60 60 60 "));
    }

    void dialog()
    {
        KernelNotifyer kernel;
        LoginFlow login(kernel, m_db);
        QSignalSpy refused(&login, &LoginFlow::refused);
        QSignalSpy cancelled(&login, &LoginFlow::cancelled);
        unsigned int user = 0;
        connect(&kernel, &KernelNotifyer::OnSetInformationAboutCurrentUserSignal, this,
                [&](CurrentUser& current) { user = current.identifiers.value(1); });
        login.start();
        fdPassword& dialog = login.dialog();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(dialog.messageLabel->text(), QStringLiteral("Enter your name"));
        const auto enter = [&](const char* password) {
            QTest::keyClicks(dialog.passwordEdit, QLatin1String(password));
            QTest::keyClick(dialog.passwordEdit, Qt::Key_Return);
        };

        enter("x"); // without a name
        QVERIFY(dialog.isVisible() && refused.isEmpty());
        dialog.passwordEdit->clear();
        QTest::keyClicks(dialog.loginEdit, QStringLiteral("beg"));
        enter("x");
        const QString refusal = QStringLiteral("Unknown name or wrong password");
        QVERIFY(dialog.isVisible() && dialog.messageLabel->isVisible());
        QCOMPARE(dialog.messageLabel->text(), refusal);
        QTest::keyClicks(dialog.focusWidget(), QStringLiteral("root")); // over what was wrong
        enter("X");                                                     // capital without Shift
        QCOMPARE(dialog.messageLabel->text(), refusal + QStringLiteral("\nCaps lock is on"));
        enter("x");
        QCOMPARE(refused.size(), 3);
        QCOMPARE(dialog.messageLabel->text(), QStringLiteral("Too many failures: wait 5 s"));
        enter("");
        login.endPause();
        QCOMPARE(dialog.messageLabel->text(), refusal);
        QVERIFY(dialog.isVisible() && user == 0);
        enter("");
        QCOMPARE(user, 12U);
        QVERIFY(dialog.isHidden());
        QCOMPARE(cancelled.size(), 0);
        login.start();
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(cancelled.size(), 1);
    }

private:
    QSqlDatabase m_db;
};

QTEST_MAIN(TestLogin)
#include "tst_login.moc"
