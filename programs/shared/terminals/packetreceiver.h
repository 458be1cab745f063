#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QByteArray;
QT_END_NAMESPACE

struct MobData;

/** Who takes what terminals send to a TerminalServer. */
class PacketReceiver
{
public:
    virtual ~PacketReceiver() = default;

    /** Whether this object's packets are taken; asked for each packet that passed its checks. */
    virtual bool letsIn(quint32 object)
    {
        Q_UNUSED(object)
        return true;
    }
    /** A packet as it came, that passed its checks or is of the 545-byte form; its reports follow. */
    virtual void takePacket(const QByteArray& packet) { Q_UNUSED(packet) }
    /** A report of the packet taken last: its further reports in their order, then its own. */
    virtual void takeReport(const MobData& report) { Q_UNUSED(report) }
};
