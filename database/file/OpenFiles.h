#pragma once

#include "database/file/StoreFile.h"
#include "database/sqlite/LogIndex.h"
#include "database/store/Failure.h"

#include <memory>
#include <optional>

struct sqlite3;

namespace sync::database {

/// Remembers the files that a handle has open, and checks that they are still the ones at their names.
///
/// SQLite does not check this. It continues to write to files that were removed or replaced, where no other program
/// finds the writes, and to a file that was cut. If the index of a log is missing, the next program creates another
/// one, and with two indices of one log commits overwrite each other. A file with two names has two logs.
///
/// A check takes one system call for each file, by its name. The class cannot use a descriptor of its own: closing it
/// would release the locks that SQLite holds on the file. A watch on the folder (inotify) does not suffice either: it
/// reports a cut like each write of the store itself, and it reports neither a hard link in another folder nor the
/// renaming of a folder above.
class OpenFiles
{
public:
    enum class Use
    {
        Reading,
        /// Only a file with a single name may be written.
        Writing,
    };

    explicit OpenFiles(StoreFile const& file);
    Q_DISABLE_COPY_MOVE(OpenFiles)

    /// Fails if other handles of this process have the file open with an index of its log that is no longer at its
    /// name: SQLite would let a new handle share that index. Call this before SQLite opens a file with a log.
    [[nodiscard]] Failure CheckBeforeOpening() const;

    /// Remembers the files of a handle that has read. Fails if they are not those of the other handles of this process.
    [[nodiscard]] Failure Remember(sqlite3* handle, bool hasLog);
    /// Call this before the handle is closed.
    void Forget() noexcept;

    /// The identity of the file that was remembered.
    std::optional<FileIdentity> const& identity() const noexcept { return _identity; }

    /// Fails if there is another file at the path, or none, or if the file was cut.
    [[nodiscard]] Failure CheckFile(Use use) const;
    /// The same, and for the log and its index.
    [[nodiscard]] Failure Check(Use use) const;

    /// Whether the handle, when it is closed, may write the log to the file and remove the log. If there is another log
    /// or index at the name, another program has written since, and its writes would be lost. A cut index would end
    /// this program.
    bool MayCheckpointOnClose() const noexcept;

private:
    struct Log
    {
        FileIdentity file;
        FileIdentity index;
    };
    struct Shared;

    static std::shared_ptr<Shared> Share(FileIdentity const& file, std::shared_ptr<Shared> const& own = nullptr);

    Failure FollowSize(off_t size, off_t known) const;
    Failure CheckLogIndex(Shared& shared) const;
    Failure CheckLog(FileIdentity const& log) const;

    StoreFile const& _file;
    std::optional<FileIdentity> _identity;
    std::shared_ptr<Shared> _shared;
    bool _hasLog = false;
    LogIndex _index;
};

} // namespace sync::database
