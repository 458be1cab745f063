#include "widgettext.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QMetaMethod>
#include <QTest>
#include <QVariant>
#include <QWidget>

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
            text = widget->metaObject()->className();
            const QByteArray shown = widget->property("text").toString().toUtf8();
            text += shown.isEmpty() ? "" : " '" + shown + '\'';
            text += widget->isHidden() ? " hidden" : "";
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

void type(const QWidget& window, const QByteArray& keys)
{
    for (const char key : keys) {
        QVERIFY2(window.focusWidget(), "nothing has the focus");
        switch (key) {
        case '\n': QTest::keyClick(window.focusWidget(), Qt::Key_Enter, Qt::KeypadModifier); break;
        case '<': QTest::keyClick(window.focusWidget(), Qt::Key_Left); break;
        case '>': QTest::keyClick(window.focusWidget(), Qt::Key_Right); break;
        case '^': QTest::keyClick(window.focusWidget(), Qt::Key_Return, Qt::ShiftModifier); break;
        default: QTest::keyClick(window.focusWidget(), key); break;
        }
    }
}

void clickButton(const QWidget& window, const QString& text)
{
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        if (button->window() == &window && button->text().remove(QLatin1Char('&')) == text)
            return QTest::mouseClick(button, Qt::LeftButton);
    }
    QFAIL("there is no such button");
}
