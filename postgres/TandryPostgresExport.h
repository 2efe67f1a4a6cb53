#pragma once

#include <QtGlobal>

/// \file
/// Marks what the library TandryPostgres exports.

/// \def TANDRY_POSTGRES_EXPORT
/// Stands before an exported class or function.
#ifdef TandryPostgres_EXPORTS
#define TANDRY_POSTGRES_EXPORT Q_DECL_EXPORT
#else
#define TANDRY_POSTGRES_EXPORT Q_DECL_IMPORT
#endif
