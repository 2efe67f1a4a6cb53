#pragma once

#include <QtGlobal>

/// \file
/// Marks what the library TandryModels exports.

/// \def TANDRY_MODELS_EXPORT
/// Stands before an exported class or function.
#ifdef TandryModels_EXPORTS
#define TANDRY_MODELS_EXPORT Q_DECL_EXPORT
#else
#define TANDRY_MODELS_EXPORT Q_DECL_IMPORT
#endif
