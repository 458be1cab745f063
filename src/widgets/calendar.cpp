#include <Pardel/calendar.h>

#include <QAbstractItemView>
#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr QSize todaySize(32, 32);

QString todayText()
{
    return Calendar::tr("Today is ") + QDate::currentDate().toString(QStringLiteral("dd.MM.yyyy"));
}

} // namespace

Calendar::Calendar(QWidget* parent)
    : QDialog(parent),
      calendarWidget(new QCalendarWidget),
      mainLayout(new QVBoxLayout(this)),
      todayLabel(new QLabel),
      todayPixmap(todaySize),
      todayButton(new QPushButton)
{
    setWindowTitle(tr("Input day"));
    todayPixmap.fill(Qt::blue);
    todayIcon.addPixmap(todayPixmap, QIcon::Normal, QIcon::Off);

    mainLayout->addWidget(calendarWidget);
    calendarWidget->installEventFilter(this);
    calendarWidget->findChild<QAbstractItemView*>()->installEventFilter(this);

    auto* todayRow = new QHBoxLayout;
    todayButton->setIcon(todayIcon);
    todayButton->setFixedSize(todaySize);
    todayButton->setToolTip(tr("Today"));
    todayButton->setAccessibleName(tr("Today"));
    connect(todayButton, &QPushButton::clicked, this, &Calendar::onToday);
    todayRow->addWidget(todayButton);
    QFont bold = todayLabel->font();
    bold.setWeight(QFont::Bold);
    todayLabel->setFont(bold);
    todayLabel->setText(todayText());
    todayRow->addWidget(todayLabel);
    mainLayout->addLayout(todayRow);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal);
    connect(buttons, &QDialogButtonBox::accepted, this, &Calendar::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &Calendar::reject);
    mainLayout->addWidget(buttons);
}

void Calendar::showWithDate(QDate date)
{
    todayLabel->setText(todayText());
    calendarWidget->setSelectedDate(date);
    if (isVisible()) {
        raise();
        activateWindow();
    } else {
        show();
    }
}

bool Calendar::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            // Passed on by the year's field, which vanishes at this key; the dialog would press the button behind it.
            if (watched == calendarWidget)
                return true;
            // Queued, as the view commits a day that was typed only after this filter.
            QMetaObject::invokeMethod(
                this, [this] { isVisible() ? accept() : void(); }, Qt::QueuedConnection);
        }
    }
    return QDialog::eventFilter(watched, event);
}

void Calendar::onToday(bool)
{
    calendarWidget->setSelectedDate(QDate::currentDate());
    calendarWidget->setFocus(Qt::OtherFocusReason);
}
