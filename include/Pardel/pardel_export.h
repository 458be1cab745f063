#pragma once

#include <QtGlobal>

/** @file
 * How the library's interface is exported.
 */

/** Marks what belongs to the interface of libPardel; everything else in the library is hidden. */
#if defined(PARDEL_LIBRARY)
#define PARDEL_EXPORT Q_DECL_EXPORT
#else
#define PARDEL_EXPORT Q_DECL_IMPORT
#endif
