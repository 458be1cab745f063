#pragma once

#include "reportmodel.h"

#include <QWidget>

class KernelNotifyer;

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
class QPagedPaintDevice;
class QSettings;
class QTableView;
QT_END_NAMESPACE

/**
 * The report of a period: a table for each of ReportModel's kinds, to be sorted, saved and printed.
 *
 * A selected row selects the object in the other views, and back; a new report goes to the object that is selected. A
 * double click or Enter chooses the row's stretch, in the summary the whole period and the time of the top speed.
 */
class ReportTable : public QWidget
{
    Q_OBJECT

public:
    /**
     * All have to outlive this. How the user has arranged the columns of each kind is kept in the group "Window" of
     * @p ini; those that nobody has touched are as wide as what stands in them.
     */
    ReportTable(KernelNotifyer& kernel, const ObjectCatalog& catalog, QSettings& ini, QWidget* parent = nullptr);
    ~ReportTable() override;

    void showReport(const ReportInput& input);
    const ReportInput& shown() const { return m_input; }

    /**
     * As it is shown, as comma-separated values: lines for the report's name, begin, end and zone, an empty one, the
     * titles with "Id" before them, the rows. What a spreadsheet would take for a formula is marked as a text by a '.
     */
    QString csv() const;
    /** Writes csv() in UTF-8. @return what went wrong, or nothing */
    QString saveCsv(const QString& file) const;
    /** Writes the table as it is shown. @return as saveCsv() */
    QString savePdf(const QString& file) const;

    QComboBox* const kind; ///< Its data are of ReportModel::Kind.
    QTableView* const table;

Q_SIGNALS:
    void saved(const QString& file);
    /** @param id an object of the report; @param now where to go in the stretch; all in Unix seconds */
    void stretchChosen(qint32 id, qint64 from, qint64 to, qint64 now);

private:
    void addSaving(QLayout& row);
    void showKind();
    void keepColumns();
    void choose(const QModelIndex& index);
    QString html() const;
    void printOn(QPagedPaintDevice& paper) const;
    void askAndSave(const QString& filter, const QString& suggested,
                    QString (ReportTable::*save)(const QString&) const);
    void print();
    void select(unsigned int id);

    KernelNotifyer& m_kernel;
    ReportModel m_model;
    ReportOrder m_order;
    ReportInput m_input;
    QLabel* m_period;
    QSettings& m_ini;
    ReportModel::Kind m_shownKind = ReportModel::Summary;
    bool m_isArranged = false; // by the user, and not kept yet
    unsigned int m_selected = 0;
};
