#pragma once

#include "database/store/Failure.h"

#include <QtGlobal>

namespace sync::database {

class StoreFile;

/// The header of a database file, by which a store is recognised.
class StoreHeader
{
public:
    /// The first bytes of the file that holds a store's place while a backup is being restored; see `StoreRestore`.
    static constexpr char const* RestoreNotice = "Tandry: a backup is being restored here";

    /// Reads the header. If the file is shorter, the missing bytes are zero. Changes nothing.
    [[nodiscard]] Failure Read(StoreFile const& file);

    /// Fails if the file cannot be a store that this version opens or upgrades.
    [[nodiscard]] static Failure Check(StoreFile const& file);

    bool usesLog() const { return _bytes[19] == 2; }
    /// The length of the file in bytes, without pages that are only in a log.
    qint64 length() const;
    bool isRestoreNotice() const;

private:
    static constexpr int Size = 100;

    bool isBlank() const;
    bool isSqlite() const;
    qint32 version() const;
    qint32 applicationId() const;

    char _bytes[Size] = {};
};

} // namespace sync::database
