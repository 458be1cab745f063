#include "reportmodel.h"

#include "desktime.h"
#include "objectcatalog.h"

#include <QFont>

#include <algorithm>
#include <cmath>

namespace {

QString placeText(const TrackPoint& point)
{
    return QStringLiteral("%1, %2").arg(point.latitude * 1e-7, 0, 'f', 5).arg(point.longitude * 1e-7, 0, 'f', 5);
}

QString kindText(Stretch::Kind kind)
{
    switch (kind) {
    case Stretch::Trip: return ReportModel::tr("Trip");
    case Stretch::Stop: return ReportModel::tr("Stop");
    case Stretch::Silence: return ReportModel::tr("No data");
    case Stretch::Speeding: return ReportModel::tr("Speeding");
    case Stretch::Alarm: return ReportModel::tr("Alarm");
    }
    return {};
}

QVector<Stretch> stretchesOf(ReportModel::Kind kind, const Track& track, const ReportThresholds& thresholds)
{
    switch (kind) {
    case ReportModel::Trips: return tripsAndStops(track, thresholds);
    case ReportModel::Speeding: return speedings(track, thresholds);
    default: return alarmsOf(track);
    }
}

int countOf(const QVector<Stretch>& stretches, Stretch::Kind kind)
{
    return static_cast<int>(std::count_if(stretches.cbegin(), stretches.cend(),
                                          [kind](const Stretch& stretch) { return stretch.kind == kind; }));
}

} // namespace

ReportModel::ReportModel(const ObjectCatalog& catalog, QObject* parent)
    : QAbstractTableModel(parent), m_catalog(catalog)
{}

QString ReportModel::title(Kind kind)
{
    switch (kind) {
    case Summary: return tr("Summary");
    case Trips: return tr("Trips and stops");
    case Speeding: return tr("Speeding");
    case Alarms: return tr("Alarms");
    default: return {};
    }
}

void ReportModel::show(Kind kind, const ReportInput& input)
{
    beginResetModel();
    m_rows.clear();
    QVector<qint32> ids;
    for (const auto& track : input.tracks)
        ids.append(track.first);
    const QCollator order = NamesOrder::collator();
    std::stable_sort(ids.begin(), ids.end(), [&](qint32 left, qint32 right) {
        return order.compare(m_catalog.name(left), m_catalog.name(right)) < 0;
    });
    if (kind == Summary)
        showSummary(ids, input);
    else
        showStretches(kind, ids, input);
    endResetModel();
}

void ReportModel::showSummary(const QVector<qint32>& ids, const ReportInput& input)
{
    m_columns = {{tr("Object"), Format::Text},      {tr("Distance, km"), Format::Kilometres},
                 {tr("Moving"), Format::Duration},  {tr("Stops"), Format::Number},
                 {tr("Stopped"), Format::Duration}, {tr("Top speed, km/h"), Format::Number},
                 {tr("Speeding"), Format::Number},  {tr("Alarms"), Format::Number}};
    double distance = 0;
    qint64 moving = 0;
    qint64 stopped = 0;
    int stops = 0;
    int top = 0;
    int speeding = 0;
    int alarms = 0;
    for (const qint32 id : ids) {
        const Track& track = input.tracks.at(id);
        const TrackSummary summary = TrackSummary::of(track);
        const QVector<Stretch> stretches = tripsAndStops(track, input.thresholds);
        qint64 stood = 0;
        for (const Stretch& stretch : stretches)
            stood += stretch.kind == Stretch::Stop ? stretch.duration() : 0;
        const int stopCount = countOf(stretches, Stretch::Stop);
        const auto above = static_cast<int>(speedings(track, input.thresholds).size());
        m_rows.append({id,
                       input.from,
                       input.to,
                       summary.topSpeedAt,
                       {m_catalog.name(id), summary.distance, summary.moving, stopCount, stood, summary.topSpeed, above,
                        summary.alarms}});
        distance += summary.distance;
        moving += summary.moving;
        stopped += stood;
        stops += stopCount;
        top = std::max(top, summary.topSpeed);
        speeding += above;
        alarms += summary.alarms;
    }
    if (!m_rows.isEmpty())
        m_rows.append(
            {0, input.from, input.to, 0, {tr("Total"), distance, moving, stops, stopped, top, speeding, alarms}});
}

void ReportModel::showStretches(Kind kind, const QVector<qint32>& ids, const ReportInput& input)
{
    m_columns = {{tr("Object"), Format::Text},
                 {tr("What"), Format::Text},
                 {tr("From"), Format::Time},
                 {tr("To"), Format::Time},
                 {tr("Duration"), Format::Duration},
                 {tr("Distance, km"), Format::Kilometres},
                 {tr("Top speed, km/h"), Format::Number},
                 {tr("Where from"), Format::Text},
                 {tr("Where to"), Format::Text}};
    QVector<Stretch> all;
    double distance = 0;
    qint64 duration = 0;
    int top = 0;
    for (const qint32 id : ids) {
        const QVector<Stretch> stretches = stretchesOf(kind, input.tracks.at(id), input.thresholds);
        for (const Stretch& stretch : stretches) {
            m_rows.append(
                {id,
                 stretch.begin.time,
                 stretch.end.time,
                 0,
                 {m_catalog.name(id), kindText(stretch.kind), stretch.begin.time, stretch.end.time, stretch.duration(),
                  stretch.distance, stretch.topSpeed, placeText(stretch.begin), placeText(stretch.end)}});
            all.append(stretch);
            distance += stretch.distance;
            duration += stretch.duration();
            top = std::max(top, stretch.topSpeed);
        }
    }
    if (all.isEmpty())
        return;
    const QString what =
        kind == Trips ? tr("Trips: %1, stops: %2").arg(countOf(all, Stretch::Trip)).arg(countOf(all, Stretch::Stop))
                      : QString::number(all.size());
    m_rows.append({0,
                   input.from,
                   input.to,
                   0,
                   {tr("Total"), what, QVariant(), QVariant(), duration, distance, top, QVariant(), QVariant()}});
}

QString ReportModel::textOf(const QVariant& value, Format format)
{
    if (!value.isValid())
        return {};
    switch (format) {
    case Format::Kilometres: return QString::number(value.toDouble() / 1000, 'f', 1);
    case Format::Duration: {
        const qint64 seconds = value.toLongLong();
        const QLatin1Char zero('0');
        return QStringLiteral("%1:%2:%3")
            .arg(seconds / 3600)
            .arg(seconds / 60 % 60, 2, 10, zero)
            .arg(seconds % 60, 2, 10, zero);
    }
    case Format::Time: return DeskTime::text(value.toLongLong());
    default: return value.toString();
    }
}

int ReportModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ReportModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant ReportModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row& row = m_rows.at(index.row());
    const Format format = m_columns.at(index.column()).format;
    const QVariant& value = row.values.at(index.column());
    const bool isTotal = index.row() == m_rows.size() - 1;
    switch (role) {
    case Qt::DisplayRole: return textOf(value, format);
    case Qt::DecorationRole:
        return index.column() == 0 && !isTotal ? QVariant(ObjectCatalog::color(row.id)) : QVariant();
    case Qt::FontRole: {
        QFont bold;
        bold.setBold(true);
        return isTotal ? QVariant(bold) : QVariant();
    }
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter |
                   (format == Format::Text || format == Format::Time ? Qt::AlignLeft : Qt::AlignRight));
    case SortRole: return value;
    case FromRole: return row.from;
    case ToRole: return row.to;
    case TopSpeedTimeRole: return row.topSpeedAt;
    case TotalRole: return isTotal;
    case IdRole: return isTotal ? QVariant() : QVariant(row.id);
    default: return {};
    }
}

QVariant ReportModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= m_columns.size())
        return {};
    return m_columns.at(section).title;
}

bool ReportOrder::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (left.data(ReportModel::TotalRole).toBool() || right.data(ReportModel::TotalRole).toBool())
        return right.data(ReportModel::TotalRole).toBool() == (sortOrder() == Qt::AscendingOrder);
    return NamesOrder::lessThan(left, right);
}
