// The table of last states.

#include "objectcatalog.h"
#include "objectstates.h"
#include "statetable.h"

#include "reporttext.h"

#include <Pardel/interfaces.h>

#include <QtTest>

namespace {

/// Without the times, which depend on the place.
QByteArray textOf(const QAbstractItemModel& model)
{
    QByteArray text;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (const int column :
             {StateTableModel::Object, StateTableModel::Speed, StateTableModel::Supply, StateTableModel::Alarm})
            text += model.index(row, column).data().toString().toUtf8() + ' ';
        text += '|';
    }
    return text;
}

} // namespace

class TestStateTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows()
    {
        ObjectCatalog catalog;
        catalog.add(7, {QStringLiteral("Van"), QString()});
        StateTableModel model(catalog);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

        model.take(reportFrom("7 0,0 98/0 @2145916800")); // its clock is wrong
        model.take(reportFrom("7 0,0 10/0 @100 65=24"));
        model.take(reportFrom("7 0,0 11/0 @101")); // still has the supply
        model.take(reportFrom("7 0,0 99/0 @99"));  // older than what is known
        model.take(reportFrom("-2 0,0 5/0 @-1"));  // without a time
        QCOMPARE(model.rowCount(), 0);             // gathered
        model.flush();
        QCOMPARE(textOf(model), QByteArray("Van 11 24  |"));

        model.take(reportFrom("-2 0,0 3/0 @50"));
        model.flush();
        QCOMPARE(textOf(model), QByteArray("Van 11 24  |4294967294 3   |"));
        QCOMPARE(changed.size(), 0);

        for (int second = 0; second < 100; ++second) {
            model.take({7, 0, 0, second, 0, 200 + second, {makeSensor(15, 1, 1)}});
            model.take({-2, 0, 0, 1, 0, 200 + second, {makeSensor(15), makeSensor(65, 12)}});
        }
        QTRY_COMPARE(changed.size(), 1); // 200 reports are one change, which comes by itself
        QCOMPARE(textOf(model), QByteArray("Van 99 24 alarm |4294967294 1 12  |"));
        model.take(reportFrom("7 0,0 1/0 @150")); // older than what is shown
        model.flush();
        QCOMPARE(textOf(model), QByteArray("Van 99 24 alarm |4294967294 1 12  |"));
    }

    void sorting()
    {
        ObjectCatalog catalog;
        ObjectStates presence({60, 120});
        presence.setNow(1000);
        presence.hear(2, 990);
        presence.hear(3, 100);
        presence.setAlarm(3, true);
        StateTableModel model(catalog);
        model.setPresence(presence);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.sort(StateTableModel::Age);
        model.take(reportFrom("3 0,0 50/0 @100"));
        model.take(reportFrom("2 0,0 40/0 @990"));
        model.add(9);
        model.add(2);
        model.flush();
        QCOMPARE(textOf(model), QByteArray("2 40   |3 50  new alarm |9    |"));
        QByteArray states;
        for (int row = 0; row < model.rowCount(); ++row) {
            for (const int column : {StateTableModel::State, StateTableModel::Age})
                states += model.index(row, column).data().toByteArray() + '|';
        }
        QCOMPARE(states, QByteArray("online|10 s|silent|15 min|never heard||"));

        const QPersistentModelIndex third = model.index(1, 0);
        model.take(reportFrom("3 0,0 30/0 @995"));
        model.take(reportFrom("7 0,0 60/0 @500"));
        model.take(reportFrom("8 0,0 70/0 @400"));
        model.flush();
        QCOMPARE(textOf(model), QByteArray("3 30  new alarm |2 40   |7 60   |8 70   |9    |"));
        QCOMPARE(third.row(), 0);
        QCOMPARE(model.rowOf(8), 3);
        model.sort(StateTableModel::Speed, Qt::DescendingOrder);
        QCOMPARE(textOf(model), QByteArray("8 70   |7 60   |2 40   |3 30  new alarm |9    |"));
        model.add(10);
        model.flush();
        model.sort(StateTableModel::Object);
        QCOMPARE(textOf(model), QByteArray("2 40   |3 30  new alarm |7 60   |8 70   |9    |10    |"));
    }

    void selection()
    {
        ObjectCatalog catalog;
        KernelNotifyer kernel;
        DataPumpNotifyer reports;
        StateTable table(kernel, reports, catalog);
        for (const qint32 id : {1, 2, 10}) {
            MobData report{id, 0, 0, 50 - id, 0, 100, {}};
            reports.OnDataRecieved(report);
        }
        table.states().flush();
        table.sortByColumn(StateTableModel::Speed, Qt::AscendingOrder);
        QCOMPARE(textOf(*table.model()), QByteArray("10 40   |2 48   |1 49   |"));

        QSignalSpy selected(&kernel, &KernelNotifyer::OnSelectIdObjectSignal);
        table.selectRow(1);
        QCOMPARE(selected.value(0), QVariantList{2U});
        kernel.OnSelectIdObject(10);
        QCOMPARE(table.currentIndex().row(), 0);
        QCOMPARE(selected.size(), 2);                    // what is selected from outside is not announced again
        MobData report = reportFrom("10 0,0 60/0 @101"); // moves to the end, and stays selected
        reports.OnDataRecieved(report);
        table.states().flush();
        QCOMPARE(table.currentIndex().row(), 2);
        QCOMPARE(selected.size(), 2);
    }
};

QTEST_MAIN(TestStateTable)
#include "tst_statetable.moc"
