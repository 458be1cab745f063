#include "service.h"

#include <QString>

#if PARDEL_HAS_SYSTEMD
#include <systemd/sd-daemon.h>

void Service::tellReady()
{
    sd_notify(0, "READY=1");
}

void Service::tellStopping()
{
    sd_notify(0, "STOPPING=1");
}

void Service::tellStatus(const QString& line)
{
    sd_notify(0, qPrintable(QLatin1String("STATUS=") + line));
}

void Service::feedWatchdog()
{
    sd_notify(0, "WATCHDOG=1");
}

int Service::watchdogInterval()
{
    uint64_t microseconds = 0;
    // Three times in the time after which the manager would end it.
    return sd_watchdog_enabled(0, &microseconds) > 0 ? static_cast<int>(microseconds / 3000) : 0;
}
#else
void Service::tellReady() {}

void Service::tellStopping() {}

void Service::tellStatus(const QString& line)
{
    Q_UNUSED(line)
}

void Service::feedWatchdog() {}

int Service::watchdogInterval()
{
    return 0;
}
#endif
