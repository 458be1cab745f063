#include "widgettext.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QTest>

namespace {

/// The library's image that an icon shows, or the color of another one.
QByteArray iconText(const QIcon& icon)
{
    const QDir images(QStringLiteral(":/pic/pic"));
    const QImage shown = icon.pixmap(16).toImage();
    for (const QString& name : images.entryList()) {
        if (QIcon(images.filePath(name)).pixmap(16).toImage() == shown)
            return name.toUtf8();
    }
    return shown.pixelColor(0, 0).name().toUtf8();
}

/// A widget's class, and what is remarkable about it.
QByteArray factsText(const QWidget* widget)
{
    QByteArray text = widget->metaObject()->className();
    for (const char* name : {"windowTitle", "text", "toolTip", "accessibleName", "accessibleDescription", "checked",
                             "modal", "orientation", "echoMode", "layoutDirection", "headerHidden", "autoExpandDelay",
                             "selectionBehavior", "editTriggers"}) {
        const QMetaObject* type = widget->metaObject();
        const QMetaProperty property = type->property(type->indexOfProperty(name));
        QVariant value = property.read(widget);
        if (property.isEnumType()) // its text would be the name in Qt 6
            value = value.toInt();
        if (value.toBool()) // not for false, 0 and nothing
            text += ' ' + QByteArray(name) + '=' + value.toByteArray();
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget); button && !button->icon().isNull())
        text += " icon=" + iconText(button->icon());
    if (const auto* label = qobject_cast<const QLabel*>(widget); label && label->buddy())
        text += " buddy=(" + factsText(label->buddy()) + ')';
    if (widget->minimumWidth() == widget->maximumWidth())
        text += " width=" + QByteArray::number(widget->minimumWidth());
    if (widget->minimumHeight() == widget->maximumHeight())
        text += " height=" + QByteArray::number(widget->minimumHeight());
    if (widget->sizePolicy() == QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed))
        text += " fixed";
    return text + (widget->font().bold() ? " bold" : "") + (widget->isHidden() ? " hidden" : "");
}

QByteArray methodsText(const QMetaObject* metaObject)
{
    QByteArray text;
    for (int i = metaObject->methodOffset(); i < metaObject->methodCount(); ++i) {
        const QMetaMethod method = metaObject->method(i);
        text += (method.access() == QMetaMethod::Private ? " -" : " ") + method.methodSignature();
    }
    return text;
}

void addLines(QLayoutItem* item, const QByteArray& indent, QByteArrayList* lines)
{
    QByteArray line = indent + "spacer width=" + QByteArray::number(item->sizeHint().width());
    line += " expanding=" + QByteArray::number(static_cast<int>(item->expandingDirections()));
    if (const QLayout* layout = item->layout()) {
        line = indent + layout->metaObject()->className() + " spacing=" + QByteArray::number(layout->spacing());
        line += " margin=" + QByteArray::number(layout->contentsMargins().left());
    } else if (item->widget()) {
        line = indent + factsText(item->widget());
    }
    *lines += line;
    for (int i = 0; item->layout() && i < item->layout()->count(); ++i) {
        QByteArray cell;
        if (auto* grid = qobject_cast<QGridLayout*>(item->layout())) {
            int row = 0, column = 0, span = 0;
            grid->getItemPosition(i, &row, &column, &span, &span);
            cell = QByteArray::number(row) + ',' + QByteArray::number(column) + ' ';
        }
        addLines(item->layout()->itemAt(i), indent + "  " + cell, lines);
    }
}

void clickButton(const QWidget& window, const QString& text)
{
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        QStringList names = {button->accessibleName(), button->accessibleDescription(), button->text()};
        if (button->window() == &window && names.replaceInStrings(QStringLiteral("&"), QString()).contains(text))
            return QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(10, button->height() / 2));
    }
    QFAIL(qPrintable(QStringLiteral("there is no button ") + text));
}

} // namespace

QByteArrayList layoutLines(const QWidget& window)
{
    QByteArrayList lines = {factsText(&window), "methods:" + methodsText(window.metaObject())};
    addLines(window.layout(), "", &lines);
    return lines;
}

void play(QWidget& window, const QByteArray& script)
{
    static const QHash<char, Qt::Key> keys = {{'_', Qt::Key_Space}, {'~', Qt::Key_Backspace}, {'<', Qt::Key_Left},
                                              {'>', Qt::Key_Right}, {'^', Qt::Key_Return},    {'!', Qt::Key_Escape},
                                              {'\n', Qt::Key_Enter}};
    for (int i = 0; i < script.size(); ++i) {
        const char character = script.at(i);
        if (character == '@')
            window.activateWindow();
        QCoreApplication::processEvents(); // a window that was shown becomes active
        QWidget* active = QApplication::activeWindow();
        QVERIFY2(active && active->focusWidget(), "nothing has the focus");
        if (character == '[') {
            const QByteArray name = script.mid(i + 1, script.indexOf(']', i) - i - 1);
            i += static_cast<int>(name.size()) + 1;
            if (name == "close")
                active->close();
            else
                clickButton(*active, QString::fromUtf8(name));
        } else if (keys.contains(character)) {
            QTest::keyClick(active->focusWidget(), keys[character],
                            character == '^' ? Qt::ShiftModifier : Qt::NoModifier);
        } else if (character != '@') {
            QTest::keyClick(active->focusWidget(), character);
        }
    }
    QCoreApplication::processEvents();
}

QByteArray showAgain(QWidget& window, const std::function<void()>& show)
{
    struct Recorder : QObject
    {
        QByteArrayList events;
        bool eventFilter(QObject*, QEvent* event) override
        {
            static const QHash<int, QByteArray> names = {
                {QEvent::Hide, "hidden"}, {QEvent::Show, "shown"}, {QEvent::ZOrderChange, "raised"}};
            events += names.contains(event->type()) ? QByteArrayList{names[event->type()]} : QByteArrayList();
            return false;
        }
    } recorder;
    QWidget other;
    other.show();
    other.activateWindow();
    if (!QTest::qWaitForWindowActive(&other))
        return "the other window is not active";
    window.installEventFilter(&recorder);
    show();
    return QTest::qWaitForWindowActive(&window) ? recorder.events.join(", ") : "not active";
}
