#include <Pardel/archive.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

namespace {

constexpr int fixedColumns = 5;

QString objectText(const MobData& data)
{
    return QString::number(static_cast<quint32>(data.idObject));
}

/// Runs a statement that is read row by row once; without an open connection, nothing, and without Qt's warning.
bool run(QSqlQuery& query, const QSqlDatabase& db, const QString& statement)
{
    query.setForwardOnly(true);
    return db.isOpen() && query.exec(statement);
}

void appendSensorsOfObject(MobData& data, const QSqlDatabase& db)
{
    QSqlQuery query(db);
    if (!run(query, db,
             QStringLiteral("SELECT \"Type\" FROM \"Sensors\" where \"Id_objects\" = %0 order by \"Id\" ")
                 .arg(objectText(data))))
        return;
    while (query.next()) {
        Sensor sensor;
        sensor.type = static_cast<qint16>(query.value(0).toInt());
        data.sensors.append(sensor);
    }
}

QString columnsOf(const MobData& data)
{
    QString columns = QStringLiteral("time_unix, sens_1, sens_2, sens_3, sens_4");
    for (const Sensor& sensor : data.sensors) {
        const QString type = QString::number(sensor.type);
        columns += QLatin1String(", sens_") + type + QLatin1String(", status_") + type;
    }
    return columns;
}

/// Reads the first row of "SELECT columns FROM @p source". False without a row.
bool readState(MobData& data, const QSqlDatabase& db, const QString& source)
{
    if (data.sensors.isEmpty())
        appendSensorsOfObject(data, db);
    QSqlQuery query(db);
    if (!run(query, db, QStringLiteral("SELECT %1 FROM %2").arg(columnsOf(data), source)) || !query.next())
        return false;
    data.timeUnix = query.value(0).toInt();
    data.latitude = query.value(1).toInt();
    data.longitude = query.value(2).toInt();
    data.speed = query.value(3).toInt();
    data.course = query.value(4).toInt();
    // Counted as one column for each sensor though each has two: only the first half of the sensors is read.
    const int columns = fixedColumns + static_cast<int>(data.sensors.size());
    for (int column = fixedColumns; column < columns; column += 2) {
        Sensor& sensor = data.sensors[(column - fixedColumns) / 2];
        sensor.value = static_cast<float>(query.value(column).toDouble());
        sensor.status = static_cast<qint8>(query.value(column + 1).toInt());
    }
    return true;
}

} // namespace

bool readLastData(MobData& data, QSqlDatabase const& db)
{
    readState(data, db, QStringLiteral("archive.lastdata WHERE id_object = %1 ").arg(objectText(data)));
    return true;
}

bool readPrevData(MobData& data, unsigned int before, unsigned int depth, QSqlDatabase const& db)
{
    return readState(data, db,
                     QStringLiteral("archive.master_table WHERE id_object = %1 and time_unix < %2 and time_unix >= %3 "
                                    "ORDER by time_unix DESC LIMIT 1")
                         .arg(objectText(data), QString::number(before), QString::number(before - depth)));
}
