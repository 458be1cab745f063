#include "statecolumns.h"

#include "archiveschema.h"

QByteArray StateColumns::names(const Types& types)
{
    QByteArray columns = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4";
    for (int type = 0; type < ArchiveBatch::typeCount; ++type) {
        if (types[static_cast<std::size_t>(type)])
            columns += ", " + ArchiveSchema::valueColumn(type) + ", " + ArchiveSchema::statusColumn(type);
    }
    return columns;
}

void StateColumns::appendSensors(CopyRows& rows, const Types& types, const Sensor* next, const Sensor* end)
{
    for (int type = 0; type < ArchiveBatch::typeCount; ++type) {
        if (!types[static_cast<std::size_t>(type)])
            continue;
        if (next != end && next->type == type) {
            rows.append(next->value);
            rows.append(static_cast<qint16>(next->status));
            ++next;
        } else {
            rows.appendNull();
            rows.appendNull();
        }
    }
}
