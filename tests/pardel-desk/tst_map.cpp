// The map's projection, where names stand, and what mouse and keys do.

#include "labelplacing.h"
#include "mapprojection.h"
#include "mapview.h"
#include "objectcatalog.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QWheelEvent>
#include <QtTest>

class TestMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void projection_data() { addTableRows("projection.txt"); }

    void projection()
    {
        const GeoPoint point = {cell("latitude").toDouble(), cell("longitude").toDouble()};
        const auto areSame = [](const GeoPoint& a, const GeoPoint& b) {
            return std::abs(a.latitude - b.latitude) < 1e-9 && std::abs(a.longitude - b.longitude) < 1e-9;
        };
        MapProjection map;
        map.resize({800, 400});
        map.fit({54, 36}, {56, 38});
        QVERIFY(QRectF(0, 0, 800, 400).contains(map.toCanvas({54, 36})));
        QVERIFY(QRectF(0, 0, 800, 400).contains(map.toCanvas({56, 38})));
        QVERIFY(map.toCanvas({56, 36}).y() < map.toCanvas({54, 36}).y()); // north is up
        QVERIFY(areSame(map.toEarth(map.toCanvas(point)), point));

        const QPointF before = map.toCanvas(point);
        map.pan({30, -20});
        QVERIFY((map.toCanvas(point) - before - QPointF(30, -20)).manhattanLength() < 1e-6);
        map.centreOn(point);
        QVERIFY((map.toCanvas(point) - QPointF(400, 200)).manhattanLength() < 1e-6);
        // A degree of latitude is everywhere 111 km.
        const double metres = (map.toCanvas({point.latitude - 0.005, point.longitude}).y() -
                               map.toCanvas({point.latitude + 0.005, point.longitude}).y()) *
                              map.metresPerPixel();
        QVERIFY(std::abs(metres / 1113.2 - 1) < 1e-3);
        const double scale = map.metresPerPixel();
        const QPointF fixed(420, 190);
        const GeoPoint under = map.toEarth(fixed);
        map.zoom(2, fixed);
        QVERIFY(areSame(map.toEarth(fixed), under));
        QVERIFY(std::abs(map.metresPerPixel() / scale - 0.5) < 1e-3); // told at the middle, which has moved a little
    }

    void steps()
    {
        for (const auto& [most, step] : {std::pair(1.9, 1.0), {4.99, 2.0}, {9.9, 5.0}, {0.03, 0.02}, {7e4, 5e4}})
            QCOMPARE(roundStep(most), step);
    }

    void names_data() { addTableRows("labels.txt"); }

    void names()
    {
        QList<Label> labels;
        for (const QByteArray& mark : cell("marks").simplified().split(' '))
            labels.append({{mark.split(',')[0].toDouble(), mark.split(',')[1].toDouble()}, {40, 10}, 0});
        const auto places = placeLabels(labels, {0, 0, 200, 100}, 6, {{0, 80, 200, 20}});
        QByteArrayList told;
        for (int i = 0; i < labels.size(); ++i) {
            const QPointF away = places.at(i).value_or(QRectF()).center() - labels.at(i).mark;
            const QByteArray vertical = away.y() < -5 ? "above" : away.y() > 5 ? "below" : "";
            const QByteArray horizontal = away.x() < -5 ? "left" : away.x() > 5 ? "right" : "";
            told.append(places.at(i) ? (vertical + ' ' + horizontal).trimmed() : QByteArray("-"));
        }
        QCOMPARE(told.join(", "), cell("places"));
    }

    void mouse()
    {
        m_map.resize(600, 400);
        m_map.show();
        m_map.setTicked({1, 2});
        qint32 longitude = 370'000'000;
        for (const qint32 id : {1, 2, 3}) {
            MobData report{id, 550'000'000, longitude += 10'000'000, 0, 0, 1000, {}};
            m_reports.OnDataRecieved(report);
            report.timeUnix = 900; // late: a point of the track, not the mark
            report.longitude = longitude + 5'000'000;
            m_reports.OnDataRecieved(report);
        }
        m_map.showAll();
        QVERIFY(!m_map.markOf(3)); // not ticked
        const QPointF mark = *m_map.markOf(2);
        MobData wrongClock{2, 550'000'000, 371'000'000, 0, 0, 2'145'916'800, {}};
        m_reports.OnDataRecieved(wrongClock);
        QCOMPARE(*m_map.markOf(2), mark);
        QCOMPARE(m_map.objectsAt(mark), QList<qint64>{2});
        QCOMPARE(m_map.objectsAt(mark + QPointF(6, 6)), QList<qint64>{2});
        QCOMPARE(m_map.objectsAt(mark + QPointF(7, 7)), QList<qint64>());

        QList<qint64> clicked;
        connect(&m_hub, &Notifyer::OnObjectsClickedSignal, this, [&](const QList<qint64>* ids) { clicked = *ids; });
        QSignalSpy moved(&m_hub, &Notifyer::OnMapMovedSignal);
        QTest::mouseClick(&m_map, Qt::LeftButton, Qt::NoModifier, mark.toPoint());
        QCOMPARE(clicked, QList<qint64>{2});
        QCOMPARE(moved.size(), 0);

        clicked.clear();
        QTest::mousePress(&m_map, Qt::LeftButton, Qt::NoModifier, mark.toPoint());
        QMouseEvent drag(QEvent::MouseMove, mark.toPoint() + QPoint(40, 10), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&m_map, &drag);
        QTest::mouseRelease(&m_map, Qt::LeftButton, Qt::NoModifier, mark.toPoint() + QPoint(40, 10));
        QVERIFY(clicked.isEmpty()); // a drag is no click
        QCOMPARE(moved.size(), 1);
        QVERIFY((*m_map.markOf(2) - mark - QPointF(40, 10)).manhattanLength() < 1e-6);

        const int scale = m_map.scale();
        const QPointF under = *m_map.markOf(1);
        QSignalSpy scaled(&m_hub, &Notifyer::OnMapScaleChangedSignal);
        QWheelEvent wheel(under, m_map.mapToGlobal(under.toPoint()), QPoint(), QPoint(0, 120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&m_map, &wheel);
        QCOMPARE(scaled.value(0), QVariantList{m_map.scale()});
        QVERIFY(m_map.scale() < scale);
        QVERIFY((*m_map.markOf(1) - under).manhattanLength() < 1e-6);
    }

    void keys()
    {
        const auto press = [&](Qt::Key key) {
            const QPointF before = *m_map.markOf(1);
            QTest::keyClick(&m_map, key);
            return *m_map.markOf(1) - before;
        };
        m_map.showAll();
        const int all = m_map.scale();
        QVERIFY(press(Qt::Key_Left).x() > 0); // to see what is left of it, the map moves to the right
        QVERIFY(press(Qt::Key_Right).x() < 0);
        QVERIFY(press(Qt::Key_Up).y() > 0);
        QVERIFY(press(Qt::Key_Down).y() < 0);
        QTest::keyClick(&m_map, Qt::Key_Plus);
        QVERIFY(m_map.scale() < all);
        QTest::keyClick(&m_map, Qt::Key_Minus);
        QVERIFY(std::abs(m_map.scale() - all) <= 1);
        press(Qt::Key_Up);
        QTest::keyClick(&m_map, Qt::Key_Home);
        QCOMPARE(m_map.scale(), all);

        const auto isInTheMiddle = [&](qint32 id) {
            return (*m_map.markOf(id) - QPointF(300, 200)).manhattanLength() < 1e-6;
        };
        QSignalSpy followed(&m_map, &MapView::followedChanged);
        m_map.follow(2);
        m_map.zoomTo(2);
        QVERIFY(isInTheMiddle(2) && m_map.scale() < all && m_map.sign().contains(QStringLiteral("2")));
        MobData report{2, 551'000'000, 372'000'000, 0, 0, 1001, {}};
        m_reports.OnDataRecieved(report);
        QVERIFY(isInTheMiddle(2));
        m_kernel.OnSelectIdObject(1); // out of sight by now
        QVERIFY(isInTheMiddle(2));
        press(Qt::Key_Left);
        QCOMPARE(m_map.followed(), 0);
        QCOMPARE(followed.size(), 2);
        m_map.follow(99); // never heard of
        m_map.showDay(98, {});
        m_map.showAll();
    }

    void hints()
    {
        m_map.setTicked({6});
        m_map.addHistory(6, {{1000, 500'000'000, 300'000'000, 40, 90, false},
                             {1060, 500'000'000, 301'000'000, 50, 90, true},
                             {9000, 500'000'000, 304'000'000, 0, 90, false}}); // after a long silence
        m_map.showDay(6, {});
        const double y = m_map.markOf(6)->y();
        const auto hintAt = [&](double longitude) {
            const double x = (longitude - 30) / 0.4 * 600 / 1.15 + 300 - 300 / 1.15; // as fit() has it
            return m_map.hintAt({x, y});
        };
        QVERIFY(hintAt(30.01).contains(QStringLiteral("50.000000, 30.000000, 40 km/h, course 90°")));
        QVERIFY(hintAt(30.09).contains(QStringLiteral("50.000000, 30.100000, 50 km/h, course 90°, alarm")));
        QCOMPARE(hintAt(30.2), QString());
        QVERIFY(hintAt(30.4).startsWith(QStringLiteral("6: ")) && hintAt(30.4).endsWith(QStringLiteral("stands")));
    }

    void replay()
    {
        const Track track = {{100, 550'000'000, 370'000'000, 40, 0, false},
                             {200, 550'000'000, 380'000'000, 40, 0, true}};
        m_map.startReplay({{5, track}});
        m_kernel.OnDataToReport(0, 90'000, {5}, 0);
        QVERIFY(m_map.sign().contains(QStringLiteral("1970-01-01 20:00"))); // the tests' zone is five hours behind
        m_kernel.OnTimeSelectedByReport(99);
        QVERIFY(!m_map.markOf(5)); // its track has not begun
        m_kernel.OnTimeSelectedByReport(199);
        const auto first = m_map.markOf(5);
        m_kernel.OnTimeSelectedByReport(200);
        QVERIFY(first && m_map.markOf(5)->x() > first->x());
        m_map.stopReplay();
        QVERIFY(!m_map.markOf(5) && m_map.sign().isEmpty());
    }

private:
    Notifyer m_hub;
    KernelNotifyer m_kernel;
    DataPumpNotifyer m_reports;
    ObjectCatalog m_catalog;
    MapView m_map{m_hub, m_kernel, m_reports, m_catalog};
};

QTEST_MAIN(TestMap)
#include "tst_map.moc"
