// The list of alarms, and what several desks see of each other's.

#include "alarmpanel.h"
#include "objectcatalog.h"

#include "databasetest.h"

#include <QCheckBox>
#include <QTableView>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

/// A row of the table, as a desk of its own.
struct Desk
{
    Desk(const ObjectCatalog& catalog, const QSqlDatabase& db, const QString& ini, const char* user)
        : settings(ini, QSettings::IniFormat)
    {
        settings.setValue(QStringLiteral("Alarms/Days"), 36'500); // times are near 0
        panel = std::make_unique<AlarmPanel>(catalog, db, settings);
        panel->setUser(QLatin1String(user));
        panel->beep = [] {};
        tester = std::make_unique<QAbstractItemModelTester>(&panel->list,
                                                            QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    /// "7!100"
    static TrackPoint point(const QByteArray& text, qint32* id)
    {
        const auto sign = static_cast<int>(text.toStdString().find_first_of("!-?"));
        *id = text.left(sign).toInt();
        return {text.mid(sign + 1).toInt(), 550'000'000, 370'000'000, 40, 0, text.at(sign) != '-'};
    }

    void start(const QByteArray& reports)
    {
        Track all;
        qint32 id = 0;
        for (const QByteArray& report : reports.split(','))
            all.append(point(report, &id));
        panel->start({{id, {all.constLast()}}}, [all](qint32, qint64 from, qint64 to) {
            Track read;
            std::copy_if(all.cbegin(), all.cend(), std::back_inserter(read),
                         [&](const TrackPoint& at) { return at.time >= from && at.time <= to; });
            return read;
        });
    }

    void move(const QByteArray& text)
    {
        qint32 id = 0;
        if (text == "x") {
            panel->exchange();
        } else if (text == "k") {
            panel->table->selectAll();
            panel->acknowledge();
        } else if (text.startsWith('@')) {
            start(text.mid(1));
        } else {
            const TrackPoint state = point(text, &id);
            panel->list.take(id, state, !text.contains('?'));
        }
        QTRY_VERIFY(!panel->isExchanging());
        QCOMPARE(panel->exchangeTrouble(), QString());
    }

    QByteArray rows() const
    {
        QMap<qint64, QByteArray> texts;
        for (int row = 0; row < panel->list.rowCount(); ++row) {
            const DeskAlarm& alarm = panel->list.at(row);
            texts[alarm.time] = QByteArray::number(alarm.object) + ':' + QByteArray::number(alarm.time) + '-' +
                                (alarm.ended == 0 ? QByteArray("on") : QByteArray::number(alarm.ended)) +
                                (alarm.isNew() ? "*" : " " + alarm.by.toUtf8());
        }
        return QByteArrayList(texts.values()).join(' ');
    }

    QSettings settings;
    std::unique_ptr<AlarmPanel> panel;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

} // namespace

class TestAlarms : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void desks_data() { addTableRows("desk-alarms.txt"); }
    void desks()
    {
        forgetAlarms();
        Desk a(m_catalog, db, m_folder.filePath(QStringLiteral("a.ini")), "anna");
        Desk b(m_catalog, db, m_folder.filePath(QStringLiteral("b.ini")), "boris");
        for (const QByteArray& move : cell("moves").split(' '))
            (move.startsWith('A') ? a : b).move(move.mid(1));
        QCOMPARE(a.rows(), cell("a"));
        QCOMPARE(b.rows(), cell("b"));
    }

    void lost_connection()
    {
        forgetAlarms();
        Desk desk(m_catalog, db, m_folder.filePath(QStringLiteral("a.ini")), "anna");
        desk.move("7!100");
        desk.move("x");
        // Somebody else is at work on the table, and the desk does not stand still for it.
        execute(QStringLiteral("ALTER TABLE \"DeskAlarms\" RENAME TO \"Elsewhere\""));
        execute(QStringLiteral("CREATE TABLE \"DeskAlarms\" (\"Object\" bigint)"));
        QSignalSpy trouble(desk.panel.get(), &AlarmPanel::troubleChanged);
        desk.panel->list.take(8, {200, 1, 1, 0, 0, true});
        for (int time = 1; time <= 5; ++time) {
            QCOMPARE(trouble.size(), 0); // it may pass
            desk.panel->exchange();
            QTRY_VERIFY(!desk.panel->isExchanging());
        }
        QCOMPARE(trouble.size(), 1);
        QCOMPARE(desk.rows(), QByteArray("7:100-on* 8:200-on*"));
        execute(QStringLiteral("DROP TABLE \"DeskAlarms\""));
        execute(QStringLiteral("ALTER TABLE \"Elsewhere\" RENAME TO \"DeskAlarms\""));
        desk.move("x");
        QCOMPARE(trouble.value(1), QVariantList{QString()});
        QCOMPARE(valuesOf("SELECT \"Object\", \"Time\" FROM \"DeskAlarms\" ORDER BY \"Time\""),
                 QByteArray("7 100 8 200"));
    }

    void sound()
    {
        forgetAlarms();
        const QString ini = m_folder.filePath(QStringLiteral("sound.ini"));
        Desk desk(m_catalog, db, ini, "anna");
        desk.panel->sound->setChecked(true);
        int rung = 0;
        desk.panel->beep = [&rung] { ++rung; };
        for (const qint32 id : {7, 8, 9})
            desk.panel->list.take(id, {100, 1, 1, 0, 0, true});
        QTRY_COMPARE(rung, 1); // for all that come together
        desk.panel->sound->click();
        desk.panel->list.take(10, {100, 1, 1, 0, 0, true});
        QTest::qWait(400);
        QCOMPARE(rung, 1);
        desk.settings.sync();
        const Desk next(m_catalog, db, ini, "boris");
        QVERIFY(!next.panel->sound->isChecked());
    }

    void keys_and_marks()
    {
        forgetAlarms();
        Desk desk(m_catalog, db, m_folder.filePath(QStringLiteral("a.ini")), "anna");
        QSignalSpy marks(&desk.panel->list, &AlarmList::markChanged);
        QSignalSpy wanted(desk.panel.get(), &AlarmPanel::wanted);
        desk.move("7!100");
        desk.move("7-101");
        desk.move("7!102");
        QCOMPARE(marks, (QList<QVariantList>{{7, true}}));
        desk.panel->table->selectRow(0);
        QTest::keyClick(desk.panel->table, Qt::Key_Return);
        QTest::keyClick(desk.panel->table, Qt::Key_Enter);
        QCOMPARE(wanted, (QList<QVariantList>{{7}, {7}}));
        desk.panel->acknowledge();
        QCOMPARE(marks.size(), 1); // the other one is still new
        desk.move("k");
        QCOMPARE(marks.value(1), (QVariantList{7, false}));
    }

private:
    void forgetAlarms() { execute(QStringLiteral("DROP TABLE IF EXISTS \"DeskAlarms\"")); }

    ObjectCatalog m_catalog;
    QTemporaryDir m_folder;
};

QTEST_MAIN(TestAlarms)
#include "tst_alarms.moc"
