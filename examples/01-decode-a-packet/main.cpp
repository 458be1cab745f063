// Cuts a terminal's bytes into packets and turns these into reports.

#include <Pardel/pardel.h>

#include <QTextStream>

#include <utility>

int main()
{
    QTextStream out(stdout);

    // Two bytes of noise. Then a packet: object 17 at 55 degrees 45.5 minutes north, 37 degrees 37 minutes east, a
    // status and a supply record. Then the same once more, with its last byte damaged.
    PacketFramer framer;
    framer.feed(QByteArray::fromHex("0d0a"));
    framer.feed(QByteArray::fromHex("a4d50000112000 010f0bf0c20d21a0354616275c00b95569 02020c3141b2 bf11"));
    framer.feed(QByteArray::fromHex("a4d50000112000 010f0bf0c20d21a0354616275c00b95569 02020c3141b2 bf12"));
    framer.finish(); // on a live connection: pause(), when nothing has come for a while

    for (PacketFramer::Frame frame; framer.next(frame);) {
        if (frame.kind == PacketFramer::Frame::Skipped) {
            out << frame.size << " bytes at offset " << frame.offset << " are in no packet\n";
            continue;
        }
        if (frame.kind == PacketFramer::Frame::Damaged) {
            out << "the checksum of " << frame.size << " bytes at offset " << frame.offset << " is wrong\n";
            continue;
        }
        QByteArray packet = frame.toByteArray();
        MobData report;               // fresh: the parser adds to it
        QList<MobData> further;       // additional reports of the same packet
        QList<QByteArray> rawRecords; // records that the application interprets itself
        QList<QByteArray> rawExtra;
        bool statusBit = false;
        TUtils::ParceOB1(packet, report, statusBit, &further, &rawRecords, &rawExtra, true);

        out << "object " << report.idObject << " at " << report.latitude / 1e7 << ", " << report.longitude / 1e7
            << " drives " << report.speed << " km/h, alarm: " << (TUtils::isAlarm(report) ? "yes" : "no") << "\n";
        for (const Sensor& sensor : std::as_const(report.sensors))
            out << "  sensor " << sensor.type << " = " << sensor.value << (sensor.status ? " (raised)" : "") << "\n";
    }
    return 0;
}
