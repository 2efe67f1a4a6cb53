#pragma once

#include "tools/findings/StoreLocation.h"

#include <QString>

#include <memory>

namespace sync::database {
class StoreFactory;
struct OpenOptions;
struct StoreError;
} // namespace sync::database

namespace tandryctl {

/// What to do instead of a command or an option that works on files alone.
constexpr char const* CopyToAFile = "copy the profile to a file with 'tandryctl copy', and do it there";

/// A profile that is open, on a server of PostgreSQL.
struct ServerStore
{
    std::shared_ptr<sync::database::StoreFactory> store;
    /// Host, database and profile, without the user and the password.
    QString name;
};

using tandry::findings::IsOnServer;

/// Throws if the URI of a profile contains a password. Every user of the machine can read command lines.
void RefusePassword(QString const& store);

/// Opens a profile. Returns no store on failure, and sets `error`. Throws if the module for PostgreSQL is missing.
ServerStore
OpenOnServer(QString const& uri, sync::database::OpenOptions const& options, sync::database::StoreError& error);

/// Opens a profile for reading as it is at this moment: it does not show what is written meanwhile.
ServerStore OpenStateOnServer(QString const& uri, sync::database::StoreError& error);

/// Switches the notices of a profile. Returns false on failure.
bool SetNoticesOnServer(sync::database::StoreFactory& profile, bool on);

} // namespace tandryctl
