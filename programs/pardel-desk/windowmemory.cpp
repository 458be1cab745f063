#include "windowmemory.h"

#include <QHeaderView>
#include <QMainWindow>
#include <QSettings>
#include <QSplitter>
#include <QTableView>

namespace {

/// With the number of columns: those of a desk that has others are not for this one.
QString nameOf(const QTableView& table)
{
    return table.objectName() + QLatin1Char('-') + QString::number(table.horizontalHeader()->count());
}

} // namespace

namespace WindowMemory {

void restore(QMainWindow& window, const QSettings& ini)
{
    window.restoreGeometry(stored(ini, QStringLiteral("Geometry")));
    window.restoreState(stored(ini, QStringLiteral("State")));
    const auto splitters = window.findChildren<QSplitter*>();
    for (QSplitter* splitter : splitters) {
        if (!splitter->objectName().isEmpty())
            splitter->restoreState(stored(ini, splitter->objectName()));
    }
    const auto tables = window.findChildren<QTableView*>();
    for (QTableView* table : tables) {
        if (!table->objectName().isEmpty())
            table->horizontalHeader()->restoreState(stored(ini, nameOf(*table)));
    }
}

void save(const QMainWindow& window, QSettings& ini)
{
    store(ini, QStringLiteral("Geometry"), window.saveGeometry());
    store(ini, QStringLiteral("State"), window.saveState());
    const auto splitters = window.findChildren<QSplitter*>();
    for (const QSplitter* splitter : splitters) {
        if (!splitter->objectName().isEmpty())
            store(ini, splitter->objectName(), splitter->saveState());
    }
    const auto tables = window.findChildren<QTableView*>();
    for (const QTableView* table : tables) {
        if (!table->objectName().isEmpty())
            store(ini, nameOf(*table), table->horizontalHeader()->saveState());
    }
}

} // namespace WindowMemory

// Base64, as a settings file is read by people and programs of both versions of Qt.
QByteArray WindowMemory::stored(const QSettings& ini, const QString& name)
{
    return QByteArray::fromBase64(ini.value(QStringLiteral("Window/") + name).toByteArray());
}

void WindowMemory::store(QSettings& ini, const QString& name, const QByteArray& state)
{
    ini.setValue(QStringLiteral("Window/") + name, QString::fromLatin1(state.toBase64()));
}
