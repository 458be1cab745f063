// Checks a terminal's packet and turns it into a report.

#include <Pardel/pardel.h>

#include <QTextStream>

int main()
{
    QTextStream out(stdout);

    // Object 17 at 55 degrees 45.5 minutes north, 37 degrees 37 minutes east; then a status and a supply record.
    QByteArray packet = QByteArray::fromHex("a4d50000112000 010f0bf0c20d21a0354616275c00b95569 02020c3141b2 bf11");

    // The last two bytes, high byte first, are the checksum of the rest. The parser leaves that to its caller.
    const quint16 sent = quint16(quint8(packet.at(packet.size() - 2)) << 8 | quint8(packet.at(packet.size() - 1)));
    if (CRC_CCITT(packet.left(packet.size() - 2), false) != sent) {
        out << "the checksum is wrong\n";
        return 1;
    }

    MobData report;               // fresh: the parser adds to it
    QList<MobData> further;       // additional reports of the same packet
    QList<QByteArray> rawRecords; // records that the application interprets itself
    QList<QByteArray> rawExtra;
    bool statusBit = false;
    TUtils::ParceOB1(packet, report, statusBit, &further, &rawRecords, &rawExtra, true);

    out << "object " << report.idObject << " at " << report.latitude / 1e7 << ", " << report.longitude / 1e7
        << " drives " << report.speed << " km/h, alarm: " << (TUtils::isAlarm(report) ? "yes" : "no") << "\n";
    for (const Sensor& sensor : report.sensors)
        out << "  sensor " << sensor.type << " = " << sensor.value << (sensor.status ? " (raised)" : "") << "\n";
    return 0;
}
