#pragma once

#include <QString>

namespace tandry::findings {

/// The environment variable that names the store where no option does.
constexpr char const* StoreVariable = "TANDRY_STORE";

/// Returns the file of the user's own store, "tandry.db" in the user's data folder. It need not exist.
QString OwnStorePath();

} // namespace tandry::findings
