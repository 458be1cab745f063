// What a report tells of a track, its table, and the table as CSV.

#include "csvtext.h"
#include "desktime.h"
#include "objectcatalog.h"
#include "reporttable.h"
#include "track.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QComboBox>
#include <QTableView>
#include <QtTest>

namespace {

constexpr qint32 degree = 10'000'000;

/// Points as "time latitude longitude speed alarm", in degrees, or as "time metres-north speed alarm".
Track trackOf(const QByteArray& text)
{
    constexpr double metre = degree / 6'371'008.8 * 180 / 3.14159265358979;
    Track track;
    for (const QByteArray& point : text.isEmpty() ? QByteArrayList() : text.split(',')) {
        QByteArrayList numbers = point.simplified().split(' ');
        const bool northwards = numbers.size() == 4;
        const int latitude = qRound(numbers[1].toInt() * (northwards ? metre : degree));
        const int longitude = northwards ? degree : numbers.takeAt(2).toInt() * degree;
        track.append({numbers[0].toInt(), latitude, longitude, numbers[2].toShort(), 0, numbers[3] != "0"});
    }
    return track;
}

QByteArray textOf(const QVector<Stretch>& stretches)
{
    const char* const names[] = {"Trip", "Stop", "Silence", "Speeding", "Alarm"};
    QByteArray text;
    for (const Stretch& stretch : stretches) {
        QTextStream(&text, QIODevice::Append)
            << (text.isEmpty() ? "" : ", ") << names[stretch.kind] << ' ' << stretch.begin.time << '-'
            << stretch.end.time << ' ' << qRound(stretch.distance / 100) / 10.0 << ' ' << stretch.topSpeed;
    }
    return text;
}

} // namespace

class TestReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void summary_data() { addTableRows("tracks.txt"); }
    void summary()
    {
        const TrackSummary summary = TrackSummary::of(trackOf(cell("points")));
        QByteArray text;
        QTextStream(&text) << qRound(summary.distance / 100) / 10.0 << ' ' << summary.moving << ' ' << summary.topSpeed
                           << ' ' << summary.topSpeedAt << ' ' << summary.alarms;
        QCOMPARE(text, cell("summary"));
    }

    void order()
    {
        Track track;
        for (const int time : {30, 10, 20, 30, 5})
            insertInTime(track, {time, 0, 0, static_cast<qint16>(track.size()), 0, false});
        QByteArray text;
        for (const TrackPoint& point : track)
            text += QByteArray::number(point.time) + '@' + QByteArray::number(point.speed) + ' ';
        QCOMPARE(text, QByteArray("5@3 10@1 20@2 30@3 ")); // of two at 30 the later one
        for (const auto& [time, index] : {std::pair(4, -1), {5, 0}, {29, 2}, {99, 3}})
            QCOMPARE(indexAt(track, time), index);
    }

    void csv_data() { addTableRows("csv.txt"); }
    void csv() { QCOMPARE(csvLine(QString::fromUtf8(cell("fields")).split(QLatin1Char(';'))).toUtf8(), cell("line")); }

    void stretches_data() { addTableRows("stretches.txt"); }
    void stretches()
    {
        const Track track = trackOf(cell("points"));
        QCOMPARE(textOf(tripsAndStops(track, {})), cell("trips"));
        QCOMPARE(textOf(speedings(track, {})), cell("speedings"));
        QCOMPARE(textOf(alarmsOf(track)), cell("alarms"));
    }

    void table()
    {
        KernelNotifyer kernel;
        ObjectCatalog catalog;
        catalog.add(2, {QStringLiteral("=Van, 10"), QString()});
        catalog.add(3, {QStringLiteral("=Van, 9"), QString()});
        DeskTime::setUtc(true);
        const QTemporaryDir folder;
        QSettings ini(folder.filePath(QStringLiteral("desk.ini")), QSettings::IniFormat);
        ReportTable report(kernel, catalog, ini);
        const QAbstractItemModelTester tester(report.table->model());
        QSignalSpy selected(&kernel, &KernelNotifyer::OnSelectIdObjectSignal);
        kernel.OnSelectIdObject(2);
        report.showReport({{{2, trackOf("0 55 37 40 1, 60 56 37 50 0, 3700 56 37 0 0")}, {3, Track()}}, 0, 3700, {}});
        const QByteArray expected =
            "Report,Summary\r\nFrom,1970-01-01 00:00:00 UTC\r\nTo,1970-01-01 01:01:40 UTC\r\nZone,UTC\r\n\r\n"
            "Id,Object,\"Distance, km\",Moving,Stops,Stopped,\"Top speed, km/h\",Speeding,Alarms\r\n"
            "3,\"'=Van, 9\",0.0,0:00:00,0,0:00:00,0,0,0\r\n"
            "2,\"'=Van, 10\",111.2,0:01:00,1,1:00:40,50,0,1\r\n"
            ",Total,111.2,0:01:00,1,1:00:40,50,0,1\r\n";
        const QString file = folder.filePath(QStringLiteral("report.csv"));
        QCOMPARE(report.saveCsv(file), QString());
        QCOMPARE(contentOf(file), expected);
        QVERIFY(!report.saveCsv(folder.filePath(QStringLiteral("no/report.csv"))).isEmpty());
        QVERIFY(!report.savePdf(folder.filePath(QStringLiteral("no/report.pdf"))).isEmpty());

        QCOMPARE(report.table->currentIndex().row(), 1); // a new report goes to what is selected
        report.table->sortByColumn(1, Qt::DescendingOrder);
        QCOMPARE(report.csv().section(QStringLiteral("\r\n"), 6, 6).left(2), QStringLiteral("2,"));
        QVERIFY(report.csv().trimmed().section(QStringLiteral("\r\n"), -1).startsWith(QStringLiteral(",Total")));
        report.table->selectRow(1);
        report.table->selectRow(2); // the totals are no object
        QCOMPARE(selected.size(), 2);
        QCOMPARE(selected.constLast(), QVariantList{3U});

        QSignalSpy chosen(&report, &ReportTable::stretchChosen);
        report.kind->setCurrentIndex(ReportModel::Trips);
        const QAbstractItemModel& rows = *report.table->model();
        QCOMPARE(rows.rowCount(), 3);
        QCOMPARE(rows.index(2, 1).data().toString(), QStringLiteral("Trips: 1, stops: 1"));
        Q_EMIT report.table->activated(rows.index(1, 0));
        Q_EMIT report.table->activated(rows.index(2, 0));
        QCOMPARE(chosen.size(), 1);
        report.kind->setCurrentIndex(ReportModel::Summary);
        Q_EMIT report.table->activated(rows.index(0, 0));
        QCOMPARE(chosen.value(1), (QVariantList{2, 0LL, 3700LL, 60LL}));

        report.table->setColumnWidth(0, 123); // as somebody wants it, in this kind of report
        report.kind->setCurrentIndex(ReportModel::Trips);
        QVERIFY(report.table->columnWidth(0) != 123);
        ReportTable next(kernel, catalog, ini);
        next.showReport(report.shown());
        QCOMPARE(next.table->columnWidth(0), 123);
        DeskTime::setUtc(false);
    }
};

QTEST_MAIN(TestReport)
#include "tst_report.moc"
