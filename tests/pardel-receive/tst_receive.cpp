// pardel-receive as its users run it, on both databases.

#include "databasetest.h"
#include "fleet.h"
#include "packetbuilder.h"
#include "shell.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSettings>
#include <QTcpSocket>

class TestReceive : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data() { addTableRows("receives.txt"); }
    void refuses() { runRow("receive", iniFile); }

    void storesAndTells()
    {
        start({});
        Fleet fleet(m_port, 1, 5, 500);
        fleet.start();
        QTRY_VERIFY_WITH_TIMEOUT(reports() > 100, 20'000);
        // A second receiver would take this one's packets for its own.
        const Outcome second = runShell(QStringLiteral("\"$receive\" $db --listen 127.0.0.1:0"), {}, iniFile);
        QCOMPARE(second.status, 1);
        QVERIFY2(second.errors.contains("pardel-spool is in use by another process: each needs one of its own\n"),
                 second.errors);
        send("?" + QByteArray::fromHex("a4d5000015 0d00 01024123 3f3f")); // a byte of nothing, a damaged packet
        fleet.finish();
        const auto sent = static_cast<int>(fleet.reports().size());
        QTRY_COMPARE_WITH_TIMEOUT(reports(), sent, 20'000);
        QTRY_COMPARE_WITH_TIMEOUT(metric("packets_total{kind=\"damaged\"}"), 1.0, 20'000); // they are written every 5 s

        const QHash<QByteArray, double> expected = {{"packets_total{kind=\"good\"}", sent},
                                                    {"packets_kept_total", sent},
                                                    {"reports_stored_total", sent},
                                                    {"reports_repeated_total", 0},
                                                    {"skipped_bytes_total", 1},
                                                    {"connections_accepted_total", 6},
                                                    {"connections_ended_total{fate=\"ended\"}", 6},
                                                    {"connections_slowed_total", 0},
                                                    {"connections", 0},
                                                    {"spool_bytes", 0},
                                                    {"database_up", 1},
                                                    {"commit_seconds_bucket{le=\"+Inf\"}", sent},
                                                    {"commit_seconds_count", sent}};
        for (auto value = expected.cbegin(); value != expected.cend(); ++value)
            QVERIFY2(metric(value.key()) == value.value(), value.key() + ' ' + QByteArray::number(metric(value.key())));
        const Outcome status = runShell(QStringLiteral("\"$receive\" $db --status"), {}, iniFile);
        QVERIFY2(status.status == 0 && status.output.contains("receiver    running, started 2") &&
                     status.output.contains(" good, 1 damaged, 0 rejected, 1 bytes skipped\n") &&
                     status.output.contains("database    up\nstored      half of the packets within "),
                 status.output);
        QVERIFY2(end().contains("reports stored "), "no last status line");
        const Outcome gone = runShell(QStringLiteral("\"$receive\" $db --status"), {}, iniFile);
        QVERIFY2(gone.status == 1 && gone.output.contains("NOT RUNNING"), gone.output);
    }

    void takesKnownObjectsOnly()
    {
        makeTables();
        execute(QStringLiteral("INSERT INTO \"Sensors\" VALUES (1000, 700, 0)"));
        start({{QStringLiteral("Objects"), QStringLiteral("known")}});
        QTRY_COMPARE_WITH_TIMEOUT(metric("database_up"), 1.0, 20'000);
        const QByteArray packet = Fleet::packetOf(700, 1'780'000'000);
        send(packet + Fleet::packetOf(701, 1'780'000'000) + Fleet::packetOf(700, 1'780'000'001));
        send(packet);
        const QByteArray told = end();
        QVERIFY2(told.contains("object 701"), told);
        QCOMPARE(valuesOf("SELECT id_object, time_unix FROM archive.master_table WHERE id_object >= 700"),
                 QByteArray("700 1780000000"));
        QCOMPARE(metric("connections_ended_total{fate=\"closed_for_object\"}"), 1.0);
    }

    void storesWhatAKilledRunHasLeft()
    {
        const QDir spool(folder() + QStringLiteral("/pardel-spool"));
        QVERIFY(spool.mkpath(QStringLiteral(".")));
        const QByteArray packet = Fleet::packetOf(710, 1'780'000'000);
        writeFile(spool.filePath(QStringLiteral("000000041-20260101T000000000.packets")),
                  packet + packet + packet.left(9)); // it was killed while it wrote
        start({});
        const QByteArray told = end();
        QVERIFY2(told.contains("bytes of packets that came before the last end are in") &&
                     told.contains("ends with 9 bytes of a packet that was being written when that was killed; its 2"),
                 told);
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table WHERE id_object = 710"), QByteArray("1"));
        QCOMPARE(spool.entryList({QStringLiteral("*.packets*")}), QStringList());
    }

    void keepsWhatItCannotRead()
    {
        QVERIFY(QDir(folder()).mkpath(QStringLiteral("pardel-spool")));
        const QString path = folder() + QStringLiteral("/pardel-spool/000000001-20260101T000000000.packets");
        QByteArray packets = Fleet::packetOf(730, 1'780'000'000) + Fleet::packetOf(730, 1'780'000'001);
        packets[10] = 0x55;
        writeFile(path, packets);
        const QString foreign = folder() + QStringLiteral("/pardel-spool/notes.packets");
        writeFile(foreign, "somebody's notes");
        start({});
        const QByteArray told = end();
        QVERIFY2(told.contains("could be read: 1 packets, whose reports are stored; 1 damaged"), told);
        QVERIFY2(told.contains("2 files of the spool could not be read whole"), told);
        QCOMPARE(valuesOf("SELECT time_unix FROM archive.master_table WHERE id_object = 730"),
                 QByteArray("1780000001"));
        QCOMPARE(contentOf(path + QStringLiteral(".kept")), packets);
        QVERIFY(QFile::remove(path + QStringLiteral(".kept")));
        QVERIFY(QFile::remove(foreign + QStringLiteral(".kept")));
    }

    void refusesSettings_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("told");
        const auto row = [](const char* key, const char* value, const char* told) {
            QTest::newRow(key) << QString::fromLatin1(key) << QString::fromLatin1(value) << QByteArray(told);
        };
        row("Objects", "some", "Objects=some in [Receiver]");
        row("NoConvert", "perhaps", "NoConvert=perhaps is neither true nor false\n");
        row("CrcInit", "1", "CrcInit=1 is neither 0 nor ffff\n");
        row("BytesPerSecond", "fast", "BytesPerSecond=fast is no number from 0 to 1073741824\n");
        row("Listen", "foo", "\"foo\" is no IP address and port as 127.0.0.1:20545 or [::1]:20545\n");
        row("AllowForm", "10.0.0.0/8", "AllowForm is no key of [Receiver], which has AllowFrom, ");
        row("AllowFrom", "10.0.0", "\"10.0.0\" in AllowFrom is no network as 10.0.0.0/8\n");
    }
    void refusesSettings()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QByteArray, told);
        writeKeys({{key, value}});
        const Outcome outcome = runShell(QStringLiteral("\"$receive\" $db"), {}, iniFile);
        writeKeys({});
        QVERIFY2(outcome.status == 2 && outcome.errors.contains(told), outcome.errors);
    }

    void waitsForTables()
    {
        const bool sqlite = db.driverName() == QLatin1String("QSQLITE"); // there the receiver makes them
        start({});
        execute(sqlite ? QStringLiteral("DROP TABLE archive.lastdata")
                       : QStringLiteral("ALTER TABLE archive.lastdata RENAME TO elsewhere"));
        send(Fleet::packetOf(720, 1'780'000'000));
        QTRY_COMPARE_WITH_TIMEOUT(metric("packets_kept_total"), 1.0, 20'000);
        if (!sqlite) {
            QCOMPARE(metric("database_up"), 0.0);
            QCOMPARE(runShell(QStringLiteral("\"$receive\" $db --status"), {}, iniFile).status, 1);
            execute(QStringLiteral("ALTER TABLE archive.elsewhere RENAME TO lastdata"));
        }
        QTRY_COMPARE_WITH_TIMEOUT(valuesOf("SELECT count(*) FROM archive.master_table WHERE id_object = 720"),
                                  QByteArray("1"), 40'000);
        const QByteArray told = end();
        // It finds out when it connects, or when it stores.
        const bool hasAdvice =
            told.contains("\"pardel-archive create\" makes the") && told.contains("packets are kept");
        QVERIFY2(sqlite || hasAdvice, told);
    }

private:
    QString folder() const { return QFileInfo(iniFile).path(); }
    QString metricsFile() const { return folder() + QStringLiteral("/pardel-spool/metrics.prom"); }
    int reports() const { return valuesOf("SELECT count(*) FROM archive.master_table").toInt(); }

    void makeTables() const { runShell(QStringLiteral("\"$archive\" $db create"), {}, iniFile); }

    void writeKeys(const QMap<QString, QString>& keys) const
    {
        QSettings ini(iniFile, QSettings::IniFormat);
        ini.remove(QStringLiteral("Receiver"));
        for (auto key = keys.cbegin(); key != keys.cend(); ++key)
            ini.setValue(QStringLiteral("Receiver/") + key.key(), key.value());
        ini.setValue(QStringLiteral("Receiver/Group"), QStringLiteral("Db"));
    }

    void start(const QMap<QString, QString>& keys)
    {
        writeKeys(keys);
        makeTables();
        QFile::remove(metricsFile());
        m_receiver.setProcessChannelMode(QProcess::MergedChannels);
        m_receiver.start(QStringLiteral(PARDEL_RECEIVE),
                         {QStringLiteral("--ini"), iniFile, QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")});
        m_told.clear();
        static const QByteArray mark("listening on 127.0.0.1 port ");
        while (!m_told.contains(mark) && m_receiver.waitForReadyRead(20'000))
            m_told += m_receiver.readAll();
        m_port = static_cast<quint16>(m_told.mid(m_told.indexOf(mark) + mark.size()).split('\n').first().toInt());
        QVERIFY2(m_port > 0, m_told);
    }

    QByteArray end()
    {
        m_receiver.terminate();
        if (!m_receiver.waitForFinished(10'000) || m_receiver.exitCode() != 0)
            return "it did not end well";
        return m_told + m_receiver.readAll();
    }

    /// Sends and waits until the receiver has read it and closed.
    void send(const QByteArray& bytes) const
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
        QVERIFY(socket.waitForConnected());
        socket.write(bytes);
        socket.disconnectFromHost();
        if (socket.state() != QAbstractSocket::UnconnectedState)
            socket.waitForDisconnected();
    }

    double metric(const QByteArray& name) const
    {
        for (const QByteArray& line : contentOf(metricsFile()).split('\n')) {
            if (line.startsWith("pardel_receive_" + name + ' '))
                return line.mid(line.lastIndexOf(' ') + 1).toDouble();
        }
        return -1;
    }

    QProcess m_receiver;
    QByteArray m_told;
    quint16 m_port = 0;
};

QTEST_GUILESS_MAIN(TestReceive)
#include "tst_receive.moc"
