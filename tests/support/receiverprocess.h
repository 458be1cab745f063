#pragma once

#include "shell.h"

#include <QProcess>
#include <QTest>

/** A pardel-receive that can be ended or killed, and started again. */
class ReceiverProcess
{
public:
    /** @p options of its command line beside --listen; $db among them are those of @p iniFile. */
    ReceiverProcess(const QString& iniFile, const QString& options) : m_iniFile(iniFile), m_options(options) {}
    ~ReceiverProcess() { kill(); }

    /** Starts it on this machine, each time at the same port, and returns when it listens or the test has failed. */
    void start()
    {
        static const QByteArray mark("listening on 127.0.0.1 port ");
        const QString command = QStringLiteral("exec \"$receive\" %1 --listen 127.0.0.1:%2 2>&1");
        startShell(m_process, command.arg(m_options).arg(m_port), m_iniFile);
        QByteArray now;
        while (!now.contains(mark) && m_process.waitForReadyRead(20'000))
            now += m_process.readAll();
        m_told += now;
        m_port = now.mid(now.indexOf(mark) + mark.size()).split('\n').first().toUShort();
        QVERIFY2(m_port > 0, m_told);
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /** @return all that it has ever written; nothing if it does not end well within 10 s */
    QByteArray end()
    {
        m_process.terminate();
        const bool ended = m_process.waitForFinished(10'000) && m_process.exitStatus() == QProcess::NormalExit;
        return ended && m_process.exitCode() == 0 ? told() : QByteArray();
    }

    /** What it has written so far. */
    QByteArray told() { return m_told += m_process.readAll(); }
    qint64 processId() const { return m_process.processId(); }
    quint16 port() const { return m_port; }

private:
    const QString m_iniFile;
    const QString m_options;
    QProcess m_process;
    QByteArray m_told;
    quint16 m_port = 0;
};
