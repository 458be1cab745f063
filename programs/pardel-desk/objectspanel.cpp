#include "objectspanel.h"

#include "objectcatalog.h"

#include <Pardel/interfaces.h>
#include <Pardel/treeobjcheckable.h>

#include <QAbstractProxyModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QStandardItemModel>
#include <QToolButton>
#include <QTreeView>

ObjectsPanel::ObjectsPanel(KernelNotifyer& hub, const ObjectCatalog& catalog, QWidget* parent)
    : QWidget(parent),
      filterEdit(new QLineEdit),
      searchEdit(new QLineEdit),
      tree(new TreeObjCheckable),
      m_hub(hub),
      m_catalog(catalog),
      m_matches(new QLabel)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    filterEdit->setPlaceholderText(tr("Filter"));
    filterEdit->setClearButtonEnabled(true);
    connect(filterEdit, &QLineEdit::textChanged, tree, &TreeObjCheckable::setFilterStr);
    layout->addWidget(filterEdit);

    auto* searchRow = new QHBoxLayout;
    searchEdit->setPlaceholderText(tr("Search"));
    connect(searchEdit, &QLineEdit::textChanged, this, &ObjectsPanel::search);
    connect(searchEdit, &QLineEdit::returnPressed, tree, &TreeObjCheckable::go_right);
    searchRow->addWidget(searchEdit);
    const auto addButton = [&](const char* image, const QString& text, void (TreeObjCheckable::*go)()) {
        auto* button = new QToolButton;
        button->setIcon(QIcon(QStringLiteral(":/pic/pic/") + QLatin1String(image)));
        button->setToolTip(text);
        button->setAccessibleName(text);
        connect(button, &QToolButton::clicked, tree, go);
        searchRow->addWidget(button);
    };
    addButton("left2.png", tr("Previous"), &TreeObjCheckable::go_left);
    addButton("right2.png", tr("Next"), &TreeObjCheckable::go_right);
    layout->addLayout(searchRow);
    layout->addWidget(m_matches);
    m_matches->hide();
    layout->addWidget(tree);

    QTreeView* view = tree->getTreeView();
    view->setHeaderHidden(true);
    view->setUniformRowHeights(true);
    m_ticksChanged.setSingleShot(true);
    connect(view->model(), &QAbstractItemModel::dataChanged, &m_ticksChanged, qOverload<>(&QTimer::start));
    // The box changes those too that a filter hides from the view.
    connect(tree, &TreeObjCheckable::checkedSelectAll, &m_ticksChanged, qOverload<>(&QTimer::start));
    connect(&m_ticksChanged, &QTimer::timeout, this, &ObjectsPanel::readTicks);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        const int id = tree->getCurrentObj();
        if (id == 0 || m_busy || static_cast<unsigned int>(id) == m_selected)
            return;
        m_hub.OnSelectIdObject(static_cast<unsigned int>(id));
    });
    connect(&hub, &KernelNotifyer::OnSelectIdObjectSignal, this, &ObjectsPanel::select);
    connect(&hub, &KernelNotifyer::OnObjectsReceivedSignal, this, &ObjectsPanel::rebuild);
    rebuild();
}

void ObjectsPanel::rebuild()
{
    const QScopedValueRollback<bool> busy(m_busy, true);
    QList<int> ticked;
    tree->getCheckedObjs(&ticked);
    for (const qint32 id : m_catalog.ids()) {
        if (!m_known.contains(id))
            ticked.append(id);
    }
    m_known = m_catalog.ids();
    m_ticked = ticked;
    QStandardItemModel model;
    m_catalog.fillTreeModel(model);
    tree->setModelAndCheckedO(&model, &m_ticked);
    tree->getTreeView()->expandAll();
    if (m_selected != 0)
        select(m_selected);
    readTicks();
}

void ObjectsPanel::readTicks()
{
    tree->getCheckedObjs(&m_ticked);
    Q_EMIT tickedChanged(m_ticked);
}

void ObjectsPanel::tick(qint32 id)
{
    tree->changeStateObject(ownModel()->invisibleRootItem(), Qt::Checked, id);
    m_ticksChanged.start();
}

/// What the view's model filters.
QStandardItemModel* ObjectsPanel::ownModel() const
{
    const auto* filter = qobject_cast<QAbstractProxyModel*>(tree->getTreeView()->model());
    return filter ? qobject_cast<QStandardItemModel*>(filter->sourceModel()) : nullptr;
}

void ObjectsPanel::search(const QString& text)
{
    tree->OnSearchTree(text);
    m_matches->setText(tr("Matches: %1").arg(tree->Get_index_size()));
    m_matches->setVisible(!text.isEmpty());
}

void ObjectsPanel::select(unsigned int id)
{
    m_selected = id;
    QTreeView* view = tree->getTreeView();
    if (static_cast<unsigned int>(tree->getCurrentObj()) == id)
        return;
    const QAbstractItemModel* model = view->model();
    const QModelIndexList found = model->match(model->index(0, 0), ObjectCatalog::idRole, static_cast<int>(id), 1,
                                               Qt::MatchExactly | Qt::MatchRecursive | Qt::MatchWrap);
    const QScopedValueRollback<bool> busy(m_busy, true);
    if (!found.isEmpty())
        view->setCurrentIndex(found.constFirst());
}
