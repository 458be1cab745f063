#pragma once

#include <Pardel/currentuser.h>

#include <QObject>
#include <QSqlDatabase>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>

class fdPassword;
class KernelNotifyer;

QT_BEGIN_NAMESPACE
class QKeyEvent;
class QPushButton;
QT_END_NAMESPACE

/** What became of an attempt to log in. */
struct LoginResult
{
    enum Outcome
    {
        Accepted,
        UnknownName,
        WrongPassword,
        NoAnswer, ///< The database could not be asked; error says why.
    };

    Outcome outcome = NoAnswer;
    CurrentUser user;
    QString error;
};

/**
 * Looks a user of "Connections" up and checks the password against "DeskPasswords", which holds a salt and a digest
 * (PBKDF2 with SHA-256) for each "Id". A user without a row there has no password that fits.
 *
 * The words of the user's "Description" become the parts of the name: surname, given name, all the rest.
 */
LoginResult checkLogin(const QSqlDatabase& db, const QString& name, const QString& password);

/** Gives a user of "Connections" a password, and makes the table if needed. @return what went wrong, or nothing */
QString setPassword(const QSqlDatabase& db, const QString& name, const QString& password);

/** For how many seconds nobody may try again after so many failures in a row: from the third on, and longer each time. */
int pauseAfter(int failures);

/** Whether a key tells that caps lock is on or off: a letter does, on X11 every key but caps lock itself. */
std::optional<bool> capsLockToldBy(const QKeyEvent& key);

/**
 * Asks for name and password until they fit, then announces the user through the hub. A name that is unknown and a
 * password that is wrong get the same answer, so that the dialog tells nobody who the users are.
 *
 * Ok is there while there is a name; the dialog says why it is not, and when caps lock is on.
 */
class LoginFlow : public QObject
{
    Q_OBJECT

public:
    LoginFlow(KernelNotifyer& hub, const QSqlDatabase& db, QObject* parent = nullptr);
    ~LoginFlow() override;

    void start();
    fdPassword& dialog() const { return *m_dialog; }
    /** Lets a user try again at once. */
    void endPause();

Q_SIGNALS:
    /** @param reason says more than the dialog does */
    void refused(const QString& name, const QString& reason);
    void cancelled();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void layOutDialog();
    void check();
    void refuse(const QString& name, const LoginResult& result);
    void countDown();
    void showState();

    KernelNotifyer& m_hub;
    QSqlDatabase m_db;
    std::unique_ptr<fdPassword> m_dialog;
    QPushButton* m_ok;
    QString m_complaint;
    QTimer m_second;
    int m_failures = 0;
    int m_pause = 0; // seconds that are left of it
    bool m_capsLock = false;
};
