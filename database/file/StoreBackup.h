#pragma once

#include "database/file/StoreHandle.h"

namespace sync::database {

class NewFile;

/// Copies a store while others write to it.
class StoreBackup
{
public:
    StoreBackup(StoreFile source, StoreAccess access, int busyTimeoutMsec);

    /// Writes one committed state of the store into a new file, which appears whole, checked for damage and flushed. It
    /// is readable and writable by its owner only: the user of the process, or the store's owner if root runs it. Never
    /// replaces a file. Errors name the new file; see `NewFile::Publish` for the one after which it exists.
    [[nodiscard]] Failure Write(StoreFile const& target) const;

    /// The same, into a file that the caller has created and will publish.
    [[nodiscard]] Failure WriteTo(NewFile const& copy) const;

    /// Fails where `Write` would, as far as that can be seen without creating a file.
    [[nodiscard]] Failure DryRun(StoreFile const& target) const;

    /// Reads the whole source, and fails if it cannot be read or is damaged.
    [[nodiscard]] Failure CheckSource() const;

private:
    Failure Copy(NewFile const& copy) const;

    StoreFile const _source;
    StoreAccess const _access;
    int const _busyTimeoutMsec;
};

} // namespace sync::database
