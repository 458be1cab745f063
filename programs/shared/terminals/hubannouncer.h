#pragma once

#include "packetreceiver.h"

#include <Pardel/interfaces.h>
#include <Pardel/mobdata.h>

/** Announces the reports of all terminals through the hub, and hands their packets to whoever keeps them. */
class HubAnnouncer : public PacketReceiver
{
public:
    /** @p hub is not owned and has to outlive this. */
    explicit HubAnnouncer(DataPumpNotifyer& hub) : m_hub(hub) {}

    /** @p keeper is not owned; null: nobody keeps packets. */
    void setKeeper(PacketReceiver* keeper) { m_keeper = keeper; }

    void takePacket(const QByteArray& packet) override
    {
        if (m_keeper)
            m_keeper->takePacket(packet);
    }

    void takeReport(const MobData& report) override
    {
        MobData announced = report; // whoever hears of it may change it
        m_hub.OnDataRecieved(announced);
    }

private:
    DataPumpNotifyer& m_hub;
    PacketReceiver* m_keeper = nullptr;
};
