#include "treescenario.h"

#include <Pardel/treesortfilterproxymodel.h>

#include <QAbstractItemModelTester>
#include <QAbstractListModel>
#include <QRegularExpression>

#include <algorithm>

namespace {

/// The tester wants no flags of the invalid index, on which this proxy puts one too.
class TestedProxy : public TreeSortFilterProxyModel
{
public:
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return index.isValid() ? TreeSortFilterProxyModel::flags(index) : Qt::ItemFlags();
    }

    bool filterAcceptsRow(int row, const QModelIndex& parent) const override
    {
        return sourceModel()->index(row, 0, parent).data().toString() != refused &&
               TreeSortFilterProxyModel::filterAcceptsRow(row, parent);
    }

    QString refused;
};

/// Tells its rows for any parent.
class FlatModel : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex& /*parent*/) const override { return 3; }
    QVariant data(const QModelIndex& index, int /*role*/) const override { return index.row(); }
};

} // namespace

class TreeSortFilterProxyModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        readTree(&m_model, "Cars(Audi:7 bmw:8) Boats(Big(Ark:9 Car-ferry:10) Tug:11) Empty");
        const auto items = m_model.findItems(QStringLiteral("*"), Qt::MatchWildcard | Qt::MatchRecursive);
        for (QStandardItem* item : items) {
            QStandardItem* parent = item->parent() ? item->parent() : m_model.invisibleRootItem();
            QString reversed = item->text();
            std::reverse(reversed.begin(), reversed.end());
            parent->setChild(item->row(), 1, new QStandardItem(item->data(Qt::UserRole + 10).toString()));
            parent->setChild(item->row(), 2, new QStandardItem(reversed));
        }
    }

    void filter_data() { addTableRows("treefilter.txt"); }
    void filter()
    {
        TestedProxy proxy;
        proxy.setSourceModel(&m_model);
        const QAbstractItemModelTester tester(&proxy);
        QTreeView view;
        view.setModel(&proxy);

        QList<int> keyColumns = idsOf(cell("key columns"));
        proxy.setFilterKeyColumns(keyColumns);
        QCOMPARE(proxy.filterKeyColumns(), keyColumns);
        proxy.setFilterKeyColumn(cell("key column").toInt());

        const QString pattern = QString::fromUtf8(cell("pattern"));
        if (cell("way") == "QRegularExpression")
            proxy.setFilterRegularExpression(QRegularExpression(pattern));
        else
            QVERIFY(QMetaObject::invokeMethod(&proxy, cell("way").constData(), Q_ARG(QString, pattern)));
        if (cell("cased") == "yes")
            proxy.setFilterCaseSensitivity(Qt::CaseSensitive);
        view.expandAll();
        QCOMPARE(viewText(&view), cell("visible"));
    }

    /// By the names of the functions, as connections in the old manner call them.
    void patterns_data() { addTableRows("patterns.txt"); }
    void patterns()
    {
        m_model.clear();
        m_model.appendRow(new QStandardItem(QString::fromUtf8(cell("text"))));
        TreeSortFilterProxyModel proxy;
        proxy.setSourceModel(&m_model);
        QVERIFY(QMetaObject::invokeMethod(&proxy, cell("way").constData(),
                                          Q_ARG(QString, QString::fromUtf8(cell("pattern")))));
        QCOMPARE(proxy.rowCount(), cell("found") == "yes" ? 1 : 0);
    }

    void flags()
    {
        TreeSortFilterProxyModel proxy;
        proxy.setSourceModel(&m_model);
        itemNamed(&m_model, "Audi")->setFlags(Qt::ItemIsSelectable);
        const QModelIndex audi = proxy.index(0, 0, proxy.index(0, 0));
        QCOMPARE(proxy.flags(audi), Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        QVERIFY(proxy.flags(QModelIndex()) & Qt::ItemIsUserCheckable);
    }

    void rowsAskedFor()
    {
        TestedProxy proxy;
        QVERIFY(!proxy.resultAcceptsRow(0, QModelIndex(), 0)); // there is no source
        proxy.setSourceModel(&m_model);
        proxy.setFilterFixedString(QStringLiteral("9"));
        QVERIFY(!proxy.resultAcceptsRow(99, QModelIndex(), 0));
        QVERIFY(!proxy.resultAcceptsRow(-1, QModelIndex(), -1));
        QCOMPARE(proxy.rowCount(), 0);
        proxy.setFilterKeyColumns({1}); // counts from the next pattern on
        QCOMPARE(proxy.rowCount(), 0);
        proxy.setFilterFixedString(QStringLiteral("9"));
        QCOMPARE(proxy.rowCount(), 1);
        proxy.refused = QStringLiteral("Ark"); // children are tested by the override
        proxy.setFilterFixedString(QStringLiteral("9"));
        QCOMPARE(proxy.rowCount(), 0);
    }

    void groups_one_in_another()
    {
        readTree(&m_model, QByteArray("a(").repeated(20'000) + 'z' + QByteArray(20'000, ')'));
        TestedProxy proxy;
        proxy.setSourceModel(&m_model);
        proxy.setFilterFixedString(QStringLiteral("z"));
        QCOMPARE(proxy.rowCount(), 1);
        // A way down for each column would never end.
        proxy.setFilterKeyColumns({0, 1, 2});
        proxy.setFilterFixedString(QStringLiteral("y"));
        QCOMPARE(proxy.rowCount(), 0);
    }

    void a_model_without_children()
    {
        FlatModel flat;
        TreeSortFilterProxyModel proxy;
        proxy.setSourceModel(&flat);
        proxy.setFilterFixedString(QStringLiteral("1"));
        QCOMPARE(proxy.rowCount(), 1);
    }

private:
    QStandardItemModel m_model;
};

QTEST_MAIN(TreeSortFilterProxyModelTest)

#include "tst_treesortfilterproxymodel.moc"
