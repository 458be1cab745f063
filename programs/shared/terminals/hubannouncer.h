#pragma once

#include "packetreceiver.h"

#include <Pardel/interfaces.h>
#include <Pardel/mobdata.h>

/** Announces the reports of all terminals through the hub, and keeps nothing. */
class HubAnnouncer : public PacketReceiver
{
public:
    /** @p hub is not owned and has to outlive this. */
    explicit HubAnnouncer(DataPumpNotifyer& hub) : m_hub(hub) {}

    void takeReport(const MobData& report) override
    {
        MobData announced = report; // whoever hears of it may change it
        m_hub.OnDataRecieved(announced);
    }

private:
    DataPumpNotifyer& m_hub;
};
