#include "testfiles.h"
#include "treetext.h"

#include <Pardel/treesortfilterproxymodel.h>

#include <QAbstractItemModelTester>
#include <QRegularExpression>
#include <QTest>
#include <QTreeView>

#include <algorithm>

namespace {

/// The tester wants no flags of the invalid index, on which this proxy puts one too.
class TestedProxy : public TreeSortFilterProxyModel
{
public:
    using TreeSortFilterProxyModel::TreeSortFilterProxyModel;

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

} // namespace

class TreeSortFilterProxyModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        readTree(&m_model, "Cars(Audi:7 bmw:8) Boats(Big(Ark:9 Car-ferry:10) Tug:11) Empty");
        for (QStandardItem* item : allItems(&m_model)) {
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

        const QByteArrayList columns = cell(0).split(' ');
        QList<int> keyColumns;
        for (const QByteArray& column : columns.first() == "-" ? QByteArrayList() : columns.first().split(','))
            keyColumns.append(column.toInt());
        proxy.setFilterKeyColumns(keyColumns);
        QCOMPARE(proxy.filterKeyColumns(), keyColumns);
        proxy.setFilterKeyColumn(columns.value(1).toInt());

        const QByteArray way = cell(1);
        const QString pattern = QString::fromUtf8(cell(2));
        if (way == "cased")
            proxy.setFilterCaseSensitivity(Qt::CaseSensitive);
        if (way == "wildcard")
            proxy.setFilterWildcard(pattern);
        else if (way == "regexp")
            proxy.setFilterRegExp(pattern);
        else if (way == "expression")
            proxy.setFilterRegularExpression(pattern);
        else if (way == "sensitive")
            proxy.setFilterRegularExpression(QRegularExpression(pattern));
        else
            proxy.setFilterFixedString(pattern);
        view.expandAll();
        QCOMPARE(viewText(&view), cell(3));
    }

    void flags()
    {
        TreeSortFilterProxyModel proxy;
        QVERIFY(proxy.flags(QModelIndex()) & Qt::ItemIsUserCheckable);
        proxy.setSourceModel(&m_model);
        itemNamed(&m_model, "Audi")->setFlags(Qt::ItemIsSelectable);
        const QModelIndex audi = proxy.index(0, 0, proxy.index(0, 0));
        QCOMPARE(proxy.flags(audi), Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        QVERIFY(proxy.flags(QModelIndex()) & Qt::ItemIsUserCheckable);
    }

    void children_are_tested_by_the_override()
    {
        TestedProxy proxy;
        proxy.refused = QStringLiteral("Ark");
        proxy.setSourceModel(&m_model);
        proxy.setFilterFixedString(QStringLiteral("ark"));
        QCOMPARE(proxy.rowCount(), 0);
    }

    void key_columns_wait_for_a_pattern()
    {
        TestedProxy proxy;
        proxy.setSourceModel(&m_model);
        proxy.setFilterFixedString(QStringLiteral("9"));
        QCOMPARE(proxy.rowCount(), 0);
        proxy.setFilterKeyColumns({1});
        QCOMPARE(proxy.rowCount(), 0);
        proxy.setFilterFixedString(QStringLiteral("9"));
        QCOMPARE(proxy.rowCount(), 1);
    }

    void no_source()
    {
        const TreeSortFilterProxyModel proxy;
        QVERIFY(!proxy.resultAcceptsRow(0, QModelIndex(), 0));
        TestedProxy bound;
        bound.setSourceModel(&m_model);
        bound.setFilterFixedString(QStringLiteral("a"));
        QVERIFY(!bound.resultAcceptsRow(99, QModelIndex(), 0));
        QVERIFY(!bound.resultAcceptsRow(-1, QModelIndex(), -1));
    }

    void groups_one_in_another()
    {
        constexpr int levels = 10'000;
        m_model.clear();
        QStandardItem* group = m_model.invisibleRootItem();
        for (int level = 0; level < levels; ++level) {
            group->appendRow(new QStandardItem(level == levels - 1 ? QStringLiteral("last") : QStringLiteral("group")));
            group = group->child(0);
        }
        TestedProxy proxy;
        proxy.setSourceModel(&m_model);
        proxy.setFilterFixedString(QStringLiteral("last"));
        QCOMPARE(proxy.rowCount(), 1);
        proxy.refused = QStringLiteral("last");
        proxy.setFilterFixedString(QStringLiteral("last"));
        QCOMPARE(proxy.rowCount(), 0);
    }

private:
    QStandardItemModel m_model;
};

QTEST_MAIN(TreeSortFilterProxyModelTest)

#include "tst_treesortfilterproxymodel.moc"
