#pragma once

#include <QCollator>
#include <QSortFilterProxyModel>

/** Sorts a table by a role with numbers and texts, these as people do ("Van 9" before "Van 10"). */
class NamesOrder : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit NamesOrder(int role, QObject* parent = nullptr);

    /** The order of texts: that of the user's language, whatever the case, numbers by their size. */
    static QCollator collator();

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    const QCollator m_collator;
};
