#pragma once

#include "database/OpenOptions.h"
#include "database/StoreError.h"
#include "database/StoreFactory.h"
#include "database/TandryDatabaseExport.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace sync::database {

class SqliteStore;

/// A store in one SQLite file.
///
/// Any thread may call any operation: each thread gets a connection of its own at its first use, closed when the thread
/// ends or the factory is destroyed. Queries, scopes and client transactions belong to the thread that made them.
/// Operations on queries and database objects that outlive the factory fail; an open client transaction is rolled back,
/// an open scope keeps what it wrote. A child process made by `fork` must not use the store.
///
/// Writes, commits and new connections look whether the file, its log and the log's index (`-shm`) still stand at their
/// names as they were, and fail if one was removed, replaced or cut. A file with several names (hard links) can only be
/// read. Reads do not look: they go on with the old files, and if the index was cut in place, SIGBUS ends the program
/// at the next read, or at the next write of an open transaction. What happens between the last look and the end of the
/// commit is noticed at the next write.
class TANDRY_DATABASE_EXPORT SqliteDatabaseFactory : public StoreFactory,
                                                     public std::enable_shared_from_this<SqliteDatabaseFactory>
{
    Q_OBJECT

public:
    /// Opens the store, or creates it as `options.mode` says. Returns null on failure; `error`, unless null, then names
    /// the file and the reason, and the file is unchanged. The path is made absolute by `AbsolutePath`. Refused are
    /// paths that it refuses, folders, files that are no store or belong to another application, damaged, emptied and
    /// newer stores, and paths without the rights to them; stores with a table, view, trigger or index that neither
    /// this library nor SQLite creates, so a client must not create any except temporary ones; a log or a journal
    /// (`-wal`, `-shm`, `-journal`) that another user has put beside the store, or that an earlier store of the name
    /// has left; and, for writing, stores of another user, unless the process is root's. A new store is readable and
    /// writable by its owner only and appears whole. An opening for writing takes all rights of others on an existing
    /// store, its log and its journal.
    ///
    /// A store of an older version is upgraded first, each version in one transaction, and a copy of the older store
    /// stays beside it, named after the file with ".version-" and the version appended. The store is refused if no copy
    /// can be made, and in `OpenMode::ReadOnly`.
    [[nodiscard]] static std::shared_ptr<SqliteDatabaseFactory>
    Open(QString const& path, QString* error = nullptr, OpenOptions const& options = {});

    /// The same; on failure sets `error`, with code and kind, and leaves it alone otherwise.
    [[nodiscard]] static std::shared_ptr<SqliteDatabaseFactory>
    Open(QString const& path, StoreError& error, OpenOptions const& options = {});

    ~SqliteDatabaseFactory() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

    /// Returns the store's file as an absolute path.
    [[nodiscard]] QString path() const;
    /// Returns the store's journal mode, which may differ from the one in the options.
    [[nodiscard]] JournalMode journalMode() const;

    /// Returns what `Open` found that does not keep the store from being used but that its user should know, in one
    /// text each. So far this is a write-ahead log that a killed program left behind and that was spoilt since: SQLite
    /// drops the commits behind the spoilt place without an error, though their writes were answered with true. The
    /// text names the log and how many commits are lost. A log that was cut leaves no trace. A store that is opened for
    /// reading only is not looked at.
    [[nodiscard]] QStringList openingWarnings() const;

    /// Copies one committed state of the store into a new file, while others may write. The copy is a store of its own,
    /// readable and writable by its owner only; it appears whole, checked for damage and flushed to the disk. It
    /// belongs to the user of the process, or to the store's owner if that user is root; so does the copy of an
    /// upgrade.
    ///
    /// Returns false on failure; `error`, unless null, then names the file and the reason, and so does `LastError`. No
    /// copy exists then, except if only the flush of its folder failed: the copy is whole, but a power cut may remove
    /// it. An existing file is never replaced. A name beside which an earlier store has left a log or a journal is
    /// refused, and so is a name that SQLite uses for its files beside this store or another file. A thread with an
    /// open client transaction, or with a scope that has written, is refused.
    [[nodiscard]] bool Backup(QString const& path, QString* error = nullptr);

    /// Puts a backup in the place of the store at `path`, which no process may have open and which need not exist. A
    /// backup is any store, also of an older version, that was written by `Backup` or closed in an orderly way; it
    /// stays as it is. Returns the path under which the earlier store is kept, with the files beside it: `path` with
    /// ".replaced" and perhaps a number appended; empty if there was none.
    ///
    /// Returns nothing on failure, and sets `error`: the earlier store is then in its place, or, if the files beside it
    /// could not be removed, a notice that no opening takes for a store. A process that is killed leaves the earlier
    /// store, the notice or the new store, each whole; after a notice, restore again. Whether a process has the store
    /// open is known for processes of this machine that use this library, and for all that use a write-ahead log.
    [[nodiscard]] static std::optional<QString> Restore(QString const& backup, QString const& path, StoreError& error);

    /// Reads the whole store and returns what is damaged in it, one text for each fault. Returns nothing if the store
    /// could not be read to its end; `error`, unless null, then names the file and the reason, and so does `LastError`.
    /// A thread with an open client transaction, or with a scope that has written, is refused.
    [[nodiscard]] std::optional<QStringList> FindDamage(QString* error = nullptr);

    [[nodiscard]] std::optional<StoreError> LastError() const override;
    void ClearError() override;

private:
    explicit SqliteDatabaseFactory(std::shared_ptr<SqliteStore> store);

    /// Runs an operation with the calling thread's connection; records its failure, and puts the text into `error`.
    template <class Operation>
    bool Answer(QString* error, Operation const& operation);

    std::shared_ptr<SqliteStore> _store;
};

} // namespace sync::database
