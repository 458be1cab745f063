// The menus of objects, and how windows are remembered.

#include "mapview.h"
#include "objectcatalog.h"
#include "objectmenu.h"
#include "windowmemory.h"

#include "testfiles.h"

#include <Pardel/interfaces.h>

#include <QClipboard>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenu>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest>

namespace {

constexpr qint32 object = 7;

/// A window as the desk's: a table beside something.
struct Window
{
    explicit Window(int columns) : model(1, columns)
    {
        auto* splitter = new QSplitter;
        splitter->setObjectName(QStringLiteral("Splitter"));
        table->setObjectName(QStringLiteral("Table"));
        table->setModel(&model);
        splitter->addWidget(table);
        splitter->addWidget(new QWidget);
        window.setCentralWidget(splitter);
        window.resize(400, 300);
    }

    QStandardItemModel model;
    QMainWindow window;
    QTableView* const table = new QTableView;
};

} // namespace

class TestDeskWindows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void actions_data() { addTableRows("objectactions.txt"); }

    void actions()
    {
        Notifyer hub;
        KernelNotifyer kernel;
        DataPumpNotifyer data;
        ObjectCatalog catalog;
        MapView map(hub, kernel, data, catalog);
        ObjectMenu menus(kernel, map, catalog);
        QMenu menu;
        menus.addTo(menu); // as it stands in the menu bar: told of what changes
        if (cell("known") == "yes")
            catalog.add(object, {});
        if (cell("reports") == "yes") {
            MobData report{object, 557'512'440, 376'184'230, 0, 0, 1000, {}};
            data.OnDataRecieved(report);
        }
        kernel.OnSelectIdObject(object);
        if (cell("followed") == "yes")
            map.follow(object);
        if (cell("replay") == "yes")
            map.startReplay({});

        QByteArrayList told;
        const char* const letters[] = {"C", "Z", "F", "T", "R", "P"};
        for (int i = 0; i < 6; ++i) {
            const QAction* action = menu.actions().at(i);
            told.append(!action->isEnabled() ? "-" : letters[i] + QByteArray(action->isChecked() ? "x" : ""));
        }
        QCOMPARE(told.join(' '), cell("actions"));

        QSignalSpy today(&menus, &ObjectMenu::todayWanted);
        QGuiApplication::clipboard()->setText(QStringLiteral("before"));
        for (const int i : {2, 3, 5}) {
            if (menu.actions().at(i)->isEnabled())
                menu.actions().at(i)->trigger();
        }
        QCOMPARE(today.value(0).value(0).toInt(), cell("actions").contains('T') ? object : 0);
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 cell("actions").contains('P') ? QStringLiteral("55.751244, 37.618423") : QStringLiteral("before"));
        QCOMPARE(map.followed(), cell("actions").contains("F ") ? object : 0); // choosing it again ends it
    }

    void memory()
    {
        const QTemporaryDir folder;
        QSettings ini(folder.filePath(QStringLiteral("window.ini")), QSettings::IniFormat);
        Window first(3);
        WindowMemory::restore(first.window, ini); // nothing is there
        QCOMPARE(first.window.size(), QSize(400, 300));
        first.window.resize(520, 410);
        first.table->setColumnWidth(1, 77);
        first.table->sortByColumn(2, Qt::DescendingOrder);
        first.table->horizontalHeader()->moveSection(0, 2);
        first.window.findChild<QSplitter*>()->setSizes({333, 100});
        const QList<int> sizes = first.window.findChild<QSplitter*>()->sizes();
        WindowMemory::save(first.window, ini);

        Window second(3);
        WindowMemory::restore(second.window, ini);
        QCOMPARE(second.window.size(), QSize(520, 410));
        QCOMPARE(second.table->columnWidth(1), 77);
        QCOMPARE(second.table->horizontalHeader()->sortIndicatorSection(), 2);
        QCOMPARE(second.table->horizontalHeader()->visualIndex(0), 2);
        QCOMPARE(second.window.findChild<QSplitter*>()->sizes(), sizes);

        Window later(4); // with another column
        WindowMemory::restore(later.window, ini);
        QCOMPARE(later.table->horizontalHeader()->visualIndex(0), 0);
        ini.setValue(QStringLiteral("Window/Geometry"), QStringLiteral("%&"));
        WindowMemory::restore(later.window, ini);
        QCOMPARE(later.window.size(), QSize(520, 410));
    }
};

QTEST_MAIN(TestDeskWindows)
#include "tst_deskwindows.moc"
