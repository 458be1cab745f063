#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QByteArray;
class QMainWindow;
class QSettings;
class QString;
QT_END_NAMESPACE

/**
 * How the user has arranged a window, kept in the settings' group "Window": its place and size, its docks, and of the
 * splitters and tables in it that have an object name, the sizes, columns and sorting.
 */
namespace WindowMemory {

/** What was not stored, or does not fit, is left as it is. */
void restore(QMainWindow& window, const QSettings& ini);
void save(const QMainWindow& window, QSettings& ini);

/** What QHeaderView and others give as their state, under a name in the group. */
QByteArray stored(const QSettings& ini, const QString& name);
void store(QSettings& ini, const QString& name, const QByteArray& state);

} // namespace WindowMemory
