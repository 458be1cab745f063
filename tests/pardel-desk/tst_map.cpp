// The map's projection, and what is found under the mouse.

#include "mapprojection.h"
#include "mapview.h"
#include "objectcatalog.h"

#include <Pardel/interfaces.h>

#include <QSignalSpy>
#include <QWheelEvent>
#include <QtTest>

class TestMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void projection_data()
    {
        QTest::addColumn<double>("latitude");
        QTest::addColumn<double>("longitude");
        QTest::newRow("middle") << 55.0 << 37.0;
        QTest::newRow("corner") << 54.0 << 36.0;
        QTest::newRow("south and west") << -33.9 << -70.5;
        QTest::newRow("far north") << 84.9 << 179.0;
    }

    void projection()
    {
        QFETCH(double, latitude);
        QFETCH(double, longitude);
        const auto isThere = [&](const GeoPoint& place) {
            return std::abs(place.latitude - latitude) < 1e-9 && std::abs(place.longitude - longitude) < 1e-9;
        };
        MapProjection map;
        map.resize({800, 400});
        map.fit({54, 36}, {56, 38});
        QVERIFY(QRectF(0, 0, 800, 400).contains(map.toCanvas({54, 36})));
        QVERIFY(QRectF(0, 0, 800, 400).contains(map.toCanvas({56, 38})));
        QVERIFY(map.toCanvas({56, 36}).y() < map.toCanvas({54, 36}).y()); // north is up
        QVERIFY(isThere(map.toEarth(map.toCanvas({latitude, longitude}))));

        const QPointF before = map.toCanvas({latitude, longitude});
        map.pan({30, -20});
        QVERIFY((map.toCanvas({latitude, longitude}) - before - QPointF(30, -20)).manhattanLength() < 1e-6);
        map.centreOn({latitude, longitude});
        QVERIFY((map.toCanvas({latitude, longitude}) - QPointF(400, 200)).manhattanLength() < 1e-6);
        // A degree of latitude is everywhere 111 km.
        const double metres =
            (map.toCanvas({latitude - 0.005, longitude}).y() - map.toCanvas({latitude + 0.005, longitude}).y()) *
            map.metresPerPixel();
        QVERIFY(std::abs(metres / 1113.2 - 1) < 1e-3);
        const double scale = map.metresPerPixel();
        const QPointF fixed(420, 190);
        const GeoPoint under = map.toEarth(fixed);
        map.zoom(2, fixed);
        QVERIFY(std::abs(map.toEarth(fixed).latitude - under.latitude) < 1e-9);
        QVERIFY(std::abs(map.toEarth(fixed).longitude - under.longitude) < 1e-9);
        QVERIFY(std::abs(map.metresPerPixel() / scale - 0.5) < 1e-3); // told at the middle, which has moved a little
    }

    void steps_data()
    {
        QTest::addColumn<double>("most");
        QTest::addColumn<double>("step");
        QTest::newRow("1") << 1.9 << 1.0;
        QTest::newRow("2") << 4.99 << 2.0;
        QTest::newRow("5") << 9.9 << 5.0;
        QTest::newRow("small") << 0.03 << 0.02;
        QTest::newRow("large") << 70'000.0 << 50'000.0;
    }

    void steps()
    {
        QFETCH(double, most);
        QTEST(roundStep(most), "step");
    }

    void mouse()
    {
        Notifyer hub;
        KernelNotifyer kernel;
        DataPumpNotifyer reports;
        ObjectCatalog catalog;
        MapView map(hub, kernel, reports, catalog);
        map.resize(600, 400);
        map.show();
        map.setTicked({1, 2});
        qint32 longitude = 370'000'000;
        for (const qint32 id : {1, 2, 3}) {
            MobData report;
            report.idObject = id;
            report.timeUnix = 1000;
            report.latitude = 550'000'000;
            report.longitude = longitude += 10'000'000;
            reports.OnDataRecieved(report);
            report.timeUnix = 900; // late: a point of the track, not the mark
            report.longitude = longitude + 5'000'000;
            reports.OnDataRecieved(report);
        }
        map.showAll();
        QVERIFY(!map.markOf(3)); // not ticked
        const QPointF mark = *map.markOf(2);
        QCOMPARE(map.objectsAt(mark), QList<qint64>{2});
        QCOMPARE(map.objectsAt(mark + QPointF(6, 6)), QList<qint64>{2});
        QCOMPARE(map.objectsAt(mark + QPointF(7, 7)), QList<qint64>());

        QList<qint64> clicked;
        connect(&hub, &Notifyer::OnObjectsClickedSignal, this, [&](const QList<qint64>* ids) { clicked = *ids; });
        QSignalSpy moved(&hub, &Notifyer::OnMapMovedSignal);
        QTest::mouseClick(&map, Qt::LeftButton, Qt::NoModifier, mark.toPoint());
        QCOMPARE(clicked, QList<qint64>{2});
        QCOMPARE(moved.size(), 0);

        clicked.clear();
        QTest::mousePress(&map, Qt::LeftButton, Qt::NoModifier, mark.toPoint());
        QMouseEvent drag(QEvent::MouseMove, mark.toPoint() + QPoint(40, 10), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&map, &drag);
        QTest::mouseRelease(&map, Qt::LeftButton, Qt::NoModifier, mark.toPoint() + QPoint(40, 10));
        QVERIFY(clicked.isEmpty()); // a drag is no click
        QCOMPARE(moved.size(), 1);
        QVERIFY((*map.markOf(2) - mark - QPointF(40, 10)).manhattanLength() < 1e-6);

        const int scale = map.scale();
        const QPointF under = *map.markOf(1);
        QSignalSpy scaled(&hub, &Notifyer::OnMapScaleChangedSignal);
        QWheelEvent wheel(under, map.mapToGlobal(under.toPoint()), QPoint(), QPoint(0, 120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&map, &wheel);
        QCOMPARE(scaled.value(0), QVariantList{map.scale()});
        QVERIFY(map.scale() < scale);
        QVERIFY((*map.markOf(1) - under).manhattanLength() < 1e-6);
    }

    void replay()
    {
        Notifyer hub;
        KernelNotifyer kernel;
        DataPumpNotifyer reports;
        ObjectCatalog catalog;
        MapView map(hub, kernel, reports, catalog);
        map.resize(600, 400);
        const Track track = {{100, 550'000'000, 370'000'000, 40, 0, false},
                             {200, 550'000'000, 380'000'000, 40, 0, true}};
        map.startReplay({{5, track}});
        kernel.OnTimeSelectedByReport(99);
        QVERIFY(!map.markOf(5)); // its track has not begun
        kernel.OnTimeSelectedByReport(199);
        const auto first = map.markOf(5);
        kernel.OnTimeSelectedByReport(200);
        QVERIFY(first && map.markOf(5)->x() > first->x());
        map.stopReplay();
        QVERIFY(!map.markOf(5));
    }
};

QTEST_MAIN(TestMap)
#include "tst_map.moc"
