#pragma once

#include "namesorder.h"
#include "stretches.h"

#include <QAbstractTableModel>

class ObjectCatalog;

/** What a report is made of. */
struct ReportInput
{
    Tracks tracks;
    qint64 from = 0; ///< Unix seconds
    qint64 to = 0;
    ReportThresholds thresholds;
};

/**
 * The rows of a report: objects in the order of their names, each with its rows in the order of their times, and below
 * them the line of totals, if there is any row.
 */
class ReportModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Kind
    {
        Summary, ///< A row for each object.
        Trips,   ///< Trips, stops and silences.
        Speeding,
        Alarms,
        KindCount
    };
    enum Role
    {
        SortRole = Qt::UserRole, ///< The number behind the text; the text where there is none.
        FromRole,                ///< Unix seconds in which the row's stretch begins; the period's in the summary.
        ToRole,
        TopSpeedTimeRole, ///< Only in the summary.
        TotalRole,        ///< Whether it is the line of totals.
        IdRole = Qt::UserRole + 10
    };

    explicit ReportModel(const ObjectCatalog& catalog, QObject* parent = nullptr);

    void show(Kind kind, const ReportInput& input);
    static QString title(Kind kind);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    enum class Format
    {
        Text,
        Kilometres, ///< of metres
        Duration,   ///< of seconds
        Time,
        Number
    };
    struct Column
    {
        QString title;
        Format format;
    };
    struct Row
    {
        qint32 id = 0;
        qint64 from = 0;
        qint64 to = 0;
        qint64 topSpeedAt = 0;
        QVector<QVariant> values;
    };

    void showSummary(const QVector<qint32>& ids, const ReportInput& input);
    void showStretches(Kind kind, const QVector<qint32>& ids, const ReportInput& input);
    static QString textOf(const QVariant& value, Format format);

    const ObjectCatalog& m_catalog;
    QVector<Column> m_columns;
    QVector<Row> m_rows;
};

/** Sorts a report by a column; the line of totals stays below. */
class ReportOrder : public NamesOrder
{
    Q_OBJECT

public:
    explicit ReportOrder(QObject* parent = nullptr) : NamesOrder(ReportModel::SortRole, parent) {}

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};
