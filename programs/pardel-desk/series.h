#pragma once

#include <QPointF>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

/** A value of an object over time: pieces without a silence in them, of points with Unix seconds and the value. */
struct Series
{
    QVector<QVector<QPointF>> pieces;
    bool isCut = false; ///< Whether there was more than mostPoints; then these are the first.
    QString error;      ///< What went wrong, for people; or nothing.

    static constexpr int mostPoints = 500'000;
    static constexpr qint16 speed = -1; ///< In the place of a sensor's type.
    static constexpr qint16 supply = 65;

    /** Of the states of the archive from @p from up to and with @p to, in Unix seconds, those that have the sensor. */
    static Series read(const QSqlDatabase& db, qint32 id, qint16 type, qint64 from, qint64 to);
    /** What can be read of an archive: the speed, the supply if it has it, and its other sensors. */
    static QVector<qint16> typesOf(const QSqlDatabase& db);
    static QString title(qint16 type);
};
