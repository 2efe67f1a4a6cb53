#pragma once

#include "database/file/FileIdentity.h"
#include "database/store/Failure.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>
#include <vector>

namespace sync::database {

/// SQLite appends these to a database's name for the files beside it.
constexpr char const* LogSuffix = "-wal";
constexpr char const* LogIndexSuffix = "-shm";
constexpr char const* JournalSuffix = "-journal";
constexpr char const* SuffixesBeside[] = {LogSuffix, LogIndexSuffix, JournalSuffix};
/// All files of a database, the database itself first.
constexpr char const* DatabaseSuffixes[] = {"", LogSuffix, LogIndexSuffix, JournalSuffix};

/// A restore appends this to the name of the earlier store, and a number if the name is taken.
constexpr char const* KeptSuffix = ".replaced";

/// The name of a store's file; looks up the file and those beside it.
class StoreFile
{
public:
    /// REQUIRES: a path that `AbsolutePath` returned, or one with letters appended.
    explicit StoreFile(QString const& path);

    /// Returns the store with this path, or else the first with a number appended to it, whose names are free.
    static StoreFile FirstFree(QString const& path);
    /// Returns that store, and before it the ones that are taken.
    static std::vector<StoreFile> UpToFirstFree(QString const& path);

    /// Returns the same store while its file has another name. Errors still name the path.
    StoreFile WithName(QByteArray const& name) const;

    /// The absolute path.
    QString const& path() const { return _path; }
    /// The path in the operating system's encoding. Symbolic links are resolved as far as there are files: SQLite names
    /// the files beside the database after the target of the links.
    char const* name() const { return _name.constData(); }
    /// The name of the folder that holds the file.
    QByteArray folder() const;
    /// Whether the path leads through a symbolic link.
    bool isLinked() const { return _name != _given; }

    /// Fails if the path is too long for SQLite.
    Failure CheckName() const;
    /// Fails also if SQLite would take a new file of this name for the log, its index or the journal of another file.
    Failure CheckNewName() const;
    /// Whether there is nothing at the path.
    bool IsMissing() const noexcept;
    /// The paths of the log, its index and the journal beside the file, as far as they exist.
    QStringList FilesBeside() const;
    /// The other names that a restore gave to these files before it was interrupted.
    QVector<QByteArray> NamesOfInterruptedRestore() const;
    /// Whether this process finds nothing at the path, nor beside it.
    bool IsFree() const;
    /// Whether there is a file at the path with the suffix appended.
    bool Exists(char const* suffix) const;
    /// Whether there is a write-ahead log beside the file that is not empty.
    bool HasFilledLog() const noexcept;

    /// Return nothing if there is no such file, or if this process may not look it up. The first two use the path as it
    /// was given.
    std::optional<FileStatus> Status() const noexcept;
    std::optional<FileIdentity> Identity() const noexcept;
    std::optional<FileStatus> LogStatus() const noexcept;
    std::optional<FileStatus> LogIndexStatus() const noexcept;
    std::optional<FileStamp> Stamp() const noexcept;

private:
    StoreFile(QString const& path, QByteArray const& name);

    QString _path;
    QByteArray _given;
    QByteArray _name;
    QByteArray _logName;
    QByteArray _logIndexName;
};

} // namespace sync::database
