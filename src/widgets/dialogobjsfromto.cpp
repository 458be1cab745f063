#include <Pardel/dialogobjsfromto.h>

#include <Pardel/calendar.h>
#include <Pardel/treeobjcheckable.h>

#include <QCalendarWidget>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace {

constexpr int searchWidth = 70;
constexpr QSize usableSize(420, 560);

enum CalendarTarget
{
    NoDate,
    StartDate,
    EndDate
};

QHBoxLayout* makeDateRow(QLabel* label, QDateTimeEdit* date, QPushButton* calendarButton)
{
    // A null icon still takes room in the button.
    const QString icon = QStringLiteral(":/Pic/resources/calendar1.png");
    if (QFile::exists(icon))
        calendarButton->setIcon(QIcon(icon));
    calendarButton->setAccessibleDescription(label->text());
    label->setBuddy(date);
    auto* row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(date, 1);
    row->addWidget(calendarButton);
    return row;
}

void setUpIconButton(QToolButton* button, const char* image, const QString& text)
{
    button->setIcon(QIcon(QStringLiteral(":/pic/pic/") + QLatin1String(image)));
    button->setToolTip(text);
    button->setAccessibleName(text);
}

} // namespace

DialogObjsFromTo::DialogObjsFromTo()
    : dateFrom(new QDateTimeEdit),
      dateTo(new QDateTimeEdit),
      tree(new TreeObjCheckable(nullptr)),
      rbOnlyPlayer(new QRadioButton(tr("Only Player"))),
      rbOnlyReports(new QRadioButton(tr("Only Reports"))),
      rbPlayerWithReports(new QRadioButton(tr("Player with Reports"))),
      cbRemember(new QCheckBox(tr("Remember selection"))),
      cbViewLogs(new QCheckBox(tr("View logs"))),
      cbViewPackets(new QCheckBox(tr("View packets"))),
      calendarTarget(NoDate),
      calendar(new Calendar(this)),
      searchEdit(new QLineEdit),
      btnPrevious(new QToolButton),
      btnNext(new QToolButton),
      btnClear(new QToolButton),
      findLabel(new QLabel(tr("Find"))),
      searchLayout(new QHBoxLayout)
{
    setWindowTitle(tr("Select objects"));
    connect(calendar, &Calendar::finished, this, &DialogObjsFromTo::onFinishedCalendar);

    auto* layout = new QVBoxLayout(this);
    auto* fromLabel = new QLabel(tr("From"));
    auto* toLabel = new QLabel(tr("To"));
    for (QLabel* label : {fromLabel, toLabel}) // so that the dates stand below each other
        label->setMinimumWidth(std::max(fromLabel->sizeHint().width(), toLabel->sizeHint().width()));
    auto* fromButton = new QPushButton(tr("Calendar"));
    connect(fromButton, &QPushButton::clicked, this, &DialogObjsFromTo::OnDateStart_clicked);
    layout->addLayout(makeDateRow(fromLabel, dateFrom, fromButton));
    auto* toButton = new QPushButton(tr("Calendar"));
    connect(toButton, &QPushButton::clicked, this, &DialogObjsFromTo::OnDateEnd_clicked);
    layout->addLayout(makeDateRow(toLabel, dateTo, toButton));

    searchLayout->setContentsMargins(0, 0, 0, 0);
    searchLayout->addWidget(findLabel);
    searchLayout->addSpacerItem(new QSpacerItem(0, 0, QSizePolicy::MinimumExpanding, QSizePolicy::Minimum));
    searchEdit->setFixedWidth(searchWidth);
    searchEdit->setToolTip(tr("Search objects"));
    searchEdit->setAccessibleName(tr("Search objects"));
    searchEdit->installEventFilter(this);
    connect(searchEdit, &QLineEdit::textChanged, this, &DialogObjsFromTo::OnSearchTree);
    searchLayout->addWidget(searchEdit);
    setUpIconButton(btnPrevious, "left2.png", tr("Previous"));
    connect(btnPrevious, &QToolButton::clicked, tree, &TreeObjCheckable::go_left);
    searchLayout->addWidget(btnPrevious);
    setUpIconButton(btnNext, "right2.png", tr("Next"));
    connect(btnNext, &QToolButton::clicked, tree, &TreeObjCheckable::go_right);
    searchLayout->addWidget(btnNext);
    setUpIconButton(btnClear, "clear2.png", tr("Clear"));
    connect(btnClear, &QToolButton::clicked, this, &DialogObjsFromTo::ClearFind);
    searchLayout->addWidget(btnClear);
    layout->addLayout(searchLayout);

    layout->addWidget(tree);

    layout->addWidget(cbRemember);
    rbOnlyReports->setChecked(true);
    for (QWidget* optional :
         std::initializer_list<QWidget*>{rbPlayerWithReports, rbOnlyPlayer, rbOnlyReports, cbViewLogs, cbViewPackets}) {
        layout->addWidget(optional);
        optional->hide();
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal);
    connect(buttons, &QDialogButtonBox::accepted, this, &DialogObjsFromTo::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &DialogObjsFromTo::reject);
    layout->addWidget(buttons);
    layout->addWidget(&statusBar);

    connect(this, &DialogObjsFromTo::finished, this, &DialogObjsFromTo::onFinished);
    resize(sizeHint().expandedTo(usableSize));
}

void DialogObjsFromTo::showWithStatus(QString message)
{
    statusBar.showMessage(message);
    if (isVisible()) {
        raise();
        activateWindow();
    } else {
        show();
        searchEdit->clear();
    }
}

void DialogObjsFromTo::OnDateStart_clicked()
{
    calendarTarget = StartDate;
    calendar->showWithDate(dateFrom->date());
}

void DialogObjsFromTo::OnDateEnd_clicked()
{
    calendarTarget = EndDate;
    calendar->showWithDate(dateTo->date());
}

void DialogObjsFromTo::onFinishedCalendar(int result)
{
    const int target = std::exchange(calendarTarget, NoDate);
    if (result == Accepted && target != NoDate)
        (target == StartDate ? dateFrom : dateTo)->setDate(calendar->calendarWidget->selectedDate());
}

void DialogObjsFromTo::onFinished(int)
{
    calendar->close();
}

void DialogObjsFromTo::OnSearchTree(QString text)
{
    tree->OnSearchTree(text);
    const int matches = tree->Get_index_size();
    if (matches > 0)
        findLabel->setText(tr("Match: %1").arg(matches));
    else
        findLabel->setText(text.isEmpty() ? tr("Find") : tr("Match not found"));
}

void DialogObjsFromTo::ClearFind()
{
    searchEdit->clear();
}

bool DialogObjsFromTo::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == searchEdit && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            key->modifiers() & Qt::ShiftModifier ? tree->go_left() : tree->go_right();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void DialogObjsFromTo::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter || (event->modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier)))
        return QDialog::keyPressEvent(event);
    // Qt would take the Ok of an open calendar, as a child's, for the default button here.
    const auto buttons = findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        if (button->window() == this && button->isDefault() && button->isVisible())
            return button->click();
    }
}
