#include "perioddialog.h"

#include "deskcolors.h"
#include "desktime.h"
#include "period.h"

#include <Pardel/dialogobjsfromto.h>
#include <Pardel/treeobjcheckable.h>

#include <QAbstractItemModel>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

constexpr int rowBelowDates = 2;
constexpr int presetsInRow = 3;

} // namespace

PeriodDialog::PeriodDialog(DialogObjsFromTo& dialog, QObject* parent)
    : QObject(parent), m_dialog(dialog), m_ok(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok))
{
    const QString format = QStringLiteral("yyyy-MM-dd hh:mm");
    for (QDateTimeEdit* date : {dialog.dateFrom, dialog.dateTo}) {
        date->setDisplayFormat(format);
        connect(date, &QDateTimeEdit::dateTimeChanged, this, &PeriodDialog::check);
    }
    addPresets();
    showZone();
    auto* find = new QShortcut(QKeySequence::Find, &dialog);
    connect(find, &QShortcut::activated, dialog.searchEdit, [&dialog] {
        dialog.searchEdit->setFocus(Qt::ShortcutFocusReason);
        dialog.searchEdit->selectAll();
    });
    dialog.searchEdit->setToolTip(
        tr("%1 (%2)").arg(dialog.searchEdit->toolTip(), find->key().toString(QKeySequence::NativeText)));

    m_check.setSingleShot(true);
    connect(&m_check, &QTimer::timeout, this, &PeriodDialog::check);
    connect(dialog.tree->getTreeView()->model(), &QAbstractItemModel::dataChanged, &m_check,
            qOverload<>(&QTimer::start));
    connect(dialog.tree, &TreeObjCheckable::checkedSelectAll, &m_check, qOverload<>(&QTimer::start));
}

void PeriodDialog::showZone()
{
    for (QDateTimeEdit* date : {m_dialog.dateFrom, m_dialog.dateTo}) {
        const qint64 time = date->dateTime().toSecsSinceEpoch();
        date->setTimeSpec(DeskTime::base());
        date->setDateTime(DeskTime::at(time));
        date->setToolTip(DeskTime::base() == Qt::UTC ? tr("Times in UTC") : tr("Local times"));
    }
    check();
}

void PeriodDialog::addPresets()
{
    auto* grid = new QGridLayout;
    for (int i = 0; i < Period::PresetCount; ++i) {
        const auto preset = static_cast<Period::Preset>(i);
        auto* button = new QPushButton(Period::title(preset));
        button->setAutoDefault(false); // Enter on it presses it; elsewhere it is Ok's
        button->setObjectName(QStringLiteral("preset%1").arg(i));
        connect(button, &QPushButton::clicked, this, [this, preset] {
            const QDateTime now = DeskTime::at(QDateTime::currentSecsSinceEpoch());
            const auto period = Period::of(preset, now, QLocale().firstDayOfWeek());
            m_dialog.dateFrom->setDateTime(period.first);
            m_dialog.dateTo->setDateTime(period.second);
        });
        grid->addWidget(button, i / presetsInRow, i % presetsInRow);
    }
    if (auto* rows = qobject_cast<QVBoxLayout*>(m_dialog.layout()))
        rows->insertLayout(rowBelowDates, grid);
    m_dialog.resize(m_dialog.width(), m_dialog.height() + grid->sizeHint().height()); // at no cost of the tree
    m_zone = new QLabel;
    grid->addWidget(m_zone, (Period::PresetCount - 1) / presetsInRow, presetsInRow - 1);
    QWidget* before = m_dialog.dateTo;
    for (int i = 0; i < grid->count(); ++i) {
        QWidget::setTabOrder(before, grid->itemAt(i)->widget());
        before = grid->itemAt(i)->widget();
    }
}

void PeriodDialog::fitScreen()
{
    const QSize frame = m_dialog.frameSize() - m_dialog.size();
    const QSize room = m_dialog.screen()->availableSize() - frame.expandedTo({0, m_dialog.fontMetrics().height() * 2});
    m_dialog.resize(m_dialog.size().boundedTo(room));
}

QString PeriodDialog::complaint() const
{
    const QString ofPeriod =
        Period::complaint(m_dialog.dateFrom->dateTime(), m_dialog.dateTo->dateTime(), QDateTime::currentDateTimeUtc());
    if (!ofPeriod.isEmpty())
        return ofPeriod;
    QList<int> ticked;
    m_dialog.tree->getCheckedObjs(&ticked);
    return ticked.isEmpty() ? tr("Tick an object") : QString();
}

void PeriodDialog::check()
{
    const QString from = DeskTime::zone(m_dialog.dateFrom->dateTime().toSecsSinceEpoch());
    const QString to = DeskTime::zone(m_dialog.dateTo->dateTime().toSecsSinceEpoch());
    m_zone->setText(from == to ? from : QStringLiteral("%1 – %2").arg(from, to));
    const QString reason = complaint();
    m_ok->setEnabled(reason.isEmpty());
    m_ok->setToolTip(reason);
    if (reason.isEmpty() && !m_complains)
        return; // what else is said there stays
    m_complains = !reason.isEmpty();
    m_dialog.statusBar.setPalette(m_complains ? DeskColors::withErrorText(m_dialog.palette()) : m_dialog.palette());
    m_dialog.statusBar.showMessage(reason);
}
