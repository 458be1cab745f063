#include "login.h"

#include <Pardel/commonclass.h>
#include <Pardel/fdpassword.h>
#include <Pardel/interfaces.h>
#include <Pardel/lookups.h>

#include <QCryptographicHash>
#include <QLabel>
#include <QLineEdit>
#include <QPasswordDigestor>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <optional>

namespace {

constexpr int saltWords = 4;
constexpr int digestRounds = 20'000;
constexpr quint64 digestSize = 32; // bytes
constexpr int dispatcherKind = 1;
constexpr int messagePoints = 8;

enum NamePart
{
    Surname = 1,
    GivenName,
    Patronymic
};

QByteArray digestOf(const QString& password, const QByteArray& salt)
{
    return QPasswordDigestor::deriveKeyPbkdf2(QCryptographicHash::Sha256, password.toUtf8(), salt, digestRounds,
                                              digestSize)
        .toHex();
}

/// The first column of the first row; nothing without one, then with @p error if that was the reason.
std::optional<QVariant> firstValue(QSqlQuery& query, const QVariant& key, QString* error)
{
    query.addBindValue(key);
    if (!query.exec())
        *error = query.lastError().text();
    else if (query.next())
        return query.value(0);
    return {};
}

std::optional<uint> userIdByName(const QSqlDatabase& db, const QString& name, QString* error)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT \"Id\" FROM \"Connections\" WHERE \"Login\" = ?"));
    const auto id = firstValue(query, name, error);
    return id ? std::optional<uint>(id->toUInt()) : std::nullopt;
}

CurrentUser readUser(const QSqlDatabase& db, uint id)
{
    CurrentUser user;
    user.identifiers[dispatcherKind] = id;
    QString name = userDescByID(id, db, nullptr).simplified();
    if (name.isEmpty())
        name = userNameByID(id, db, nullptr);
    const QLatin1Char space(' ');
    user.nameParts[Surname] = name.section(space, 0, 0);
    user.nameParts[GivenName] = name.section(space, 1, 1);
    user.nameParts[Patronymic] = name.section(space, 2);
    if (userIsAdminByID(id, db, nullptr)) {
        AccessRightsStructure administration;
        administration.name = QStringLiteral("Administration");
        administration.flags = 1;
        user.accessRights.append(administration);
    }
    return user;
}

} // namespace

LoginResult checkLogin(const QSqlDatabase& db, const QString& name, const QString& password)
{
    LoginResult result;
    const auto id = userIdByName(db, name, &result.error);
    if (!id) {
        if (result.error.isEmpty())
            result.outcome = LoginResult::UnknownName;
        return result;
    }
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT \"Salt\" || ' ' || \"Digest\" FROM \"DeskPasswords\" WHERE \"Id\" = ?"));
    const auto stored = firstValue(query, *id, &result.error);
    if (!result.error.isEmpty())
        return result;
    const QList<QByteArray> parts = stored ? stored->toByteArray().split(' ') : QList<QByteArray>();
    if (parts.size() != 2 || parts.at(1) != digestOf(password, QByteArray::fromHex(parts.at(0)))) {
        result.outcome = LoginResult::WrongPassword;
        return result;
    }
    result.outcome = LoginResult::Accepted;
    result.user = readUser(db, *id);
    return result;
}

QString setPassword(const QSqlDatabase& db, const QString& name, const QString& password)
{
    QString error;
    const auto id = userIdByName(db, name, &error);
    if (!id)
        return error.isEmpty() ? LoginFlow::tr("There is no user %1.").arg(name) : error;
    quint32 words[saltWords];
    QRandomGenerator::system()->fillRange(words);
    const QByteArray salt(reinterpret_cast<const char*>(words), sizeof words);

    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS \"DeskPasswords\" (\"Id\" bigint PRIMARY KEY, "
                                   "\"Salt\" text NOT NULL, \"Digest\" text NOT NULL)")))
        return query.lastError().text();
    for (const QString& statement :
         {QStringLiteral("DELETE FROM \"DeskPasswords\" WHERE \"Id\" = ?"),
          QStringLiteral("INSERT INTO \"DeskPasswords\" (\"Id\", \"Salt\", \"Digest\") VALUES (?, ?, ?)")}) {
        query.prepare(statement);
        query.addBindValue(*id);
        if (statement.startsWith(QLatin1String("INSERT"))) {
            query.addBindValue(QString::fromLatin1(salt.toHex()));
            query.addBindValue(QString::fromLatin1(digestOf(password, salt)));
        }
        if (!query.exec())
            return query.lastError().text();
    }
    return {};
}

LoginFlow::LoginFlow(KernelNotifyer& hub, const QSqlDatabase& db, QObject* parent)
    : QObject(parent), m_hub(hub), m_db(db), m_dialog(std::make_unique<fdPassword>())
{
    connect(m_dialog.get(), &QDialog::accepted, this, &LoginFlow::check);
    connect(m_dialog.get(), &QDialog::rejected, this, &LoginFlow::cancelled);
}

LoginFlow::~LoginFlow() = default;

void LoginFlow::start()
{
    m_dialog->show();
    m_dialog->activateWindow();
}

void LoginFlow::check()
{
    const QString name = m_dialog->loginEdit->text();
    LoginResult result = checkLogin(m_db, name, m_dialog->passwordEdit->text());
    m_dialog->passwordEdit->clear();
    if (result.outcome == LoginResult::Accepted) {
        m_hub.OnSetInformationAboutCurrentUser(result.user);
        return;
    }
    const bool nameIsWrong = result.outcome == LoginResult::UnknownName;
    const QString message = nameIsWrong                                    ? tr("Unknown name")
                            : result.outcome == LoginResult::WrongPassword ? tr("Wrong password")
                                                                           : tr("No answer");
    // Small: the line is as wide as the fields, and cuts off what is longer.
    m_dialog->messageLabel->setText(Commonclass().GetRedText(message, messagePoints));
    m_dialog->messageLabel->show();
    m_dialog->show(); // accepting has hidden it
    QLineEdit* mistake = nameIsWrong ? m_dialog->loginEdit : m_dialog->passwordEdit;
    mistake->selectAll();
    mistake->setFocus();
    Q_EMIT refused(name, result.error.isEmpty() ? message : result.error);
}
