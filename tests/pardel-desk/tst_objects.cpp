// Which objects are heard, and the tree of objects.

#include "objectcatalog.h"
#include "objectspanel.h"
#include "objectstates.h"

#include "testfiles.h"
#include "treetext.h"

#include <Pardel/interfaces.h>
#include <Pardel/treeobjcheckable.h>

#include <QCheckBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolTip>
#include <QTreeView>
#include <QtTest>

namespace {

constexpr qint64 now = 999'950'400; // the 8th of September 2001, 7 o'clock where the tests are

} // namespace

class TestObjects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void states_data() { addTableRows("desk-states.txt"); }
    void states()
    {
        ObjectStates states({300, 3600});
        states.setNow(now);
        const bool wasHeard = cell("age") != "none";
        const qint64 time = now - cell("age").toInt();
        if (wasHeard) {
            states.hear(7, static_cast<qint32>(time));
            states.hear(7, static_cast<qint32>(time - 50)); // late
        }
        QCOMPARE(states.word(7).left(6).trimmed().toUtf8(), cell("presence"));
        QCOMPARE(states.text(7).toUtf8(), cell("text"));
        QCOMPARE(states.shortText(7).toUtf8(), cell("short"));
        if (wasHeard)
            QCOMPARE(QByteArray::number(static_cast<int>(states.opacity(time) * 100)), cell("shade"));
    }

    void thresholds_data() { addTableRows("thresholds.txt"); }
    void thresholds()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("desk.ini"));
        writeFile(file, cell("settings"));
        const auto read = ObjectStates::Thresholds::read(QSettings(file, QSettings::IniFormat));
        QCOMPARE(QByteArray::number(read.silent) + ' ' + QByteArray::number(read.faint), cell("read"));
    }

    void new_objects_come_as_rows()
    {
        QTreeView& view = *m_panel.tree->getTreeView();
        const auto* box = m_panel.tree->findChild<QCheckBox*>(QStringLiteral("checkBox"));
        const auto add = [this](const QMap<qint32, QString>& groups) {
            for (auto group = groups.cbegin(); group != groups.cend(); ++group)
                m_catalog.add(group.key(), {QString(), group.value()});
            m_kernel.OnObjectsReceived();
        };
        add({{1, QStringLiteral("A")}, {7, QStringLiteral("B")}, {8, QStringLiteral("B")}});
        QCOMPARE(viewText(&view), QByteArray("A+(1+) B+(7+ 8+)"));
        view.collapse(view.model()->index(0, 0));
        view.model()->setData(view.model()->index(0, 0, view.model()->index(1, 0)), Qt::Unchecked, Qt::CheckStateRole);
        m_panel.searchEdit->setText(QStringLiteral("8"));
        QCOMPARE(viewText(&view), QByteArray("A+ B(7 *!8+)"));

        QSignalSpy ticked(&m_panel, &ObjectsPanel::tickedChanged);
        add({{5, QStringLiteral("B")}, {2, QStringLiteral("A")}, {9, QStringLiteral("C")}});
        QCOMPARE(viewText(&view), QByteArray("A+ B(7 *!8+ 5+) C+(9+)"));
        QTRY_COMPARE(ticked.size(), 1);
        QCOMPARE(m_panel.tickedObjects(), (QList<int>{1, 2, 8, 5, 9}));

        m_panel.tree->setCheckedSelectAll(Qt::Unchecked);
        add({{10, QStringLiteral("A")}, {11, QStringLiteral("D")}});
        QCOMPARE(box->checkState(), Qt::PartiallyChecked);
        QCOMPARE(viewText(&view), QByteArray("A B(7 *!8 5) C(9) D+(11+)"));
        m_panel.tick(9);
        QTRY_COMPARE(m_panel.tickedObjects(), (QList<int>{10, 9, 11}));
    }

    /// Told at a collapsed group, too.
    void alarms_in_a_group()
    {
        ObjectCatalog catalog;
        for (const qint32 id : {1, 2, 3})
            catalog.add(id, {QString(), id < 3 ? QStringLiteral("A") : QStringLiteral("B")});
        ObjectStates states({300, 3600});
        ObjectsPanel panel(m_kernel, catalog);
        panel.setPresence(states);
        QTreeView& view = *panel.tree->getTreeView();
        panel.show();
        view.collapseAll();
        const auto told = [&](int row) {
            const QPoint place = view.visualRect(view.model()->index(row, 0)).center();
            QHelpEvent help(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
            QCoreApplication::sendEvent(view.viewport(), &help);
            return QToolTip::text();
        };
        QCOMPARE(told(0), QStringLiteral("A"));
        states.setAlarm(1, true);
        states.setAlarm(2, true);
        QCOMPARE(told(0), QStringLiteral("A · new alarms: 2"));
        QCOMPARE(told(1), QStringLiteral("B"));
        states.setAlarm(1, false);
        QCOMPARE(told(0), QStringLiteral("A · new alarms: 1"));
    }

    void search()
    {
        m_catalog.add(7, {QStringLiteral("Van 007"), QString()});
        m_catalog.add(17, {QStringLiteral("Van 070"), QString()});
        ObjectsPanel panel(m_kernel, m_catalog);
        QTreeView& tree = *panel.tree->getTreeView();
        panel.filterEdit->setClearButtonEnabled(false); // Qt loses its animation when the test is over sooner
        panel.searchEdit->setText(QStringLiteral("07"));
        QCOMPARE(tree.currentIndex().data().toString(), QStringLiteral("Van 007"));
        panel.findNext();
        QCOMPARE(tree.currentIndex().data().toString(), QStringLiteral("Van 070"));
        panel.findPrevious();
        QCOMPARE(tree.currentIndex().data().toString(), QStringLiteral("Van 007"));
        tree.setCurrentIndex(tree.model()->index(0, 0)); // by hand, to what is no match
        panel.findNext();
        QCOMPARE(tree.currentIndex().data().toString(), QStringLiteral("Van 007"));

        panel.filterEdit->setText(QStringLiteral("no such"));
        const auto* told = tree.viewport()->findChild<QLabel*>();
        QVERIFY(!told->isHidden() && told->text().contains(QStringLiteral("no such")));
        panel.filterEdit->clear();
        QVERIFY(told->isHidden());
    }

private:
    KernelNotifyer m_kernel;
    ObjectCatalog m_catalog;
    ObjectsPanel m_panel{m_kernel, m_catalog};
};

QTEST_MAIN(TestObjects)
#include "tst_objects.moc"
