#pragma once

#include <QtGlobal>

/// \file
/// Marks what the library TandryInterfaces exports.

/// \def TANDRY_INTERFACES_EXPORT
/// Stands before an exported class or function.
#ifdef TandryInterfaces_EXPORTS
#define TANDRY_INTERFACES_EXPORT Q_DECL_EXPORT
#else
#define TANDRY_INTERFACES_EXPORT Q_DECL_IMPORT
#endif
