#pragma once

#include <Pardel/currentuser.h>

#include <QObject>
#include <QSqlDatabase>
#include <QString>

#include <memory>

class fdPassword;
class KernelNotifyer;

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

/** Asks for name and password until they fit, then announces the user through the hub. */
class LoginFlow : public QObject
{
    Q_OBJECT

public:
    LoginFlow(KernelNotifyer& hub, const QSqlDatabase& db, QObject* parent = nullptr);
    ~LoginFlow() override;

    void start();
    fdPassword& dialog() const { return *m_dialog; }

Q_SIGNALS:
    void refused(const QString& name, const QString& reason);
    void cancelled();

private:
    void check();

    KernelNotifyer& m_hub;
    QSqlDatabase m_db;
    std::unique_ptr<fdPassword> m_dialog;
};
