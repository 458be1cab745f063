#include "namesorder.h"

#include <QLocale>

NamesOrder::NamesOrder(int role, QObject* parent) : QSortFilterProxyModel(parent), m_collator(collator())
{
    setSortRole(role);
}

QCollator NamesOrder::collator()
{
    // The C locale compares bytes, and knows no numbers.
    QCollator order(QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale());
    order.setNumericMode(true);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    return order;
}

bool NamesOrder::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QVariant leftValue = left.data(sortRole());
    const QVariant rightValue = right.data(sortRole());
    if (leftValue.userType() == QMetaType::QString)
        return m_collator.compare(leftValue.toString(), rightValue.toString()) < 0;
    return leftValue.toDouble() < rightValue.toDouble();
}
