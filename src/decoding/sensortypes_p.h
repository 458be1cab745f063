#pragma once

#include <QtGlobal>

/// The one type code with a meaning of its own in the library. All others belong to the applications, and stand in the
/// parser as the numbers of the wire format that they are.
constexpr qint16 alarmSensor = 15;
