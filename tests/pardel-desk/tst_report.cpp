// What a report tells of a track, its table, and the table as CSV.

#include "csvtext.h"
#include "objectcatalog.h"
#include "reporttable.h"
#include "track.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr qint32 degree = 10'000'000;

/// Points as "time latitude longitude speed alarm", in degrees.
Track trackOf(const QByteArray& text)
{
    Track track;
    for (const QByteArray& point : text.isEmpty() ? QByteArrayList() : text.split(',')) {
        const QByteArrayList numbers = point.simplified().split(' ');
        track.append({numbers[0].toInt(), numbers[1].toInt() * degree, numbers[2].toInt() * degree, numbers[3].toInt(),
                      0, numbers[4] != "0"});
    }
    return track;
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
        const QString text = QStringLiteral("%1 %2 %3 %4 %5")
                                 .arg(qRound(summary.distance / 100) / 10.0)
                                 .arg(summary.moving)
                                 .arg(summary.topSpeed)
                                 .arg(summary.topSpeedAt)
                                 .arg(summary.alarms);
        QCOMPARE(text.toUtf8(), cell("summary"));
    }

    void order()
    {
        Track track;
        for (const int time : {30, 10, 20, 30, 5}) {
            TrackPoint point;
            point.time = time;
            point.speed = static_cast<qint32>(track.size());
            insertInTime(track, point);
        }
        QByteArray text;
        for (const TrackPoint& point : track)
            text += QByteArray::number(point.time) + '@' + QByteArray::number(point.speed) + ' ';
        QCOMPARE(text, QByteArray("5@3 10@1 20@2 30@3 ")); // of two at 30 the later one
        QCOMPARE(indexAt(track, 4), -1);
        QCOMPARE(indexAt(track, 5), 0);
        QCOMPARE(indexAt(track, 29), 2);
        QCOMPARE(indexAt(track, 99), 3);
    }

    void csv_data() { addTableRows("csv.txt"); }
    void csv() { QCOMPARE(csvLine(QString::fromUtf8(cell("fields")).split(QLatin1Char(';'))).toUtf8(), cell("line")); }

    void table()
    {
        KernelNotifyer kernel;
        ObjectCatalog catalog;
        catalog.add(2, {QStringLiteral("Van, blue"), QString()});
        ReportTable report(kernel, catalog);
        report.showReport({{2, trackOf("0 55 37 40 1, 60 56 37 50 0, 3700 56 37 0 0")}, {7, Track()}}, 0, 3700);
        const QByteArray expected = "Object,\"Distance, km\",\"Moving, h:mm:ss\",\"Top speed, km/h\",Alarms\r\n"
                                    "\"Van, blue\",111.2,0:01:00,50,1\r\n"
                                    "7,0.0,0:00:00,0,0\r\n";
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("report.csv"));
        QCOMPARE(report.saveCsv(file), QString());
        QCOMPARE(contentOf(file), expected);
        QVERIFY(!report.saveCsv(folder.filePath(QStringLiteral("no/report.csv"))).isEmpty());

        QSignalSpy selected(&kernel, &KernelNotifyer::OnSelectIdObjectSignal);
        report.table->setCurrentCell(0, 3);
        QCOMPARE(selected.value(0), QVariantList{2U});
        QSignalSpy gone(&kernel, &KernelNotifyer::OnTimeSelectedByReportSignal);
        Q_EMIT report.table->cellDoubleClicked(0, 0);
        QCOMPARE(gone.value(0), QVariantList{60U});
        kernel.OnSelectIdObject(7);
        QCOMPARE(report.table->currentRow(), 1);
        QCOMPARE(selected.size(), 2); // what is selected from outside is not announced again
    }
};

QTEST_MAIN(TestReport)
#include "tst_report.moc"
