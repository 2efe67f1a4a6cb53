#pragma once

#include "TandryConfigurationExport.h"

namespace sync::config {

/// Registers the records, links and enumerations, and vectors and lists of records, with Qt's meta-type system, under
/// their names with namespaces. Queued calls by name, queued connections by `SIGNAL` and `SLOT`,
/// `QMetaMethod::returnType` and QML then know them.
///
/// The constructors of managers call this. A program calls it only if it looks types up by name before it has made a
/// manager. Any thread may call it, and more than once. `QVariant` and queued connections by member function need no
/// registration.
TANDRY_CONFIGURATION_EXPORT void RegisterMetaTypes();

/// Lets a `QVariant` with an enumeration of a record turn into a text, as item views ask for it: "out of sync", or the
/// number of a value that has no name. Leaves a conversion alone that the program has registered before.
///
/// For programs: no operation of the libraries calls this. Any thread may call it, and more than once.
TANDRY_CONFIGURATION_EXPORT void RegisterEnumerationTexts();

} // namespace sync::config
