#pragma once

#include "Compaction.h"
#include "OpenOptions.h"
#include "StoreChanges.h"
#include "StoreError.h"
#include "StoreFactory.h"
#include "TandryDatabaseExport.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace sync::database {

class SqliteStore;

/// A store in one SQLite file.
///
/// Any thread may call any operation: each thread gets a connection of its own at its first use, closed when the thread
/// ends or the factory is destroyed. Queries, scopes and client transactions belong to the thread that created them.
/// When the factory is destroyed, open client transactions are rolled back, open scopes keep their writes, and later
/// operations on queries and database objects fail. A child process created by `fork` must not use the store.
///
/// Writes, commits and new connections check that the file, its log and the log's index (`-shm`) are still the same,
/// and fail if one was removed, replaced or cut. A change between the last check and the end of the commit is detected
/// at the next write. Reads do not check: they continue to read the old files, and if the index was cut in place,
/// SIGBUS ends the program at the next read, or at the next write of an open transaction. A file with several names
/// (hard links) can only be read.
class TANDRY_DATABASE_EXPORT SqliteDatabaseFactory : public StoreFactory,
                                                     public std::enable_shared_from_this<SqliteDatabaseFactory>
{
    Q_OBJECT

public:
    /// Opens the store, or creates it if `options.mode` says so. Returns null on failure; `error`, unless null, then
    /// names the file and the reason, and the file is unchanged. `AbsolutePath` makes the path absolute.
    ///
    /// Fails for
    /// - paths for which `AbsolutePath` fails, paths without the necessary rights, and folders;
    /// - files that are no store or belong to another application, and damaged, emptied and newer stores;
    /// - stores with a table, view, trigger or index that neither this library nor SQLite creates, so a client must not
    ///   create any except temporary ones;
    /// - stores beside which another user has put a log or a journal (`-wal`, `-shm`, `-journal`), and new stores
    /// beside
    ///   which an earlier store of this name has left one;
    /// - for writing, stores of another user, unless the process is root's.
    ///
    /// A new store is readable and writable by its owner only and appears whole. Opening an existing store for writing
    /// removes all rights of others to the store, its log and its journal.
    ///
    /// A store of an older version is upgraded first, each version in one transaction, and a copy of the older store
    /// stays beside it, named after the file with ".version-" and the version appended. Opening it fails if no copy can
    /// be made, and in `OpenMode::ReadOnly`.
    [[nodiscard]] static std::shared_ptr<SqliteDatabaseFactory>
    Open(QString const& path, QString* error = nullptr, OpenOptions const& options = {});

    /// The same. On failure sets `error`, with code and kind; otherwise leaves it unchanged.
    [[nodiscard]] static std::shared_ptr<SqliteDatabaseFactory>
    Open(QString const& path, StoreError& error, OpenOptions const& options = {});

    ~SqliteDatabaseFactory() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;

    /// Returns a new query for one statement of SQLite.
    ///
    /// Values: integers of any C++ type up to 63 bits and `bool`; `float` and `double` other than NaN; `QString`;
    /// `QByteArray`; `QDateTime`, stored as the milliseconds of its clock reading. A null or invalid value of any type
    /// is NULL. Placeholders are compared by case. These fail at `exec`: a value of another type, a text with a lone
    /// surrogate, a name that the statement does not contain.
    ///
    /// Statements that also fail: several in one text; one that writes and returns rows (`RETURNING`); `BEGIN`,
    /// `COMMIT`, `ROLLBACK` and savepoints; `ATTACH` and `DETACH`; `PRAGMA` with an argument.
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

    /// Returns the store's file as an absolute path.
    [[nodiscard]] QString path() const;
    /// Returns the store's journal mode, which may differ from the one in the options.
    [[nodiscard]] JournalMode journalMode() const;

    /// Returns the warnings of `Open`, one text each: the store can be used, but its user should know of them. The only
    /// warning so far is about a write-ahead log that a killed program left behind and that was damaged since: SQLite
    /// drops the commits behind the damage without an error, although their writes returned true. The text names the
    /// log and the number of lost commits. A log that was cut causes no warning, nor does a store that is opened for
    /// reading only.
    [[nodiscard]] QStringList openingWarnings() const;

    /// Copies one committed state of the store into a new file, while others may write. The copy is a store of its own,
    /// readable and writable by its owner only; it appears whole, checked for damage and flushed to the disk. It
    /// belongs to the user of the process, or to the store's owner if that user is root; so does the copy of an
    /// upgrade.
    ///
    /// Returns false on failure; `error`, unless null, then names the file and the reason, and so does `LastError`. No
    /// copy exists then, except if only the flush of its folder failed: the copy is whole, but a power cut may remove
    /// it.
    ///
    /// Never replaces an existing file. Fails if an earlier store of this name has left a log or a journal, if SQLite
    /// uses the name for its files beside this store or another file, and if the calling thread has an open client
    /// transaction or a scope that has written.
    [[nodiscard]] bool Backup(QString const& path, QString* error = nullptr);
    /// Returns false where `Backup` would, as far as that can be seen without creating a file: it reads the store, but
    /// does not know whether there is room for the copy.
    [[nodiscard]] bool DryRunBackup(QString const& path, QString* error = nullptr);

    /// Puts a backup in the place of the store at `path`, which no process may have open. There need not be a store. A
    /// backup is any store, also of an older version, that was written by `Backup` or closed in an orderly way; it
    /// is not changed. Returns the path to which the earlier store was moved, together with the files beside it: `path`
    /// with ".replaced" and, if that name is taken, a number appended. Returns an empty path if there was no store.
    ///
    /// Returns nothing on failure, and sets `error`. The earlier store is then in its place or, if the files beside it
    /// could not be removed, a notice that every opening refuses. A process that is killed leaves the earlier store,
    /// the notice or the new store, each whole; after a notice, restore again. The function detects that a process has
    /// the store open if the process runs on this machine and uses this library, or if the store has a write-ahead log.
    [[nodiscard]] static std::optional<QString> Restore(QString const& backup, QString const& path, StoreError& error);
    /// Returns what `Restore` would, as far as that can be seen without creating a file: it reads the backup, but does
    /// not know whether there is room for the copy.
    [[nodiscard]] static std::optional<QString>
    DryRunRestore(QString const& backup, QString const& path, StoreError& error);

    /// Gives the space of removed rows back to the disk, by rebuilding the file in one transaction. No row and no id
    /// changes. Needs as much memory as the rows take, and as much room in the store's folder, which it checks first.
    /// Others may read meanwhile, except from a store with a journal; writers wait as for any other transaction.
    ///
    /// Returns nothing on failure; `error`, unless null, then names the file and the reason, and so does `LastError`.
    /// The store is then as it was, and so it is if the process is killed before the end of the transaction. Fails if
    /// the calling thread has an open client transaction or a scope that has written.
    [[nodiscard]] std::optional<Compaction> Compact(CompactionProgress const& progress = {}, QString* error = nullptr);

    /// Reads the whole store and returns what is damaged in it, one text for each fault. Returns nothing if the store
    /// could not be read to its end; `error`, unless null, then names the file and the reason, and so does `LastError`.
    /// Fails if the calling thread has an open client transaction or a scope that has written.
    [[nodiscard]] std::optional<QStringList> FindDamage(QString* error = nullptr);

    [[nodiscard]] std::optional<StoreError> LastError() const override;
    void ClearError() override;

    /// The object has a connection of its own, shares the store and keeps its file open; destroy it on a thread that
    /// may use the store. The notices come from the operating system, so a commit on another machine, to a file on a
    /// network drive, is found only together with the next commit on this one. A renamed folder above the store's own
    /// is found then, too.
    ///
    /// For the commits of this process, the tables are those of which rows were inserted, changed or removed. `Compact`
    /// counts as a change of all tables.
    [[nodiscard]] std::unique_ptr<StoreChanges> WatchChanges() override;

private:
    explicit SqliteDatabaseFactory(std::shared_ptr<SqliteStore> store);

    /// Runs an operation with the calling thread's connection; records its failure, and puts the text into `error`.
    template <class Operation>
    bool Answer(QString* error, Operation const& operation);

    std::shared_ptr<SqliteStore> _store;
};

} // namespace sync::database
