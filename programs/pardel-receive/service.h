#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QString;
QT_END_NAMESPACE

/** What a service tells the service manager (systemd); nothing where none has started it, or without libsystemd. */
namespace Service {

void tellReady();
void tellStopping();
/** A line for people who ask for the service's state. */
void tellStatus(const QString& line);
/** That it is alive. */
void feedWatchdog();
/** How often that has to be told, in milliseconds; 0: never. */
int watchdogInterval();

} // namespace Service
