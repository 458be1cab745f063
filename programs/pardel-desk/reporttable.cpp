#include "reporttable.h"

#include "csvtext.h"
#include "desktime.h"
#include "objectcatalog.h"
#include "windowmemory.h"

#include <Pardel/interfaces.h>

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>
#include <QTextDocument>

namespace {

constexpr int paperPoints = 7; // so that a line of nine columns fits on A4, turned

QString columnsName(ReportModel::Kind kind)
{
    return QStringLiteral("Report-%1").arg(kind);
}

/// Spreadsheets compute what begins so, also where it is the name that somebody gave to an object.
QString asText(const QString& text)
{
    return !text.isEmpty() && QStringLiteral("=+-@").contains(text.at(0)) ? QLatin1Char('\'') + text : text;
}

} // namespace

ReportTable::ReportTable(KernelNotifyer& kernel, const ObjectCatalog& catalog, QSettings& ini, QWidget* parent)
    : QWidget(parent),
      kind(new QComboBox),
      table(new QTableView),
      m_kernel(kernel),
      m_model(catalog),
      m_period(new QLabel),
      m_ini(ini)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    auto* header = new QHBoxLayout;
    for (int each = 0; each < ReportModel::KindCount; ++each)
        kind->addItem(ReportModel::title(static_cast<ReportModel::Kind>(each)), each);
    connect(kind, qOverload<int>(&QComboBox::currentIndexChanged), this, &ReportTable::showKind);
    auto* kindLabel = new QLabel(tr("Re&port:"));
    kindLabel->setBuddy(kind);
    header->addWidget(kindLabel);
    header->addWidget(kind);
    m_period->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_period->setWordWrap(true); // in a narrow window it takes more lines
    m_period->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000-00-00 00:00 – ")));
    header->addWidget(m_period, 1);
    addSaving(*header);
    layout->addLayout(header);

    m_order.setSourceModel(&m_model);
    table->setModel(&m_order);
    table->setSortingEnabled(true);
    table->sortByColumn(0, Qt::AscendingOrder);
    table->setTabKeyNavigation(false);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setSectionsMovable(true);
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& current) {
        const unsigned int id = current.data(ReportModel::IdRole).toUInt();
        if (current.data(ReportModel::IdRole).isValid() && id != m_selected)
            m_kernel.OnSelectIdObject(id);
    });
    connect(table, &QTableView::activated, this, &ReportTable::choose); // a double click or Enter
    connect(&kernel, &KernelNotifyer::OnSelectIdObjectSignal, this, &ReportTable::select);
    layout->addWidget(table);
    const QHeaderView* columns = table->horizontalHeader();
    connect(columns, &QHeaderView::sectionMoved, this, [this] { m_isArranged = true; });
    connect(columns, &QHeaderView::sectionResized, this, [this, columns](int column) {
        if (columns->visualIndex(column) != columns->count() - 1) // that one fills what the window leaves
            m_isArranged = true;
    });
}

ReportTable::~ReportTable()
{
    keepColumns();
}

/// One for all, as the period needs the room.
void ReportTable::addSaving(QLayout& row)
{
    auto* button = new QPushButton(tr("Sa&ve"));
    auto* ways = new QMenu(button);
    ways->addAction(tr("&CSV…"), this, [this] {
        askAndSave(tr("Comma-separated values (*.csv)"), tr("report.csv"), &ReportTable::saveCsv);
    });
    ways->addAction(tr("P&DF…"), this,
                    [this] { askAndSave(tr("PDF (*.pdf)"), tr("report.pdf"), &ReportTable::savePdf); });
    ways->addAction(tr("Pr&int…"), this, &ReportTable::print)->setObjectName(QStringLiteral("print"));
    button->setMenu(ways);
    button->setToolTip(tr("Save the report"));
    row.addWidget(button);
}

void ReportTable::showReport(const ReportInput& input)
{
    m_input = input;
    m_period->setText(DeskTime::period(input.from, input.to));
    m_period->setToolTip(m_period->text());
    showKind();
}

void ReportTable::showKind()
{
    keepColumns();
    m_shownKind = static_cast<ReportModel::Kind>(kind->currentData().toInt());
    m_model.show(m_shownKind, m_input);
    if (!table->horizontalHeader()->restoreState(WindowMemory::stored(m_ini, columnsName(m_shownKind))))
        table->resizeColumnsToContents();
    m_isArranged = false;
    select(m_selected);
}

void ReportTable::keepColumns()
{
    if (m_isArranged)
        WindowMemory::store(m_ini, columnsName(m_shownKind), table->horizontalHeader()->saveState());
}

void ReportTable::choose(const QModelIndex& index)
{
    if (!index.data(ReportModel::IdRole).isValid())
        return;
    const qint64 from = index.data(ReportModel::FromRole).toLongLong();
    const qint64 topSpeedAt = index.data(ReportModel::TopSpeedTimeRole).toLongLong();
    Q_EMIT stretchChosen(index.data(ReportModel::IdRole).toInt(), from, index.data(ReportModel::ToRole).toLongLong(),
                         topSpeedAt > 0 ? topSpeedAt : from);
}

QString ReportTable::csv() const
{
    QString text = csvLine({tr("Report"), kind->currentText()});
    text += csvLine({tr("From"), DeskTime::text(m_input.from)});
    text += csvLine({tr("To"), DeskTime::text(m_input.to)});
    text += csvLine({tr("Zone"), DeskTime::zone(m_input.from)});
    text += csvLine({});
    QStringList titles{tr("Id")};
    for (int column = 0; column < m_order.columnCount(); ++column)
        titles += m_order.headerData(column, Qt::Horizontal).toString();
    text += csvLine(titles);
    for (int row = 0; row < m_order.rowCount(); ++row) {
        const QVariant id = m_order.index(row, 0).data(ReportModel::IdRole);
        QStringList fields{id.isValid() ? QString::number(id.toUInt()) : QString()};
        for (int column = 0; column < m_order.columnCount(); ++column)
            fields += column == 0 ? asText(m_order.index(row, column).data().toString())
                                  : m_order.index(row, column).data().toString();
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

QString ReportTable::html() const
{
    QString text =
        QStringLiteral("<h2>%1</h2><p>%2</p><table width='100%' border='1' cellspacing='0' cellpadding='3' "
                       "style='border-collapse:collapse; white-space:nowrap'><thead><tr>")
            .arg(kind->currentText().toHtmlEscaped(), DeskTime::period(m_input.from, m_input.to).toHtmlEscaped());
    for (int column = 0; column < m_order.columnCount(); ++column)
        text +=
            QStringLiteral("<th>%1</th>").arg(m_order.headerData(column, Qt::Horizontal).toString().toHtmlEscaped());
    text += QLatin1String("</tr></thead>"); // repeated on each page
    for (int row = 0; row < m_order.rowCount(); ++row) {
        const bool isTotal = m_order.index(row, 0).data(ReportModel::TotalRole).toBool();
        text += QLatin1String("<tr>");
        for (int column = 0; column < m_order.columnCount(); ++column) {
            const QModelIndex index = m_order.index(row, column);
            const bool right = index.data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
            text += QStringLiteral("<%1 align='%2'>%3</%1>")
                        .arg(isTotal ? QStringLiteral("th") : QStringLiteral("td"),
                             right ? QStringLiteral("right") : QStringLiteral("left"),
                             index.data().toString().toHtmlEscaped());
        }
        text += QLatin1String("</tr>");
    }
    return text + QLatin1String("</table>");
}

void ReportTable::printOn(QPagedPaintDevice& paper) const
{
    QTextDocument document;
    document.setDefaultFont(QFont(font().family(), paperPoints));
    document.setHtml(html());
    document.print(&paper); // with margins and page numbers of its own
}

QString ReportTable::savePdf(const QString& file) const
{
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return out.errorString();
    {
        QPdfWriter paper(&out);
        paper.setPageSize(QPageSize(QPageSize::A4));
        paper.setPageOrientation(QPageLayout::Landscape);
        paper.setTitle(kind->currentText());
        printOn(paper);
    }
    return out.commit() ? QString() : out.errorString();
}

void ReportTable::print()
{
    QPrinter printer;
    printer.setPageOrientation(QPageLayout::Landscape);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        printOn(printer);
}

void ReportTable::askAndSave(const QString& filter, const QString& suggested,
                             QString (ReportTable::*save)(const QString&) const)
{
    QString file = QFileDialog::getSaveFileName(this, tr("Save the report"), suggested, filter);
    if (file.isEmpty())
        return;
    if (QFileInfo(file).suffix().isEmpty())
        file += QLatin1Char('.') + QFileInfo(suggested).suffix();
    const QString error = (this->*save)(file);
    if (error.isEmpty())
        Q_EMIT saved(file);
    else
        QMessageBox::warning(this, tr("Save the report"), error);
}

void ReportTable::select(unsigned int id)
{
    m_selected = id;
    const auto isOf = [id](const QModelIndex& index) {
        return index.data(ReportModel::IdRole).isValid() && index.data(ReportModel::IdRole).toUInt() == id;
    };
    if (isOf(table->currentIndex())) // of an object's rows the one that was chosen
        return;
    for (int row = 0; row < m_order.rowCount(); ++row) {
        if (isOf(m_order.index(row, 0))) {
            table->setCurrentIndex(m_order.index(row, 0));
            return;
        }
    }
}
