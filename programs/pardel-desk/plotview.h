#pragma once

#include "series.h"

#include <QWidget>

#include <memory>
#include <vector>

class KernelNotifyer;
class ObjectCatalog;
class QwtPlot;
class QwtPlotCurve;
class QwtPlotMarker;

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
QT_END_NAMESPACE

/**
 * A value of an object over the period of a report: speed, supply or any sensor of the archive. A line marks the time
 * of the player; a click takes the player there. The wheel zooms, dragging moves, a double click shows the whole
 * period.
 *
 * It reads the archive only while it is visible.
 */
class PlotView : public QWidget
{
    Q_OBJECT

public:
    PlotView(KernelNotifyer& kernel, const ObjectCatalog& catalog, const QSqlDatabase& db, QWidget* parent = nullptr);
    ~PlotView() override;

    void setPeriod(const QList<int>& ids, qint64 from, qint64 to);
    /** Writes what is shown as a picture. @return what went wrong, or nothing */
    QString savePicture(const QString& file) const;

    QComboBox* const object; ///< Its data are the objects' numbers.
    QComboBox* const value;  ///< Its data are of Series::typesOf.
    QwtPlot* const plot;
    /** How many points are shown. */
    int pointCount() const;

Q_SIGNALS:
    void saved(const QString& file);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setUpPlot();
    void setUpZoom();
    void applyColors();
    void reload();
    void showAll();
    void goTo(qint64 time);
    void askAndSave();

    KernelNotifyer& m_kernel;
    const ObjectCatalog& m_catalog;
    QSqlDatabase m_db;
    QLabel* m_message;
    std::unique_ptr<QwtPlotMarker> m_cursor;
    std::vector<std::unique_ptr<QwtPlotCurve>> m_curves;
    qint64 m_from = 0;
    qint64 m_to = 0;
    bool m_isStale = false; // to be read when it is seen
};
