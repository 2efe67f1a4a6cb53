#pragma once

#include "database/Failure.h"
#include "database/SqliteHandle.h"

#include <QByteArray>
#include <QString>

#include <optional>

#include <sys/stat.h>

namespace sync::database {

enum class JournalMode;

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

/// A handle that changes no byte and makes no file.
struct ReadingHandle
{
    SqliteHandle handle;
    /// Set where the engine takes the file for one that nobody writes: then it is to be seen whether that stays true.
    std::optional<FileStamp> stamp;
};

/// The file of a store as others see it: what it is, whether it may be opened, how it comes into being.
class StoreFile
{
public:
    explicit StoreFile(QString const& path);

    QString const& path() const { return _path; }
    /// The name as the operating system takes it.
    char const* name() const { return _name.constData(); }

    /// Nothing where there is no file, or none to be seen.
    std::optional<FileIdentity> Identity() const noexcept;
    std::optional<FileStamp> Stamp() const noexcept;
    /// Whether nothing at all stands at the path.
    bool IsMissing() const noexcept;

    /// Why the file can't be a store that this version opens. Leaves it and its folder as they are. What a program left
    /// behind that did not end well can't be looked into without changing it: then only the header is judged.
    Failure Check() const;

    /// Makes a store under another name and puts it in place. Succeeds as well when somebody else's got there first.
    Failure Make(JournalMode mode) const;

    /// Fails where a log without its index, or a journal, would have to be worked off first.
    Failure OpenForReading(ReadingHandle& reading) const;

private:
    struct Header;

    bool HasSidecar(char const* suffix) const noexcept;
    Failure ReadHeader(Header& header) const;
    Failure CheckOnce() const;
    Failure MakeAs(QByteArray const& temporary, JournalMode mode) const;
    Failure PutInPlace(QByteArray const& temporary) const;
    QByteArray Folder() const;
    StoreError SystemError(QString const& words, int errorNumber) const;

    QString _path;
    QByteArray _name;
};

} // namespace sync::database
