#include "widgettext.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QMetaMethod>
#include <QTest>
#include <QVariant>

namespace {

class Recorder : public QObject
{
public:
    QByteArrayList events;

    bool eventFilter(QObject*, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Hide: events += "hidden"; break;
        case QEvent::Show: events += "shown"; break;
        case QEvent::ZOrderChange: events += "raised"; break;
        default: break;
        }
        return false;
    }
};

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

QByteArray layoutText(const QLayout* layout)
{
    const auto* grid = qobject_cast<const QGridLayout*>(layout);
    QByteArrayList items;
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* const item = layout->itemAt(i);
        QByteArray text = "spacer";
        if (const QLayout* inner = item->layout()) {
            text = '[' + layoutText(inner) + ']';
        } else if (const QWidget* widget = item->widget()) {
            text = widget->objectName().toUtf8();
            if (text.isEmpty())
                text = widget->metaObject()->className();
            const QString shown = widget->property("text").toString();
            const QByteArray words = (shown.isEmpty() ? widget->toolTip() : shown).toUtf8();
            text += (words.isEmpty() ? "" : " '" + words + '\'') + (widget->isHidden() ? " hidden" : "");
        }
        if (grid) {
            int row = 0;
            int column = 0;
            int span = 0;
            grid->getItemPosition(i, &row, &column, &span, &span);
            text.prepend(QByteArray::number(row) + ',' + QByteArray::number(column) + ' ');
        }
        items += text;
    }
    return items.join(", ");
}

QByteArray slotNames(const QMetaObject& metaObject)
{
    QByteArrayList names;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        names += (method.access() == QMetaMethod::Private ? "private " : "") + method.methodSignature();
    }
    return names.join(", ");
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
            i += name.size() + 1;
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
    QWidget other;
    other.show();
    other.activateWindow();
    Recorder recorder;
    const auto activated = [](QWidget* expected) {
        return QTest::qWaitFor([=] { return QApplication::activeWindow() == expected; });
    };
    if (!activated(&other))
        return "the other window is not active";
    window.installEventFilter(&recorder);
    show();
    return activated(&window) ? recorder.events.join(", ") : "not active";
}
