#pragma once

#include <Pardel/mobdata.h>
#include <Pardel/packetframer.h>

#include <QByteArray>
#include <QList>

/** Sensors in one line: "type=value", with ":status" behind it where that is not 0, and "number#" before it where that
 * is not -1. */
QByteArray sensorsText(const QList<Sensor>& sensors);

/** A report in one line: "object latitude,longitude speed/course @time sensors". */
QByteArray reportText(const MobData& report);

/** The reports' lines, joined by " & ". */
QByteArray reportsText(const QList<MobData>& reports);

/** The report of such a line, whose words may come in any order and be left out. */
MobData reportFrom(const QByteArray& text);

/** "place:hex" for a packet, "place!hex" for a damaged one, "place-size" for what is skipped. */
QByteArray frameText(const PacketFramer::Frame& frame);

Sensor makeSensor(qint16 type, float value = 0, qint8 status = 0, qint8 number = -1);
