#pragma once

#include <QHash>
#include <QStandardItemModel>

#include <optional>
#include <vector>

namespace CheckableTree {

/** Whether an item has this very state, which is more than to have one that counts as it. */
bool hasState(const QStandardItem* item, int state);

/** An item of a Model that tells it of a new state even while the model's signals are blocked. */
class Item : public QStandardItem
{
public:
    /** A copy without children. */
    explicit Item(const QStandardItem& other) : QStandardItem(other) {}

    void setData(const QVariant& value, int role) override;
    void read(QDataStream& stream) override;

private:
    void forgetAgreement() const;
};

/** Not so for those of an application's own class, which are copied as they are, and those that it puts in itself. */
bool isItem(const QStandardItem* item);

/**
 * The copy that a checkable tree shows.
 *
 * Views and filter proxies go down by recursion, one call or more a level. So groups on the deepest level that these
 * survive tell them that they have no children; the items themselves keep theirs, at any depth.
 */
class Model : public QStandardItemModel
{
public:
    explicit Model(QObject* parent);
    ~Model() override;

    /** Half of what Qt survives with the 8 MB that the main thread's stack has. */
    static constexpr int deepestLevelShown = 10'000;

    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    bool setItemData(const QModelIndex& index, const QMap<int, QVariant>& roles) override;

    /** What clear() does, at any depth. */
    void removeAll();

    /**
     * The state of all children of a group, if they are known to agree: to find out means to look at each.
     *
     * @param child one of them, the state of which is looked at again
     */
    std::optional<int> agreement(const QStandardItem* group, const QStandardItem* child) const;

    /**
     * Remembers that all children of @p group have this very state, until one may have another.
     *
     * A missing state counts as 0, but is no agreement: handing 0 down writes it.
     *
     * @param others rows of those that are no Items, which are looked at again each time; rows that are put in later
     *        are among them too
     */
    void setAgreement(const QStandardItem* group, int state, std::vector<int> others);
    void forgetAgreement(const QStandardItem* group);

private:
    struct Agreement
    {
        int state;
        int rows;
        std::vector<int> others;
    };

    void takeApart();
    void noticeInserted(const QModelIndex& parent, int first, int last);

    QHash<const QStandardItem*, Agreement> m_agreements;
};

} // namespace CheckableTree
