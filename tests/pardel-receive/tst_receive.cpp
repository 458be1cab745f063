// pardel-receive as its users run it, on both databases.

#include "databasetest.h"
#include "fleet.h"
#include "receiverprocess.h"
#include "shell.h"

#include <QDir>
#include <QFile>
#include <QTcpSocket>

#include <csignal>
#include <memory>

class TestReceive : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data() { addTableRows("receives.txt"); }
    void refuses()
    {
        writeKeys(cell("keys"));
        runRow("receive", iniFile);
        writeKeys({});
    }

    void storesAndTells()
    {
        start();
        Fleet fleet(m_receiver->port(), 1, 5, 500);
        fleet.start();
        QTRY_VERIFY_WITH_TIMEOUT(reports() > 100, 20'000);
        // A second receiver would take this one's packets for its own.
        tells("\"$receive\" $db --listen 127.0.0.1:0",
              "pardel-spool is in use by another process: each needs one of its own\nstatus 1");
        send("?" + QByteArray::fromHex("a4d5000015 0d00 01024123 3f3f")); // a byte of nothing, a damaged packet
        fleet.finish();
        const auto sent = static_cast<int>(fleet.reports().size());
        QTRY_COMPARE_WITH_TIMEOUT(reports(), sent, 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(measures("packets_total{kind=\"damaged\"} 1"), 20'000); // they are written every 5 s

        for (const char* line :
             {"packets_total{kind=\"good\"} ALL", "packets_kept_total ALL", "reports_stored_total ALL",
              "reports_repeated_total 0", "skipped_bytes_total 1", "connections_accepted_total 6",
              "connections_ended_total{fate=\"ended\"} 6", "connections_slowed_total 0", "connections 0",
              "spool_bytes 0", "database_up 1", "commit_seconds_bucket{le=\"+Inf\"} ALL", "commit_seconds_count ALL"}) {
            const QByteArray expected = QByteArray(line).replace("ALL", QByteArray::number(sent));
            QVERIFY2(measures(expected), expected);
        }
        tells("\"$receive\" $db --status", "receiver    running, started 2... good, 1 damaged, 0 rejected, 1 bytes "
                                           "skipped\n...database    up\nstored  "
                                           "    half of the packets within ...status 0");
        QVERIFY2(m_receiver->end().contains("reports stored "), "no last status line");
        tells("\"$receive\" $db --status", "NOT RUNNING...status 1");
    }

    void takesKnownObjectsOnly()
    {
        run("\"$archive\" $db create");
        execute("INSERT INTO \"Sensors\" VALUES (1000, 700, 0)");
        start("Objects=known\n");
        QTRY_VERIFY_WITH_TIMEOUT(measures("database_up 1"), 20'000);
        const QByteArray packet = Fleet::packetOf(700, 1'780'000'000);
        send(packet + Fleet::packetOf(701, 1'780'000'000) + Fleet::packetOf(700, 1'780'000'001));
        send(packet);
        const QByteArray told = m_receiver->end();
        QVERIFY2(told.contains("object 701"), told);
        QCOMPARE(valuesOf("SELECT id_object, time_unix FROM archive.master_table WHERE id_object >= 700"),
                 QByteArray("700 1780000000"));
        QVERIFY(measures("connections_ended_total{fate=\"closed_for_object\"} 1"));
    }

    void readsWhatConnectionsHoldWhenItIsEnded()
    {
        constexpr int packets = 8000; // more than is read in one turn
        start();
        QTcpSocket terminal;
        terminal.connectToHost(QStringLiteral("127.0.0.1"), m_receiver->port());
        QTRY_VERIFY_WITH_TIMEOUT(m_receiver->told().contains("connected"), 20'000);
        const auto process = static_cast<pid_t>(m_receiver->processId());
        ::kill(process, SIGSTOP);
        for (quint32 second = 0; second < packets; ++second)
            terminal.write(Fleet::packetOf(740, 1'780'000'000 + second));
        while (terminal.bytesToWrite() > 0)
            QVERIFY(terminal.waitForBytesWritten());
        ::kill(process, SIGTERM); // waits as well
        ::kill(process, SIGCONT);
        const QByteArray told = m_receiver->end();
        QVERIFY2(told.contains("reports stored"), told);
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table WHERE id_object = 740"),
                 QByteArray::number(packets));
    }

    void takesUpWhatTheSpoolHolds()
    {
        QDir spool(folder() + QStringLiteral("/pardel-spool"));
        QVERIFY(spool.mkpath(QStringLiteral(".")));
        const QByteArray packet = Fleet::packetOf(710, 1'780'000'000);
        writeFile(spool.filePath(QStringLiteral("000000041-20260101T000000000.packets")),
                  packet + packet + packet.left(9)); // it was killed while it wrote
        QByteArray damaged = Fleet::packetOf(730, 1'780'000'000) + Fleet::packetOf(730, 1'780'000'001);
        damaged[10] = 0x55;
        const QString path = spool.filePath(QStringLiteral("000000001-20260101T000000000.packets"));
        writeFile(path, damaged);
        writeFile(spool.filePath(QStringLiteral("notes.packets")), "somebody's notes");
        start();
        const QByteArray told = m_receiver->end();
        for (const char* part : {"bytes of packets that came before the last end are in",
                                 "ends with 9 bytes of a packet that was being written when that was killed; its 2",
                                 "could be read: 1 packets, whose reports are stored; 1 damaged",
                                 "2 files of the spool could not be read whole"})
            QVERIFY2(told.contains(part), told);
        QCOMPARE(
            valuesOf("SELECT id_object, time_unix FROM archive.master_table WHERE id_object IN (710, 730) ORDER BY 1"),
            "710 1780000000 730 1780000001");
        QCOMPARE(contentOf(path + QStringLiteral(".kept")), damaged);
        QCOMPARE(spool.entryList({QStringLiteral("*.packets*")}).join(QLatin1Char(' ')),
                 QStringLiteral("000000001-20260101T000000000.packets.kept notes.packets.kept"));
        QVERIFY(spool.removeRecursively());
    }

    void waitsForTables()
    {
        const bool sqlite = db.driverName() == QLatin1String("QSQLITE"); // there the receiver makes them
        start();
        execute(sqlite ? "DROP TABLE archive.lastdata" : "ALTER TABLE archive.lastdata RENAME TO elsewhere");
        send(Fleet::packetOf(720, 1'780'000'000));
        QTRY_VERIFY_WITH_TIMEOUT(measures("packets_kept_total 1"), 20'000);
        if (!sqlite) {
            QVERIFY(measures("database_up 0"));
            tells("\"$receive\" $db --status", "status 1");
            execute("ALTER TABLE archive.elsewhere RENAME TO lastdata");
        }
        QTRY_COMPARE_WITH_TIMEOUT(valuesOf("SELECT count(*) FROM archive.master_table WHERE id_object = 720"),
                                  QByteArray("1"), 40'000);
        const QByteArray told = m_receiver->end();
        // It finds out when it connects, or when it stores.
        const bool hasAdvice =
            told.contains("\"pardel-archive create\" makes the") && told.contains("packets are kept");
        QVERIFY2(sqlite || hasAdvice, told);
    }

private:
    QString folder() const { return QFileInfo(iniFile).path(); }
    QString metricsFile() const { return folder() + QStringLiteral("/pardel-spool/metrics.prom"); }
    int reports() const { return valuesOf("SELECT count(*) FROM archive.master_table").toInt(); }

    /// Lines of the group Receiver.
    void writeKeys(const QByteArray& lines) const
    {
        const QByteArray database = contentOf(iniFile).split('[').value(1);
        writeFile(iniFile, '[' + database.trimmed() + "\n[Receiver]\nGroup=Db\n" + lines);
    }

    void start(const QByteArray& keys = {})
    {
        writeKeys(keys);
        run("\"$archive\" $db create");
        QFile::remove(metricsFile());
        m_receiver = std::make_unique<ReceiverProcess>(iniFile, QStringLiteral("--ini '%1'").arg(iniFile));
        m_receiver->start();
    }

    /// Sends, and closes when the system has taken it all.
    void send(const QByteArray& bytes) const
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), m_receiver->port());
        QVERIFY(socket.waitForConnected());
        socket.write(bytes);
        socket.disconnectFromHost();
        if (socket.state() != QAbstractSocket::UnconnectedState)
            socket.waitForDisconnected();
    }

    bool measures(const QByteArray& line) const
    {
        return contentOf(metricsFile()).contains("\npardel_receive_" + line + '\n');
    }

    std::unique_ptr<ReceiverProcess> m_receiver;
};

QTEST_GUILESS_MAIN(TestReceive)
#include "tst_receive.moc"
