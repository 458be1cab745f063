#pragma once

#include <QtGlobal>

/**
 * Type codes that the library itself gives a meaning or derives from a field of another name. All other codes belong to
 * the applications and stand in the parser as the numbers of the wire format.
 */
namespace SensorType {

constexpr qint16 supplyState = 13;   // bits 4 and 5 of the status byte
constexpr qint16 movementState = 14; // bits 1 and 2 of the status byte
constexpr qint16 alarm = 15;
constexpr qint16 odometer = 20;
constexpr qint16 kind = 49;
constexpr qint16 temperature = 50;
constexpr qint16 origin = 54;
constexpr qint16 preciseTemperature = 56;
constexpr qint16 firstInput = 57; // to 60: bits 1 to 4 of tag 95
constexpr qint16 externalSupply = 65;

} // namespace SensorType
