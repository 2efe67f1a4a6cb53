#pragma once

#include "database/file/StoreFile.h"
#include "database/sqlite/Failure.h"
#include "database/sqlite/LogIndex.h"

#include <memory>
#include <optional>

struct sqlite3;

namespace sync::database {

/// The files that a handle has open, and whether they still stand at their names as they were.
///
/// SQLite does not look: it goes on writing to files that were removed or replaced, where no other program finds it,
/// and to a file that was cut. If the index of a log is missing, the next program makes another one, and two indices of
/// one log let commits overwrite each other. A file with two names has two logs.
///
/// A look costs one system call for each file, by its name. A descriptor of one's own on the file would not do: to
/// close it drops the locks that SQLite holds on the file.
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

    /// Fails if other handles of this process have the file open with an index of its log that does not stand at the
    /// name here: SQLite would let a new handle share it. To be called before SQLite opens a file with a log.
    [[nodiscard]] Failure CheckBeforeOpening() const;

    /// Remembers the files of a handle that has read. Fails if they are not those of the other handles of this process.
    [[nodiscard]] Failure Remember(sqlite3* handle, bool hasLog);
    /// To be called before the handle is closed.
    void Forget() noexcept;

    /// The file that stood at the path when it was remembered.
    std::optional<FileIdentity> const& identity() const noexcept { return _identity; }

    /// Fails if another file stands at the path, or none, or if the file was cut.
    [[nodiscard]] Failure CheckFile(Use use) const;
    /// The same, and for the log and its index.
    [[nodiscard]] Failure Check(Use use) const;

    /// Whether the handle may write the log to the file and remove it when it is closed. If another log or index stands
    /// at the name, another program has gone on writing, and it would lose that; a cut index would end the program.
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
