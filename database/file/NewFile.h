#pragma once

#include "database/file/StoreFile.h"
#include "database/file/StoreOwner.h"
#include "database/sqlite/SqliteHandle.h"
#include "database/store/Failure.h"

#include <QByteArray>
#include <QtGlobal>

#include <optional>

namespace sync::database {

/// A database file that is written under a temporary name in its folder and gets its own name once it is whole. What
/// was not published is removed with the object.
class NewFile
{
public:
    explicit NewFile(StoreFile const& target);
    ~NewFile();
    Q_DISABLE_COPY_MOVE(NewFile)

    /// Sets `isTaken` if a file of the name exists. If none does, fails if the log, its index or the journal of an
    /// earlier one is still there: SQLite would play it into the new file. Fails also if the name is the one that these
    /// have for another file.
    [[nodiscard]] Failure CheckTarget(bool& isTaken) const;

    /// Fails if the folder does not exist or may not be written, as `Create` would.
    [[nodiscard]] Failure CheckFolder() const;

    /// Creates the file, empty, readable and writable by its owner only: the user of the process, or the given one if
    /// root runs it.
    [[nodiscard]] Failure Create(std::optional<FileOwner> const& owner = {});

    /// The file under its temporary name. Errors name the target's path.
    StoreFile file() const { return _target.WithName(_temporary); }

    /// Opens the file as a database that keeps its journal in memory: after a failure the file is thrown away.
    [[nodiscard]] int Open(SqliteHandle& handle) const;

    /// Sets `isSame` if an ordinary file of the same owner, rights and bytes stands at the path, with nothing beside it
    /// that SQLite would take for a part of it. Fails if the bytes cannot be read.
    [[nodiscard]] Failure Compare(StoreFile const& other, bool& isSame) const;

    /// Flushes the file, gives it its own name and flushes the folder. If a file of the name exists, sets `isTaken`,
    /// succeeds and does nothing else. Fails like `CheckTarget` if it finds, with the name given and before anybody
    /// else can read the file, that a log or a journal has come meanwhile; the name is then taken back.
    ///
    /// If only the flush of the folder fails, this fails and the file stays under its own name: it is whole, and
    /// another process may already be using it; but a power cut may remove it.
    [[nodiscard]] Failure Publish(bool& isTaken) const;

    /// The same, but takes the place of a file that has the name.
    [[nodiscard]] Failure Replace() const;

private:
    Failure PutInPlace(bool& isTaken) const;
    Failure FlushName() const;
    Failure CannotCreate(int errorNumber) const;
    Failure CannotPutInPlace(int errorNumber) const;

    StoreFile const _target;
    QByteArray _temporary;
};

} // namespace sync::database
