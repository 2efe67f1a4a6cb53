#pragma once

#include <QtGlobal>

/// \file
/// Marks what the library TandryConfiguration exports.

/// \def TANDRY_CONFIGURATION_EXPORT
/// Stands before an exported class or function.
#ifdef TandryConfiguration_EXPORTS
#define TANDRY_CONFIGURATION_EXPORT Q_DECL_EXPORT
#else
#define TANDRY_CONFIGURATION_EXPORT Q_DECL_IMPORT
#endif
