#pragma once

#include <QByteArray>
#include <QEvent>
#include <QObject>

QT_BEGIN_NAMESPACE
class QLayout;
class QWidget;
QT_END_NAMESPACE

/**
 * A layout in one line, its items in order and joined by ", ": a widget as its class, with its text behind it in single
 * quotes if it has one and "hidden" if it is; a layout inside in brackets; a spacer as "spacer"; in a grid with
 * "row,column " before each item.
 */
QByteArray layoutText(const QLayout* layout);

/** The signatures of the slots that a class declares itself, in order, joined by ", "; "private " before those. */
QByteArray slotNames(const QMetaObject& metaObject);

/** Types into whatever widget of an active window has the focus: "\r" is Return, "\n" Enter, "\t" Tab, "\b" Backspace,
 * "\x1b" Escape, "<" and ">" the arrows, "^" Shift+Return. */
void type(const QWidget& window, const QByteArray& keys);

/** Clicks the button in @p window whose text, without mnemonics, is @p text. */
void clickButton(const QWidget& window, const QString& text);

/** Counts the events of a type that an object receives. */
class EventCounter : public QObject
{
    Q_OBJECT

public:
    EventCounter(QObject* object, QEvent::Type type) : m_type(type) { object->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == m_type;
        return false;
    }

    int count = 0;

private:
    QEvent::Type m_type;
};
