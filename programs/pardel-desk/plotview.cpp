#include "plotview.h"

#include "desktime.h"
#include "objectcatalog.h"

#include <Pardel/interfaces.h>

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalBlocker>

#include <qwt_date_scale_draw.h>
#include <qwt_date_scale_engine.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_magnifier.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_panner.h>
#include <qwt_text.h>

#include <algorithm>

namespace {

constexpr double millisecond = 1000; // the axis counts them
// Okabe and Ito's, which colour-blind people tell apart, the lighter blue on dark.
constexpr QRgb blue = 0xFF0072B2;
constexpr QRgb skyBlue = 0xFF56B4E9;
constexpr QRgb vermillion = 0xFFD55E00;

} // namespace

PlotView::PlotView(KernelNotifyer& kernel, const ObjectCatalog& catalog, const QSqlDatabase& db, QWidget* parent)
    : QWidget(parent),
      object(new QComboBox),
      value(new QComboBox),
      plot(new QwtPlot),
      m_kernel(kernel),
      m_catalog(catalog),
      m_db(db),
      m_message(new QLabel),
      m_cursor(std::make_unique<QwtPlotMarker>())
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    auto* header = new QHBoxLayout;
    const auto add = [&](QComboBox* box, const QString& text) {
        auto* label = new QLabel(text);
        label->setBuddy(box);
        header->addWidget(label);
        header->addWidget(box, 1);
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon); // whatever names there are
        box->setMinimumContentsLength(4);
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &PlotView::reload);
    };
    const QVector<qint16> types = Series::typesOf(db);
    for (const qint16 type : types)
        value->addItem(Series::title(type), type);
    add(object, tr("&Object:"));
    add(value, tr("&Value:"));
    m_message->setWordWrap(true);
    header->addWidget(m_message);
    auto* all = new QPushButton(tr("&All"));
    all->setToolTip(tr("The whole period"));
    connect(all, &QPushButton::clicked, this, &PlotView::showAll);
    header->addWidget(all);
    auto* save = new QPushButton(tr("P&icture…"));
    connect(save, &QPushButton::clicked, this, &PlotView::askAndSave);
    header->addWidget(save);
    for (QPushButton* button : {all, save}) // styles make them wider than a small screen has room for
        button->setMaximumWidth(fontMetrics().horizontalAdvance(button->text()) + 20);
    layout->addLayout(header);
    layout->addWidget(plot, 1);
    setUpPlot();
    setUpZoom();
    applyColors();

    connect(&kernel, &KernelNotifyer::OnTimeSelectedByReportSignal, this, [this](unsigned int time) { goTo(time); });
    connect(&kernel, &KernelNotifyer::OnSelectIdObjectSignal, this, [this](unsigned int id) {
        const int index = object->findData(static_cast<qint32>(id));
        if (index >= 0)
            object->setCurrentIndex(index);
    });
    connect(object, qOverload<int>(&QComboBox::activated), this,
            [this] { m_kernel.OnSelectIdObject(object->currentData().toUInt()); });
}

PlotView::~PlotView()
{
    m_cursor->detach(); // the plot would delete what is attached to it
    for (const auto& curve : m_curves)
        curve->detach();
}

void PlotView::setUpPlot()
{
    plot->setMinimumHeight(100);
    auto* grid = new QwtPlotGrid;
    grid->setMajorPen(QPen(Qt::gray, 0, Qt::DotLine));
    grid->attach(plot); // belongs to it
    m_cursor->setLineStyle(QwtPlotMarker::VLine);
    m_cursor->setLinePen(QPen(QColor(vermillion), 2));
    m_cursor->attach(plot);
}

void PlotView::setUpZoom()
{
    auto* magnifier = new QwtPlotMagnifier(plot->canvas());
    magnifier->setAxisEnabled(QwtPlot::yLeft, false);
    magnifier->setMouseButton(Qt::NoButton);
    auto* panner = new QwtPlotPanner(plot->canvas());
    panner->setAxisEnabled(QwtPlot::yLeft, false);
    plot->canvas()->installEventFilter(this);
}

void PlotView::applyColors()
{
    plot->setCanvasBackground(palette().base());
    const bool isDark = palette().color(QPalette::Base).lightness() < 128;
    for (const auto& curve : m_curves)
        curve->setPen(QPen(QColor(isDark ? skyBlue : blue), 1.5));
}

void PlotView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange) {
        applyColors();
        plot->replot();
    }
    QWidget::changeEvent(event);
}

void PlotView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_isStale)
        reload();
}

bool PlotView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == plot->canvas() && event->type() == QEvent::MouseButtonDblClick)
        showAll();
    if (watched == plot->canvas() && event->type() == QEvent::MouseButtonPress) {
        const auto& press = static_cast<const QMouseEvent&>(*event);
        const auto time = static_cast<qint64>(plot->invTransform(QwtPlot::xBottom, press.pos().x()) / millisecond);
        if (press.button() == Qt::LeftButton && time >= m_from && time <= m_to)
            m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(time));
    }
    return QWidget::eventFilter(watched, event);
}

void PlotView::setPeriod(const QList<int>& ids, qint64 from, qint64 to)
{
    m_from = from;
    m_to = to;
    {
        const QSignalBlocker blocker(object);
        const QVariant before = object->currentData();
        object->clear();
        for (const int id : ids)
            object->addItem(m_catalog.name(id), id);
        object->setCurrentIndex(std::max(0, object->findData(before)));
    }
    auto* draw = new QwtDateScaleDraw(DeskTime::base());
    draw->setDateFormat(QwtDate::Second, QStringLiteral("hh:mm:ss"));
    draw->setDateFormat(QwtDate::Minute, QStringLiteral("hh:mm"));
    draw->setDateFormat(QwtDate::Hour, QStringLiteral("MM-dd\nhh:mm"));
    draw->setDateFormat(QwtDate::Day, QStringLiteral("yyyy-MM-dd"));
    plot->setAxisScaleDraw(QwtPlot::xBottom, draw);
    plot->setAxisScaleEngine(QwtPlot::xBottom, new QwtDateScaleEngine(DeskTime::base()));
    m_cursor->setXValue(static_cast<double>(from) * millisecond);
    reload();
}

void PlotView::reload()
{
    m_isStale = !isVisible();
    if (m_isStale)
        return;
    for (const auto& curve : m_curves)
        curve->detach();
    m_curves.clear();
    const auto type = static_cast<qint16>(value->currentData().toInt());
    Series series;
    if (object->currentIndex() >= 0)
        series = Series::read(m_db, object->currentData().toInt(), type, m_from, m_to);
    for (QVector<QPointF>& piece : series.pieces) {
        for (QPointF& point : piece)
            point.setX(point.x() * millisecond);
        auto curve = std::make_unique<QwtPlotCurve>();
        curve->setRenderHint(QwtPlotItem::RenderAntialiased);
        curve->setPaintAttribute(QwtPlotCurve::FilterPoints);
        curve->setSamples(piece);
        curve->attach(plot);
        m_curves.push_back(std::move(curve));
    }
    applyColors();
    QwtText title(Series::title(type));
    title.setFont(font());
    plot->setAxisTitle(QwtPlot::yLeft, title);
    m_message->setText(!series.error.isEmpty()   ? tr("The archive cannot be read: %1").arg(series.error)
                       : series.isCut            ? tr("The first %1 points").arg(Series::mostPoints)
                       : series.pieces.isEmpty() ? tr("No values in this period")
                                                 : DeskTime::zone(m_from));
    showAll();
}

int PlotView::pointCount() const
{
    std::size_t count = 0;
    for (const auto& curve : m_curves)
        count += curve->dataSize();
    return static_cast<int>(count);
}

void PlotView::showAll()
{
    plot->setAxisScale(QwtPlot::xBottom, static_cast<double>(m_from) * millisecond,
                       static_cast<double>(m_to) * millisecond);
    plot->setAxisAutoScale(QwtPlot::yLeft);
    plot->replot();
}

void PlotView::goTo(qint64 time)
{
    m_cursor->setXValue(static_cast<double>(time) * millisecond);
    if (isVisible())
        plot->replot();
}

QString PlotView::savePicture(const QString& file) const
{
    return plot->grab().save(file) ? QString() : tr("The file %1 cannot be written.").arg(file);
}

void PlotView::askAndSave()
{
    QString file =
        QFileDialog::getSaveFileName(this, tr("Save the plot"), tr("plot.png"), tr("Pictures (*.png *.jpg *.bmp)"));
    if (file.isEmpty())
        return;
    if (QFileInfo(file).suffix().isEmpty())
        file += QStringLiteral(".png");
    const QString error = savePicture(file);
    if (error.isEmpty())
        Q_EMIT saved(file);
    else
        QMessageBox::warning(this, tr("Save the plot"), error);
}
