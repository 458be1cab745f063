#pragma once

#include <QObject>
#include <QSqlDatabase>
#include <QTimer>

#include <memory>

QT_BEGIN_NAMESPACE
class QSocketNotifier;
QT_END_NAMESPACE

/**
 * Tells when others have committed changes of last states: on PostgreSQL by listening to what writers notify, on SQLite
 * by asking four times a second whether the file has changed. A PostgreSQL server that is a copy of another cannot be
 * listened to; there it says every second that something may have changed.
 *
 * Qt's driver could listen too, but does not tell when the connection is lost, and goes on watching its socket.
 */
class ChangeWatch : public QObject
{
    Q_OBJECT

public:
    explicit ChangeWatch(QObject* parent = nullptr);
    ~ChangeWatch() override;

    /** Begins; what is committed from now on is told. @p db is open. @return what went wrong, or nothing */
    QString start(const QSqlDatabase& db);
    void stop();

    /** To be called after statements of one's own on the connection, which take in what was on its way to the watch. */
    void check();

Q_SIGNALS:
    void changed();
    /** It has stopped. */
    void lost(const QString& error);

private:
    void askFile();
    void readSocket();

    QSqlDatabase m_db;
    QTimer m_timer;
    qint64 m_fileVersion = 0;
    std::unique_ptr<QSocketNotifier> m_socket;
};
