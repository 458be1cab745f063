// Writes reports to a stream, reads them back, and recognises a state that has been seen before.

#include <Pardel/pardel.h>

#include <QDataStream>
#include <QIODevice>
#include <QSet>
#include <QTextStream>

int main()
{
    MobData report;
    report.idObject = 17;
    report.latitude = 557583333;
    report.longitude = 376166667;
    Sensor alarm;
    alarm.type = 15;
    TUtils::lSensorAdd(&report, &alarm);

    QByteArray bytes; // a file or a socket serves as well
    QDataStream writer(&bytes, QIODevice::WriteOnly);
    for (int minute = 0; minute < 4; ++minute) {
        report.timeUnix = 1767225600 + 60 * minute;
        if (minute == 2) { // of the same type as the one above: it takes its place
            alarm.status = 15;
            TUtils::lSensorAdd(&report, &alarm);
        }
        writer << report;
    }

    QTextStream out(stdout);
    QSet<QByteArray> seen;
    QDataStream reader(bytes);
    while (!reader.atEnd()) {
        MobData read; // fresh each time: the reader appends the sensors
        reader >> read;
        if (reader.status() != QDataStream::Ok)
            return 1;
        const QByteArray state = read.hash(); // of everything but the time
        out << read.timeUnix << (seen.contains(state) ? " as before" : " new state")
            << (TUtils::isAlarm(read) ? ", alarm" : "") << "\n";
        seen.insert(state);
    }
    return 0;
}
