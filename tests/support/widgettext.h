#pragma once

#include <QByteArrayList>

#include <functional>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

/**
 * What a window consists of: the class with its signals and slots ("-" before private ones), then a line for each
 * layout, widget and spacer in it, in order and indented, with what is remarkable about it; in a grid with the cell.
 */
QByteArrayList layoutLines(const QWidget& window);

/**
 * Plays a user: types into the widget with the focus of the active window, character by character. In place of what a
 * table cannot hold, "_" is Space, "~" Backspace, "<" and ">" are the arrows, "^" is Shift+Return, "!" Escape; "\r" is
 * Return, "\n" Enter. "[text]" clicks the button of this text, accessible name or description, without mnemonics;
 * "[close]" closes the active window and "@" activates @p window.
 */
void play(QWidget& window, const QByteArray& script);

/** Brings another window to the front, runs @p show and waits until @p window is active; returns what that did to
 * it: "hidden", "shown", "raised". */
QByteArray showAgain(QWidget& window, const std::function<void()>& show);
