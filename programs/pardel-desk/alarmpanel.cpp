#include "alarmpanel.h"

#include "namesorder.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QThread>

#include <algorithm>
#include <utility>

namespace {

constexpr int exchangeInterval = 2000; // milliseconds
constexpr int ringInterval = 200;      // milliseconds
constexpr int failuresToTell = 5;      // exchanges in turn
constexpr std::chrono::seconds closeTime{3};
constexpr qint64 oneDay = 24 * 60 * 60;

int setting(const QSettings& ini, const char* key, int standard, int least, int most)
{
    bool isNumber = false;
    const int value = ini.value(QStringLiteral("Alarms/") + QLatin1String(key), standard).toInt(&isNumber);
    return isNumber ? std::clamp(value, least, most) : standard;
}

const QString soundKey = QStringLiteral("Alarms/Sound");

} // namespace

AlarmPanel::AlarmPanel(const ObjectCatalog& catalog, const QSqlDatabase& db, QSettings& ini, QWidget* parent)
    : QWidget(parent),
      list(catalog),
      table(new QTableView),
      remark(new QLineEdit),
      acknowledgeButton(new QPushButton(tr("Ac&knowledge"))),
      sound(new QCheckBox(tr("&Sound"))),
      beep(&QApplication::beep),
      m_ini(ini),
      m_period(setting(ini, "Days", 7, 1, 36'500) * oneDay),
      m_thread(new QThread),
      m_worker(new QObject),
      m_replies(new QObject),
      m_store(std::make_shared<std::unique_ptr<AlarmStore>>()),
      m_unstored(std::make_shared<std::atomic<int>>(0)),
      m_sorted(new NamesOrder(AlarmList::sortRole, this)),
      m_count(new QLabel)
{
    m_worker->moveToThread(m_thread);
    m_thread->start();
    QMetaObject::invokeMethod(m_worker, [connection = db.connectionName(), cell = m_store] {
        *cell = std::make_unique<AlarmStore>(connection); // in its thread, as connections belong to one
    });
    layOut();
    sound->setChecked(ini.value(soundKey, true).toBool());
    connect(sound, &QCheckBox::toggled, this, [this](bool on) { m_ini.setValue(soundKey, on); });
    connect(acknowledgeButton, &QPushButton::clicked, this, &AlarmPanel::acknowledge);
    connect(remark, &QLineEdit::returnPressed, this, &AlarmPanel::acknowledge);

    connect(&list, &AlarmList::raised, this, [this](const DeskAlarm& alarm, bool here) {
        if (here && alarm.shared)
            change([alarm](AlarmStore& store) { store.add(alarm); });
        if (!m_ring.isActive())
            m_ring.start();
    });
    connect(&list, &AlarmList::ended, this, [this](const DeskAlarm& alarm) {
        if (alarm.shared)
            change([alarm](AlarmStore& store) { store.end(alarm); });
    });
    connect(&list, &AlarmList::wasAcknowledged, this, [this](const DeskAlarm& alarm) {
        if (alarm.shared)
            change([alarm](AlarmStore& store) { store.acknowledge(alarm); });
    });
    for (const auto signal : {&AlarmList::rowsInserted, &AlarmList::rowsRemoved})
        connect(&list, signal, this, &AlarmPanel::enableButton);
    connect(&list, &AlarmList::dataChanged, this, &AlarmPanel::enableButton);

    m_exchangeTimer.setInterval(exchangeInterval);
    connect(&m_exchangeTimer, &QTimer::timeout, this, &AlarmPanel::exchange);
    m_ring.setSingleShot(true);
    m_ring.setInterval(ringInterval);
    connect(&m_ring, &QTimer::timeout, this, &AlarmPanel::ring);
    m_repeat.setInterval(setting(ini, "RepeatSeconds", 30, 0, 86'400) * 1000);
    connect(&m_repeat, &QTimer::timeout, this, &AlarmPanel::ring);
}

void AlarmPanel::layOut()
{
    m_sorted->setSourceModel(&list);
    table->setModel(m_sorted);
    table->setSortingEnabled(true);
    table->sortByColumn(AlarmList::Time, Qt::DescendingOrder);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setWordWrap(false);
    table->setTabKeyNavigation(false);
    table->setAccessibleName(tr("Alarms"));
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    table->horizontalHeader()->setStretchLastSection(true);
    const QString time = QStringLiteral("0000-00-00 00:00:00 +00:00");
    const QStringList widest{time,
                             QStringLiteral("Object 00000"),
                             AlarmList::tr("acknowledged by %1, %2").section(QLatin1Char('%'), 0, 0),
                             QStringLiteral("A short remark"),
                             QStringLiteral("-00.00000, -000.00000"),
                             list.headerData(AlarmList::Speed, Qt::Horizontal, Qt::DisplayRole).toString()};
    for (int column = 0; column < widest.size(); ++column)
        table->setColumnWidth(column, fontMetrics().horizontalAdvance(widest.at(column)) + 16);
    connect(table, &QTableView::activated, this,
            [this](const QModelIndex& index) { Q_EMIT wanted(index.data(AlarmList::idRole).toInt()); });
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &AlarmPanel::enableButton);

    auto* row = new QHBoxLayout;
    remark->setPlaceholderText(tr("Remark"));
    remark->setMaxLength(500);
    remark->setAccessibleName(tr("Remark"));
    row->addWidget(m_count);
    row->addWidget(remark, 1);
    row->addWidget(acknowledgeButton);
    row->addWidget(sound);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table);
    layout->addLayout(row);
    enableButton();
}

AlarmPanel::~AlarmPanel()
{
    finish(closeTime);
    if (!m_thread->isFinished())
        return; // a server that does not answer holds it: it ends with the program
    delete m_thread;
    delete m_replies;
}

void AlarmPanel::stop()
{
    if (m_isStopped)
        return;
    m_exchangeTimer.stop();
    m_exchanging = false; // one that is under way does not have what has come since
    exchange();
    m_isStopped = true;
    QMetaObject::invokeMethod(m_worker, [cell = m_store, thread = m_thread, worker = m_worker] {
        cell->reset();
        worker->deleteLater();
        thread->quit();
    });
}

int AlarmPanel::finish(std::chrono::milliseconds most)
{
    stop();
    m_thread->wait(static_cast<unsigned long>(most.count()));
    return *m_unstored;
}

void AlarmPanel::change(Change&& change)
{
    m_changes.append(std::move(change));
    ++*m_unstored;
}

void AlarmPanel::start(const Tracks& lastStates, const History& history)
{
    m_lastStates = lastStates;
    m_history = history;
    exchange();
    m_exchangeTimer.start();
}

void AlarmPanel::catchUp()
{
    const qint64 since = QDateTime::currentSecsSinceEpoch() - m_period;
    for (const auto& [id, states] : std::exchange(m_lastStates, {})) {
        const TrackPoint& last = states.constLast();
        const DeskAlarm* on = list.current(id);
        if (!on && (!last.alarm || last.time < since))
            continue;
        Track track = m_history(id, on ? on->time : qint64(last.time) - oneDay, last.time);
        track.append(last);
        // Of one that nobody has stored only the alarm counts that is on now, from the report that has raised it.
        const auto clean = std::find_if(track.crbegin(), track.crend(), [](const TrackPoint& at) { return !at.alarm; });
        if (!on)
            track.erase(track.begin(), track.begin() + (track.crend() - clean));
        for (const TrackPoint& state : qAsConst(track))
            list.take(id, state);
    }
    m_history = nullptr;
    exchange();
}

void AlarmPanel::exchange()
{
    if (m_exchanging || m_isStopped)
        return;
    m_exchanging = true;
    const qint64 since = QDateTime::currentSecsSinceEpoch() - m_period;
    const auto work = [panel = QPointer<AlarmPanel>(this), replies = m_replies, since, cell = m_store,
                       unstored = m_unstored, changes = std::exchange(m_changes, {}),
                       readsAll = std::exchange(m_readAll, false)] {
        for (const Change& change : changes)
            change(**cell);
        if (readsAll)
            (*cell)->forget();
        const int waiting = (*cell)->waiting();
        const auto stored = (*cell)->exchange(since);
        *unstored -= waiting - (*cell)->waiting();
        const auto reply = [panel, stored, trouble = (*cell)->trouble()] {
            if (panel)
                panel->takeExchange(stored, trouble);
        };
        QMetaObject::invokeMethod(replies, reply, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(m_worker, work, Qt::QueuedConnection);
}

void AlarmPanel::takeExchange(const std::optional<QVector<DeskAlarm>>& stored, const QString& trouble)
{
    m_exchanging = false;
    m_trouble = trouble;
    m_failures = trouble.isEmpty() ? 0 : m_failures + 1;
    // One that came across another program's writing is soon over.
    const QString told = m_failures >= failuresToTell ? trouble : QString();
    if (m_told != told && (m_failures == 0 || m_failures >= failuresToTell)) {
        m_told = told;
        Q_EMIT troubleChanged(told);
    }
    // What has changed here in the meantime is not in what was read.
    if (stored && m_changes.isEmpty()) {
        list.replaceStored(*stored);
    } else if (stored) {
        m_readAll = true;
        exchange();
    }
    if (m_history)
        catchUp();
}

void AlarmPanel::ring()
{
    if (list.newCount() == 0)
        return m_repeat.stop();
    if (sound->isChecked())
        beep();
    QApplication::alert(window());
    if (m_repeat.interval() > 0)
        m_repeat.start();
}

QVector<int> AlarmPanel::selectedNew() const
{
    QVector<int> rows;
    const QModelIndexList chosen = table->selectionModel()->selectedRows();
    for (const QModelIndex& index : chosen) {
        if (index.data(AlarmList::newRole).toBool())
            rows.append(m_sorted->mapToSource(index).row());
    }
    return rows;
}

void AlarmPanel::acknowledge()
{
    const QVector<int> rows = selectedNew();
    if (rows.isEmpty())
        return;
    list.acknowledge(rows, m_user, QDateTime::currentSecsSinceEpoch(), remark->text().trimmed());
    remark->clear();
    exchange();
}

void AlarmPanel::enableButton()
{
    acknowledgeButton->setEnabled(!selectedNew().isEmpty());
    m_count->setText(tr("New: %1").arg(list.newCount()));
    Q_EMIT changed();
}
