#include "reporttable.h"

#include "csvtext.h"
#include "objectcatalog.h"

#include <Pardel/commonclass.h>
#include <Pardel/interfaces.h>

#include <QDateTime>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QTableWidget>

namespace {

constexpr int timeRole = Qt::UserRole + 1; // of the top speed

enum Column
{
    Object,
    Distance,
    Moving,
    TopSpeed,
    Alarms,
    ColumnCount
};

QString durationText(qint64 seconds)
{
    const QLatin1Char zero('0');
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(seconds / 60 % 60, 2, 10, zero)
        .arg(seconds % 60, 2, 10, zero);
}

QString timeText(qint64 time)
{
    return QDateTime::fromSecsSinceEpoch(time).toString(QStringLiteral("yyyy-MM-dd hh:mm"));
}

} // namespace

ReportTable::ReportTable(KernelNotifyer& kernel, const ObjectCatalog& catalog, QWidget* parent)
    : QWidget(parent),
      table(new QTableWidget(0, ColumnCount)),
      m_kernel(kernel),
      m_catalog(catalog),
      m_period(new QLabel)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    auto* header = new QHBoxLayout;
    header->addWidget(m_period, 1);
    auto* save = new QPushButton(tr("Save as CSV…"));
    connect(save, &QPushButton::clicked, this, &ReportTable::askAndSave);
    header->addWidget(save);
    layout->addLayout(header);

    table->setHorizontalHeaderLabels(
        {tr("Object"), tr("Distance, km"), tr("Moving, h:mm:ss"), tr("Top speed, km/h"), tr("Alarms")});
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->verticalHeader()->hide();
    Commonclass().Set_Propeties_for_TableView(table, {Object, Distance, Moving, TopSpeed, Alarms});
    connect(table, &QTableWidget::currentCellChanged, this, [this](int row) {
        const QTableWidgetItem* item = table->item(row, Object);
        const unsigned int id = item ? item->data(ObjectCatalog::idRole).toUInt() : 0;
        if (item && id != m_selected)
            m_kernel.OnSelectIdObject(id);
    });
    connect(table, &QTableWidget::cellDoubleClicked, this,
            [this](int row) { m_kernel.OnTimeSelectedByReport(table->item(row, Object)->data(timeRole).toUInt()); });
    connect(&kernel, &KernelNotifyer::OnSelectIdObjectSignal, this, &ReportTable::select);
    layout->addWidget(table);
}

void ReportTable::showReport(const Tracks& tracks, qint64 from, qint64 to)
{
    m_period->setText(tr("%1 to %2").arg(timeText(from), timeText(to)));
    table->clearSelection();
    table->setRowCount(0);
    table->setRowCount(static_cast<int>(tracks.size()));
    int row = 0;
    for (const auto& [id, track] : tracks) {
        const TrackSummary summary = TrackSummary::of(track);
        const auto put = [&](int column, const QString& text) {
            auto* item = new QTableWidgetItem(text);
            item->setTextAlignment(int(Qt::AlignVCenter) | (column == Object ? Qt::AlignLeft : Qt::AlignRight));
            table->setItem(row, column, item);
            return item;
        };
        QTableWidgetItem* object = put(Object, m_catalog.name(id));
        object->setData(ObjectCatalog::idRole, id);
        object->setData(timeRole, summary.topSpeedAt);
        object->setData(Qt::DecorationRole, ObjectCatalog::color(id));
        put(Distance, QString::number(summary.distance / 1000, 'f', 1));
        put(Moving, durationText(summary.moving));
        put(TopSpeed, QString::number(summary.topSpeed));
        put(Alarms, QString::number(summary.alarms));
        ++row;
    }
}

QString ReportTable::csv() const
{
    QStringList titles;
    for (int column = 0; column < ColumnCount; ++column)
        titles += table->horizontalHeaderItem(column)->text();
    QString text = csvLine(titles);
    for (int row = 0; row < table->rowCount(); ++row) {
        QStringList fields;
        for (int column = 0; column < ColumnCount; ++column)
            fields += table->item(row, column)->text();
        text += csvLine(fields);
    }
    return text;
}

QString ReportTable::saveCsv(const QString& file) const
{
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return out.errorString();
    out.write(csv().toUtf8());
    return out.commit() ? QString() : out.errorString();
}

void ReportTable::askAndSave()
{
    const QString file = QFileDialog::getSaveFileName(this, tr("Save the report"), tr("report.csv"),
                                                      tr("Comma-separated values (*.csv)"));
    if (file.isEmpty())
        return;
    const QString error = saveCsv(file);
    if (error.isEmpty())
        Q_EMIT saved(file);
    else
        QMessageBox::warning(this, tr("Save the report"), error);
}

void ReportTable::select(unsigned int id)
{
    m_selected = id;
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, Object)->data(ObjectCatalog::idRole).toUInt() == id)
            table->setCurrentCell(row, Object);
    }
}
