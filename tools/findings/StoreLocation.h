#pragma once

#include <QString>

namespace tandry::findings {

/// The environment variable that names the store where no option does.
constexpr char const* StoreVariable = "TANDRY_STORE";

/// Returns the file of the user's own store, "tandry.db" in the user's data folder. It need not exist.
QString OwnStorePath();

/// Whether a store's name is the URI of a profile on a server, and not the name of a file. Also true for names in
/// another form of libpq's that contain a password: a message would show the name of a file.
bool IsOnServer(QString const& store);

} // namespace tandry::findings
