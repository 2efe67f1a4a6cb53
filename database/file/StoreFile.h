#pragma once

#include "database/OpenOptions.h"
#include "database/sqlite/Failure.h"
#include "database/sqlite/SqliteHandle.h"

#include <QByteArray>
#include <QString>

#include <optional>

#include <sys/stat.h>

namespace sync::database {

class NewFile;

/// Which file a name stands for.
struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
};

bool operator==(FileIdentity const& left, FileIdentity const& right);
inline bool operator!=(FileIdentity const& left, FileIdentity const& right)
{
    return !(left == right);
}

/// What shows from outside that a file, or the files beside it, changed.
struct FileStamp
{
    FileIdentity identity;
    off_t size = 0;
    timespec modified = {};
    bool hasLog = false;
};

bool operator==(FileStamp const& left, FileStamp const& right);
inline bool operator!=(FileStamp const& left, FileStamp const& right)
{
    return !(left == right);
}

/// The file of a store as others see it: what it is, whether it may be opened, how it comes into being.
class StoreFile
{
public:
    explicit StoreFile(QString const& path);

    /// The file while it bears another name on the disk. Errors name the path that it is meant for.
    StoreFile Under(QByteArray const& name) const;

    QString const& path() const { return _path; }
    /// The name as the operating system takes it.
    char const* name() const { return _name.constData(); }

    /// Why the path can be no file's name here, or nothing when it can.
    Failure CheckName() const;
    /// Whether nothing at all stands at the path.
    bool IsMissing() const noexcept;
    /// Whether nothing can be seen at the path, nor what the engine would take for the log or the journal of a store
    /// there.
    bool IsFree() const;

    /// Which file stands at the path, and which is its log; nothing where there is none or none can be seen.
    std::optional<FileIdentity> Identity() const noexcept;
    std::optional<FileIdentity> LogIdentity() const noexcept;
    std::optional<FileStamp> Stamp() const noexcept;
    /// Whether a rollback journal stands beside the file.
    bool HasJournal() const noexcept;

    /// Why the file can be no store that this version opens or brings up to date, as far as its header shows. Changes
    /// nothing.
    Failure CheckHeader() const;
    /// Whether the end of the file is missing, as far as it can't be in the log. The engine overlooks less than a page.
    Failure CheckLength(sqlite3* handle) const;

    /// Makes a store under another name and puts it in place. Succeeds as well when somebody else's got there first.
    Failure Make(JournalMode mode) const;

    /// A handle that makes no file and changes no byte of the store. Where there is no log, the engine takes the file
    /// for one that nobody writes, and `stamp` is what it looked like; it is empty otherwise. Fails where a log or a
    /// journal that a program left behind would have to be worked off first.
    Failure OpenForReading(SqliteHandle& handle, std::optional<FileStamp>& stamp) const;

    /// Turns a store with a log into one with a journal, for a place where a log doesn't work. The engine's code.
    int ConvertToJournal() const;

private:
    struct Header;

    StoreFile(QString const& path, QByteArray const& name);

    Failure ReadHeader(Header& header) const;
    Failure MakeAs(QByteArray const& temporary, JournalMode mode) const;
    Failure PutInPlace(NewFile const& file) const;

    QString _path;
    QByteArray _name;
    QByteArray _logName;
    QByteArray _journalName;
};

} // namespace sync::database
