// The table of last states.

#include "objectcatalog.h"
#include "statetable.h"

#include <Pardel/interfaces.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

namespace {

MobData makeReport(qint32 id, qint32 time, qint32 speed, const QList<QPair<int, int>>& sensors = {})
{
    MobData report;
    report.idObject = id;
    report.timeUnix = time;
    report.speed = speed;
    for (const auto& [type, value] : sensors) {
        Sensor sensor;
        sensor.type = static_cast<qint16>(type);
        sensor.value = static_cast<float>(value);
        sensor.status = static_cast<qint8>(value); // the alarm's
        report.sensors.append(sensor);
    }
    return report;
}

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

        model.take(makeReport(7, 100, 10, {{65, 24}}));
        model.take(makeReport(7, 101, 11)); // still has the supply
        model.take(makeReport(7, 99, 99));  // older than what is known
        model.take(makeReport(-2, -1, 5));  // without a time
        QCOMPARE(model.rowCount(), 0);      // gathered
        model.flush();
        QCOMPARE(textOf(model), QByteArray("Van 11 24  |"));

        model.take(makeReport(-2, 50, 3));
        model.flush();
        QCOMPARE(textOf(model), QByteArray("Van 11 24  |4294967294 3   |"));
        QCOMPARE(changed.size(), 0);

        for (int second = 0; second < 100; ++second) {
            model.take(makeReport(7, 200 + second, second, {{15, 1}}));
            model.take(makeReport(-2, 200 + second, 1, {{15, 0}, {65, 12}}));
        }
        QTRY_COMPARE(changed.size(), 1); // 200 reports are one change, which comes by itself
        QCOMPARE(textOf(model), QByteArray("Van 99 24 alarm |4294967294 1 12  |"));
        model.take(makeReport(7, 150, 1)); // older than what is shown
        model.flush();
        QCOMPARE(textOf(model), QByteArray("Van 99 24 alarm |4294967294 1 12  |"));
    }

    void selection()
    {
        ObjectCatalog catalog;
        KernelNotifyer kernel;
        DataPumpNotifyer reports;
        StateTable table(kernel, reports, catalog);
        for (const qint32 id : {1, 2, 10}) {
            MobData report = makeReport(id, 100, 50 - id);
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
        QCOMPARE(selected.size(), 2);             // what is selected from outside is not announced again
        MobData report = makeReport(10, 101, 60); // moves to the end, and stays selected
        reports.OnDataRecieved(report);
        table.states().flush();
        QCOMPARE(table.currentIndex().row(), 2);
        QCOMPARE(selected.size(), 2);
    }
};

QTEST_MAIN(TestStateTable)
#include "tst_statetable.moc"
