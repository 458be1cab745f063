// What the tour asks of every window: that people can read and reach what it shows.

#include "deskcolors.h"
#include "objectcatalog.h"
#include "tour.h"

#include <Pardel/treeobjcheckable.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QStyleOptionComboBox>
#include <QTabBar>
#include <QTreeView>

namespace {

constexpr double leastContrast = 4.5; // as WCAG 2 wants it of text

int textWidth(const QWidget& widget, const QString& text)
{
    return widget.fontMetrics().size(Qt::TextShowMnemonic, text).width();
}

bool isCut(const QLabel& label)
{
    if (label.text().isEmpty())
        return false;
    if (label.wordWrap())
        return label.heightForWidth(label.width()) > label.height();
    return label.minimumSizeHint().width() > label.width() || label.minimumSizeHint().height() > label.height();
}

bool isCut(const QAbstractButton& button)
{
    const int icon = button.icon().isNull() ? 0 : button.iconSize().width();
    const bool hasMark = button.isCheckable() && button.minimumSizeHint() == button.sizeHint();
    return hasMark ? button.sizeHint().width() > button.width()
                   : textWidth(button, button.text()) + icon > button.width();
}

bool isCut(const QComboBox& box)
{
    QStyleOptionComboBox option;
    option.initFrom(&box);
    option.subControls = QStyle::SC_All;
    const QRect room = box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box);
    return textWidth(box, box.currentText()) > room.width();
}

bool isCut(const QHeaderView& header)
{
    for (int section = 0; section < header.count(); ++section) {
        const QString title = header.model()->headerData(section, header.orientation()).toString();
        if (header.isVisible() && !header.isSectionHidden(section) &&
            textWidth(header, title) > header.sectionSize(section))
            return true;
    }
    return false;
}

bool isCut(const QWidget& widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return isCut(*label);
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return isCut(*button);
    if (const auto* box = qobject_cast<const QComboBox*>(&widget))
        return isCut(*box);
    if (const auto* header = qobject_cast<const QHeaderView*>(&widget))
        return isCut(*header);
    if (const auto* tabs = qobject_cast<const QTabBar*>(&widget))
        return tabs->sizeHint().width() > tabs->width();
    return false;
}

/// Style sheets, which the palette does not know, have black on colours of their own.
bool isIllegible(const QWidget& widget)
{
    const bool hasText = qobject_cast<const QLabel*>(&widget) || qobject_cast<const QAbstractButton*>(&widget) ||
                         qobject_cast<const QAbstractItemView*>(&widget);
    if (!hasText || !widget.isEnabled() || !widget.styleSheet().isEmpty())
        return false;
    const QPalette& colors = widget.palette();
    return DeskColors::contrast(colors.color(widget.foregroundRole()), colors.color(widget.backgroundRole())) <
           leastContrast;
}

/// What a view scrolls may be outside of it.
bool isScrolled(const QWidget& widget)
{
    for (const QWidget* parent = widget.parentWidget(); parent; parent = parent->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea*>(parent) && !qobject_cast<const QHeaderView*>(&widget))
            return true;
    }
    return false;
}

QString nameOf(const QWidget& widget)
{
    QString name = QString::fromLatin1(widget.metaObject()->className()) + QLatin1Char(' ') + widget.objectName();
    for (const char* property : {"text", "currentText"})
        name += QLatin1Char(' ') + widget.property(property).toString();
    return name;
}

} // namespace

void Tour::expectWhole(const QWidget& window, const char* step)
{
    const QSize least = window.minimumSizeHint();
    if (least.width() > smallScreen.width() || least.height() > smallScreen.height())
        expect(false, QStringLiteral("a window that fits a small screen in \"%1\": %2 x %3")
                          .arg(QLatin1String(step))
                          .arg(least.width())
                          .arg(least.height())
                          .toUtf8()
                          .constData());
    const auto widgets = window.findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        if (!widget->isVisibleTo(&window) || widget->window() != &window || isScrolled(*widget))
            continue;
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        const auto complain = [&](bool fault, const char* what) {
            if (fault)
                expect(false, QStringLiteral("%1 in \"%2\": %3")
                                  .arg(QLatin1String(what), QLatin1String(step), nameOf(*widget))
                                  .toUtf8()
                                  .constData());
        };
        complain(!window.rect().contains(place), "the whole of what is partly outside");
        complain(isCut(*widget), "what is cut off");
        complain(isIllegible(*widget), "in readable colours what is");
    }
}

void Tour::expectWayOut(QAbstractItemView& view, const char* what)
{
    for (const int key : {Qt::Key_Tab, Qt::Key_Backtab}) {
        view.setFocus();
        QKeyEvent press(QEvent::KeyPress, key, key == Qt::Key_Tab ? Qt::NoModifier : Qt::ShiftModifier);
        QCoreApplication::sendEvent(&view, &press);
        const QWidget* next = view.window()->focusWidget();
        expect(next && next != &view && !view.isAncestorOf(next), what);
    }
}

QModelIndex Tour::indexOf(const TreeObjCheckable& tree, int id)
{
    const QAbstractItemModel* model = tree.getTreeView()->model();
    return model->match(model->index(0, 0), ObjectCatalog::idRole, id, 1, Qt::MatchExactly | Qt::MatchRecursive)
        .value(0);
}

QPalette Tour::darkPalette()
{
    QPalette palette(QColor(0x31363B), QColor(0x2A2E32));
    palette.setColor(QPalette::Base, QColor(0x1B1E20));
    palette.setColor(QPalette::AlternateBase, QColor(0x232629));
    palette.setColor(QPalette::Highlight, QColor(0x3DAEE9));
    palette.setColor(QPalette::PlaceholderText, QColor(0xA0A4A8));
    return palette;
}
