#pragma once

#include <QByteArray>
#include <QMetaObject>

#include <functional>

QT_BEGIN_NAMESPACE
class QLayout;
class QWidget;
QT_END_NAMESPACE

/**
 * A layout in one line, its items in order and joined by ", ": a widget as its object name or else its class, with its
 * text or else its tool tip behind it in single quotes and "hidden" if it is; a layout inside in brackets; a spacer as
 * "spacer"; in a grid with "row,column " before each item.
 */
QByteArray layoutText(const QLayout* layout);

/** The signatures of the slots that a class declares itself, in order, joined by ", "; "private " before those. */
QByteArray slotNames(const QMetaObject& metaObject);

/**
 * Plays a user: types into the widget with the focus of the active window, character by character. In place of what a
 * table cannot hold, "_" is Space, "~" Backspace, "<" and ">" are the arrows, "^" is Shift+Return, "!" Escape; "\r" is
 * Return, "\n" Enter. "[text]" clicks the button of this text, accessible name or description, without mnemonics;
 * "[close]" closes the active window and "@" activates @p window.
 */
void play(QWidget& window, const QByteArray& script);

/** Brings another window to the front, runs @p show and waits until @p window is active; returns what that did to
 * it of "hidden", "shown" and "raised", joined by ", ". */
QByteArray showAgain(QWidget& window, const std::function<void()>& show);
