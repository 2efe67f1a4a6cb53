#pragma once

#include <QtGlobal>

/// \file
/// Marks what the library TandryDatabase exports.

/// \def TANDRY_DATABASE_EXPORT
/// Stands before an exported class or function.
#ifdef TandryDatabase_EXPORTS
#define TANDRY_DATABASE_EXPORT Q_DECL_EXPORT
#else
#define TANDRY_DATABASE_EXPORT Q_DECL_IMPORT
#endif
