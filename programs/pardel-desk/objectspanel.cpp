#include "objectspanel.h"

#include "objectcatalog.h"
#include "objectstates.h"

#include <Pardel/interfaces.h>
#include <Pardel/treeobjcheckable.h>

#include <QAbstractProxyModel>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QToolTip>
#include <QTreeView>

#include <algorithm>

namespace {

/// Shows an object's state beside its name, and how many in a group have new alarms, as it may be collapsed. The items
/// stay as they are: each change of one would be followed up.
class StateDelegate : public QStyledItemDelegate
{
public:
    StateDelegate(const ObjectStates& presence, const ObjectCatalog& catalog, QObject* parent)
        : QStyledItemDelegate(parent), m_presence(presence), m_catalog(catalog)
    {
        connect(&presence, &ObjectStates::changed, this, [this] { m_isCounted = false; });
    }

    /// The whole line, of which a narrow tree shows a part.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override
    {
        if (event->type() != QEvent::ToolTip || !index.isValid())
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        QStyleOptionViewItem whole = option;
        initStyleOption(&whole, index);
        QToolTip::showText(event->globalPos(), whole.text, view);
        return true;
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QVariant id = index.data(ObjectCatalog::idRole);
        const int alarms = id.isValid() ? 0 : alarmsIn(index.data().toString());
        if (!id.isValid() && alarms == 0)
            return;
        option->text += QStringLiteral(" · ");
        option->text +=
            id.isValid() ? m_presence.shortText(id.toInt()) : ObjectsPanel::tr("new alarms: %1").arg(alarms);
        option->icon =
            id.isValid() ? m_presence.mark(id.toInt()).icon() : ObjectMark{Presence::Online, true, false}.icon();
        option->decorationSize = {16, 16};
        option->features |= QStyleOptionViewItem::HasDecoration;
    }

private:
    int alarmsIn(const QString& group) const
    {
        if (!m_isCounted) {
            m_alarms.clear();
            for (const qint32 id : m_presence.alarms())
                ++m_alarms[m_catalog.group(id)];
            m_isCounted = true;
        }
        return m_alarms.value(group);
    }

    const ObjectStates& m_presence;
    const ObjectCatalog& m_catalog;
    mutable QHash<QString, int> m_alarms; // of groups
    mutable bool m_isCounted = false;
};

} // namespace

ObjectsPanel::ObjectsPanel(KernelNotifyer& hub, const ObjectCatalog& catalog, QWidget* parent)
    : QWidget(parent),
      filterEdit(new QLineEdit),
      searchEdit(new QLineEdit),
      tree(new TreeObjCheckable),
      m_hub(hub),
      m_catalog(catalog),
      m_matches(new QLabel),
      m_empty(new QLabel)
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
    connect(searchEdit, &QLineEdit::returnPressed, this, &ObjectsPanel::findNext);
    searchRow->addWidget(searchEdit);
    const auto addButton = [&](const char* image, const QString& text, void (ObjectsPanel::*go)()) {
        auto* button = new QToolButton;
        button->setIcon(QIcon(QStringLiteral(":/pic/pic/") + QLatin1String(image)));
        button->setToolTip(text);
        button->setAccessibleName(text);
        connect(button, &QToolButton::clicked, this, go);
        searchRow->addWidget(button);
    };
    addButton("left2.png", tr("Previous"), &ObjectsPanel::findPrevious);
    addButton("right2.png", tr("Next"), &ObjectsPanel::findNext);
    layout->addLayout(searchRow);
    layout->addWidget(m_matches);
    m_matches->hide();
    layout->addWidget(tree);

    QTreeView* view = tree->getTreeView();
    view->setHeaderHidden(true);
    view->setUniformRowHeights(true);
    tree->setSearchAnywhere(true);
    connect(tree, &TreeObjCheckable::checkedObjectsChanged, this, &ObjectsPanel::readTicks);
    auto* over = new QVBoxLayout(view->viewport());
    over->addWidget(m_empty);
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setWordWrap(true);
    m_empty->setAttribute(Qt::WA_TransparentForMouseEvents);
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(view->model(), signal, this, &ObjectsPanel::tellEmpty);
    connect(filterEdit, &QLineEdit::textChanged, this, &ObjectsPanel::tellEmpty);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        const int id = tree->getCurrentObj();
        if (id == 0 || m_busy || static_cast<unsigned int>(id) == m_selected)
            return;
        m_hub.OnSelectIdObject(static_cast<unsigned int>(id));
    });
    connect(&hub, &KernelNotifyer::OnSelectIdObjectSignal, this, &ObjectsPanel::select);
    connect(&hub, &KernelNotifyer::OnObjectsReceivedSignal, this, &ObjectsPanel::addNewObjects);
    fill();
}

void ObjectsPanel::fill()
{
    m_ticked = m_catalog.ids();
    m_known = QSet<int>(m_ticked.cbegin(), m_ticked.cend());
    QStandardItemModel model;
    m_catalog.fillTreeModel(model);
    tree->setModelAndCheckedO(&model, &m_ticked);
    tree->getTreeView()->expandAll();
    tellEmpty();
}

void ObjectsPanel::addNewObjects()
{
    QMap<QString, QList<QStandardItem*>> added;
    const QList<qint32> ids = m_catalog.ids();
    for (const qint32 id : ids) {
        if (m_known.contains(id))
            continue;
        m_known.insert(id);
        auto* item = new QStandardItem(m_catalog.name(id));
        item->setData(id, ObjectCatalog::idRole);
        item->setCheckable(true);
        item->setCheckState(Qt::Checked);
        added[m_catalog.group(id)].append(item);
    }
    for (auto group = added.cbegin(); group != added.cend(); ++group)
        addToGroup(group.key(), group.value());
}

/// In one step, and behind those that are there: what is open, seen, searched and selected stays so.
void ObjectsPanel::addToGroup(const QString& group, const QList<QStandardItem*>& items)
{
    QStandardItemModel* model = ownModel();
    // Rows that are put in change no state, but a tick does: it sums up the group and the box.
    items.constLast()->setCheckState(Qt::Unchecked);
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->item(row)->text() == group) {
            model->item(row)->appendRows(items);
            items.constLast()->setCheckState(Qt::Checked);
            return;
        }
    }
    auto* parent = new QStandardItem(group);
    parent->setCheckable(true);
    parent->appendRows(items);
    model->appendRow(parent);
    items.constLast()->setCheckState(Qt::Checked);
    const auto* filter = qobject_cast<QAbstractProxyModel*>(tree->getTreeView()->model());
    tree->getTreeView()->expand(filter->mapFromSource(parent->index()));
}

void ObjectsPanel::setPresence(const ObjectStates& presence)
{
    QTreeView* view = tree->getTreeView();
    constexpr int columns = 30; // of letters, so that there is room for the states
    setMinimumWidth(std::max(fontMetrics().averageCharWidth() * columns, minimumSizeHint().width()));
    view->setItemDelegate(new StateDelegate(presence, m_catalog, view));
    connect(&presence, &ObjectStates::changed, view->viewport(), qOverload<>(&QWidget::update));
}

void ObjectsPanel::tellEmpty()
{
    const bool isEmpty = tree->getTreeView()->model()->rowCount() == 0;
    m_empty->setVisible(isEmpty);
    if (isEmpty)
        m_empty->setText(filterEdit->text().isEmpty() ? tr("No objects yet")
                                                      : tr("No name contains “%1”").arg(filterEdit->text()));
}

void ObjectsPanel::find()
{
    searchEdit->setFocus(Qt::ShortcutFocusReason);
    searchEdit->selectAll();
}

void ObjectsPanel::findNext()
{
    findWith(&TreeObjCheckable::go_right);
}

void ObjectsPanel::findPrevious()
{
    findWith(&TreeObjCheckable::go_left);
}

void ObjectsPanel::findWith(void (TreeObjCheckable::*go)())
{
    const QModelIndex before = tree->getTreeView()->currentIndex();
    (tree->*go)();
    if (tree->getTreeView()->currentIndex() == before) // it goes on from a match only
        search(searchEdit->text());
}

void ObjectsPanel::readTicks()
{
    tree->getCheckedObjs(&m_ticked);
    Q_EMIT tickedChanged(m_ticked);
}

void ObjectsPanel::tick(qint32 id)
{
    tree->changeStateObject(ownModel()->invisibleRootItem(), Qt::Checked, id);
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
    const int matches = tree->Get_index_size();
    m_matches->setText(matches == 0 ? tr("Nothing found") : tr("Matches: %1").arg(matches));
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
