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

Track makeTrack(const QVector<QVector<int>>& points)
{
    Track track;
    for (const QVector<int>& point : points) // time, latitude and longitude in degrees, speed, alarm
        track.append({point[0], point[1] * degree, point[2] * degree, point[3], 0, point[4] != 0});
    return track;
}

} // namespace

Q_DECLARE_METATYPE(Track)

class TestReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void summary_data()
    {
        QTest::addColumn<Track>("track");
        QTest::addColumn<double>("kilometres");
        QTest::addColumn<int>("moving");
        QTest::addColumn<int>("topSpeed");
        QTest::addColumn<int>("topSpeedAt");
        QTest::addColumn<int>("alarms");
        const double arc = 111.2; // of a degree on a great circle

        QTest::newRow("nothing") << Track() << 0.0 << 0 << 0 << 0 << 0;
        QTest::newRow("one point") << makeTrack({{100, 55, 37, 40, 1}}) << 0.0 << 0 << 40 << 100 << 1;
        QTest::newRow("a degree north") << makeTrack({{100, 55, 37, 40, 0}, {160, 56, 37, 50, 0}}) << arc << 60 << 50
                                        << 160 << 0;
        QTest::newRow("east at 60 degrees half as far")
            << makeTrack({{100, 60, 10, 40, 0}, {160, 60, 11, 40, 0}}) << 55.6 << 60 << 40 << 100 << 0;
        QTest::newRow("over the date line")
            << makeTrack({{100, 0, 179, 40, 0}, {160, 0, -180, 40, 0}}) << arc << 60 << 40 << 100 << 0;
        QTest::newRow("standing does not count")
            << makeTrack({{100, 0, 0, 0, 0}, {160, 0, 0, 9, 0}, {190, 0, 1, 0, 0}, {900, 0, 1, 0, 0}}) << arc << 30 << 9
            << 160 << 0;
        QTest::newRow("ten minutes count, more do not")
            << makeTrack({{0, 0, 0, 5, 0}, {600, 0, 0, 5, 0}, {1201, 0, 0, 5, 0}}) << 0.0 << 600 << 5 << 0 << 0;
        QTest::newRow("an alarm is what is raised, not what is repeated")
            << makeTrack({{0, 0, 0, 0, 1}, {9, 0, 0, 0, 1}, {20, 0, 0, 0, 0}, {30, 0, 0, 0, 1}, {40, 0, 0, 0, 0}})
            << 0.0 << 0 << 0 << 0 << 2;
    }

    void summary()
    {
        QFETCH(Track, track);
        const TrackSummary summary = TrackSummary::of(track);
        QTEST(qRound(summary.distance / 10) / 100.0, "kilometres");
        QTEST(int(summary.moving), "moving");
        QTEST(int(summary.topSpeed), "topSpeed");
        QTEST(int(summary.topSpeedAt), "topSpeedAt");
        QTEST(summary.alarms, "alarms");
    }

    void order()
    {
        Track track;
        for (const int time : {30, 10, 20, 30, 5}) {
            TrackPoint point;
            point.time = time;
            point.speed = track.size();
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

    void csv_data()
    {
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QString>("line");
        const auto row = [](const char* name, const QStringList& fields, const char* line) {
            QTest::newRow(name) << fields << QString::fromUtf8(line);
        };
        const auto text = [](const char* utf8) { return QString::fromUtf8(utf8); };
        row("plain", {text("Van 1"), text("1.5"), text("ü")}, "Van 1,1.5,ü\r\n");
        row("empty", {QString(), QString()}, ",\r\n");
        row("comma", {text("a,b"), text("c")}, "\"a,b\",c\r\n");
        row("quote", {text("the \"big\" one")}, "\"the \"\"big\"\" one\"\r\n");
        row("line breaks", {text("a\nb"), text("c\rd")}, "\"a\nb\",\"c\rd\"\r\n");
    }

    void csv()
    {
        QFETCH(QStringList, fields);
        QTEST(csvLine(fields), "line");
    }

    void table()
    {
        KernelNotifyer kernel;
        ObjectCatalog catalog;
        catalog.add(2, {QStringLiteral("Van, blue"), QString()});
        ReportTable report(kernel, catalog);
        report.showReport(
            {{2, makeTrack({{0, 55, 37, 40, 1}, {60, 56, 37, 50, 0}, {3700, 56, 37, 0, 0}})}, {7, Track()}}, 0, 3700);
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
