#pragma once

#include "track.h"

#include <QWidget>

class KernelNotifyer;
class ObjectCatalog;

QT_BEGIN_NAMESPACE
class QLabel;
class QPushButton;
class QTableWidget;
QT_END_NAMESPACE

/**
 * The report: a row for each object with its distance, time moving, top speed and alarms in a period.
 *
 * A selected row selects the object in the other views; a double click goes to the time of its top speed.
 */
class ReportTable : public QWidget
{
    Q_OBJECT

public:
    ReportTable(KernelNotifyer& kernel, const ObjectCatalog& catalog, QWidget* parent = nullptr);

    void showReport(const Tracks& tracks, qint64 from, qint64 to);

    /** The report as comma-separated values, with a line of titles. */
    QString csv() const;
    /** Writes csv() in UTF-8. @return what went wrong, or nothing */
    QString saveCsv(const QString& file) const;

    QTableWidget* const table;

Q_SIGNALS:
    void saved(const QString& file);

private:
    void askAndSave();
    void select(unsigned int id);

    KernelNotifyer& m_kernel;
    const ObjectCatalog& m_catalog;
    QLabel* m_period;
    unsigned int m_selected = 0;
};
