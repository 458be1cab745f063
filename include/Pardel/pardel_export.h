#pragma once

#include <QtGlobal>

/** @file
 * How the library's interface is exported.
 */

/**
 * Marks what belongs to the interface of libPardel. Everything else in the library is hidden, but for the two functions
 * that Qt makes for the images, qInitResources_common and qCleanupResources_common.
 */
#if defined(PARDEL_LIBRARY)
#define PARDEL_EXPORT Q_DECL_EXPORT
#else
#define PARDEL_EXPORT Q_DECL_IMPORT
#endif
