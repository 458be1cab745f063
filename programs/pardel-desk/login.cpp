#include "login.h"

#include "deskcolors.h"

#include <Pardel/fdpassword.h>
#include <Pardel/interfaces.h>
#include <Pardel/lookups.h>

#include <QCryptographicHash>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPasswordDigestor>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <optional>

namespace {

constexpr int saltWords = 4;
constexpr int digestRounds = 20'000;
constexpr quint64 digestSize = 32; // bytes
constexpr int dispatcherKind = 1;
constexpr int harmlessFailures = 2;
constexpr int firstPause = 5;     // seconds
constexpr int longestPause = 60;  // seconds
constexpr int dialogLetters = 50; // in width: the longest complaint of any language in one line
constexpr int dialogLines = 9;
constexpr quint32 x11LockMask = 2;

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
        digestOf(password, name.toUtf8()); // for the time that it takes, which else would tell the names
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

int pauseAfter(int failures)
{
    if (failures <= harmlessFailures)
        return 0;
    return std::min(longestPause, firstPause << std::min(failures - harmlessFailures - 1, 8));
}

std::optional<bool> capsLockToldBy(const QKeyEvent& key)
{
    if (key.key() == Qt::Key_CapsLock)
        return {}; // it tells what was
    if (QGuiApplication::platformName() == QLatin1String("xcb") && key.nativeScanCode() != 0)
        return (key.nativeModifiers() & x11LockMask) != 0;
    const QString text = key.text();
    if (text.size() != 1 || text.toUpper() == text.toLower())
        return {};
    const bool shift = key.modifiers().testFlag(Qt::ShiftModifier);
    return (text == text.toUpper()) != shift;
}

LoginFlow::LoginFlow(KernelNotifyer& hub, const QSqlDatabase& db, QObject* parent)
    : QObject(parent),
      m_hub(hub),
      m_db(db),
      m_dialog(std::make_unique<fdPassword>()),
      m_ok(m_dialog->findChild<QPushButton*>())
{
    layOutDialog();
    connect(m_dialog.get(), &QDialog::accepted, this, &LoginFlow::check);
    connect(m_dialog.get(), &QDialog::rejected, this, &LoginFlow::cancelled);
    connect(m_dialog->loginEdit, &QLineEdit::textChanged, this, &LoginFlow::showState);
    m_dialog->passwordEdit->installEventFilter(this);
    m_second.setInterval(1000);
    connect(&m_second, &QTimer::timeout, this, &LoginFlow::countDown);
    showState();
}

LoginFlow::~LoginFlow() = default;

/// The message gets a line over both columns, with room for two sentences.
void LoginFlow::layOutDialog()
{
    if (auto* grid = qobject_cast<QGridLayout*>(m_dialog->layout())) {
        grid->removeWidget(m_dialog->messageLabel);
        grid->addWidget(m_dialog->messageLabel, 0, 0, 1, 2);
        grid->setRowStretch(0, 1);
    }
    m_dialog->messageLabel->setWordWrap(true);
    const QFontMetrics letters = m_dialog->fontMetrics();
    m_dialog->setFixedSize(letters.averageCharWidth() * dialogLetters, letters.lineSpacing() * dialogLines);
}

void LoginFlow::start()
{
    m_dialog->show();
    m_dialog->activateWindow();
}

bool LoginFlow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (key.key() == Qt::Key_CapsLock)
            m_capsLock = !m_capsLock && QGuiApplication::platformName() == QLatin1String("xcb");
        m_capsLock = capsLockToldBy(key).value_or(m_capsLock);
        showState();
    }
    return QObject::eventFilter(watched, event);
}

/// One line for what is to be done, and one for caps lock.
void LoginFlow::showState()
{
    QStringList lines;
    if (m_pause > 0)
        lines += tr("Too many failures: wait %1 s").arg(m_pause);
    else if (!m_complaint.isEmpty())
        lines += m_complaint;
    else if (m_dialog->loginEdit->text().isEmpty())
        lines += tr("Enter your name");
    if (m_capsLock)
        lines += tr("Caps lock is on");
    const bool isError = m_pause > 0 || !m_complaint.isEmpty() || m_capsLock;
    QLabel& label = *m_dialog->messageLabel;
    label.setPalette(isError ? DeskColors::withErrorText(m_dialog->palette()) : m_dialog->palette());
    label.setText(lines.join(QLatin1Char('\n')));
    label.setVisible(!lines.isEmpty());
    m_ok->setEnabled(m_pause == 0 && !m_dialog->loginEdit->text().isEmpty());
}

void LoginFlow::check()
{
    if (!m_ok->isEnabled()) // accepted by something else than the button
        return m_dialog->show();
    const QString name = m_dialog->loginEdit->text();
    const LoginResult result = checkLogin(m_db, name, m_dialog->passwordEdit->text());
    m_dialog->passwordEdit->clear();
    if (result.outcome != LoginResult::Accepted)
        return refuse(name, result);
    m_failures = 0;
    m_complaint.clear();
    CurrentUser user = result.user;
    m_hub.OnSetInformationAboutCurrentUser(user);
}

void LoginFlow::refuse(const QString& name, const LoginResult& result)
{
    const bool answered = result.outcome != LoginResult::NoAnswer;
    m_complaint = answered ? tr("Unknown name or wrong password") : tr("The database does not answer");
    m_failures += answered ? 1 : 0;
    m_pause = answered ? pauseAfter(m_failures) : 0;
    if (m_pause > 0)
        m_second.start();
    showState();
    m_dialog->show(); // accepting has hidden it
    m_dialog->loginEdit->selectAll();
    QLineEdit& next = answered ? *m_dialog->loginEdit : *m_dialog->passwordEdit;
    next.setFocus();
    const QString reason = result.outcome == LoginResult::UnknownName ? tr("Unknown name") : tr("Wrong password");
    Q_EMIT refused(name, answered ? reason : result.error);
}

void LoginFlow::countDown()
{
    --m_pause;
    if (m_pause <= 0)
        return endPause();
    showState();
}

void LoginFlow::endPause()
{
    m_pause = 0;
    m_second.stop();
    showState();
}
