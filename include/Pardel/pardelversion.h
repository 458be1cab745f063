#pragma once

#include <Pardel/pardel_export.h>

#include <QString>

/** @file
 * Which build of the library is loaded.
 */

/**
 * The build identifier of the loaded library: release number, a dot, source revision (sequence number, colon, first 12
 * hexadecimal digits of the revision's identifier), for example "5.4.574:c665e0a46fa2".
 *
 * Needs no application object and no initialisation; every call gives the same text.
 */
PARDEL_EXPORT QString getPardelVersion();
