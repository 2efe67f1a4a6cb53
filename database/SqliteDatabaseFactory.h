#pragma once

#include "database/OpenOptions.h"
#include "database/StoreError.h"
#include "database/TandryDatabaseExport.h"
#include "interf/IDatabaseFactory.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace sync::database {

class SqliteStore;

/// A store in one SQLite file.
///
/// Any thread may call any operation: each gets a connection of its own at its first use, closed when the thread ends
/// or the factory goes. Queries, scopes and brackets belong to the thread that made them. What still uses the store
/// when the factory goes fails from then on; a bracket left open is rolled back, an open scope keeps what it wrote. The
/// copy that `fork` makes of a process must not use the store.
class TANDRY_DATABASE_EXPORT SqliteDatabaseFactory : public sync::interf::factory::IDatabaseFactory,
                                                     public std::enable_shared_from_this<SqliteDatabaseFactory>
{
    Q_OBJECT

public:
    /// Null when there is no store to be had, and then `error` (if given) names the file and the reason, and the file
    /// is as it was. Refused are folders, files that are no store or another application's, damaged, emptied and newer
    /// ones, and places without rights. A new store is readable and writable by its owner only and appears whole.
    ///
    /// A store of an older version is first brought up to date, each version wholly or not at all, and a copy of what
    /// it was stays beside it, named after the file with ".version-" and that version behind. Where no copy can be made
    /// the store is refused, and so it is in `OpenMode::ReadOnly`.
    [[nodiscard]] static std::shared_ptr<SqliteDatabaseFactory>
    Open(QString const& path, QString* error = nullptr, OpenOptions const& options = {});

    ~SqliteDatabaseFactory() override;

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

    /// The store's file, as an absolute path.
    [[nodiscard]] QString path() const;
    /// How the store keeps its transactions, whatever was asked for.
    [[nodiscard]] JournalMode journalMode() const;

    /// Copies one committed state of the store into a new file, while others may write. The copy is a store of its own,
    /// readable and writable by its owner only; it appears whole, looked through for damage and flushed to the disk.
    ///
    /// False when there is no copy to be had, and then `error` (if given) names the file and the reason, and there is
    /// no file at the path unless there was one before: nothing is replaced. Refused is also a thread that has a
    /// bracket open, or a scope that has written. `LastError` tells the reason too.
    [[nodiscard]] bool Backup(QString const& path, QString* error = nullptr);

    /// Reads the whole store and tells what is wrong in it, each fault in one text; an empty list when nothing is.
    /// Nothing when it can't be read through, and then `error` (if given) names the file and the reason, and
    /// `LastError` does too. A thread with a bracket open, or a scope that has written, is refused.
    [[nodiscard]] std::optional<QStringList> FindDamage(QString* error = nullptr);

    /// The calling thread's first error since it called `ClearError`, or nothing. Tells a row that isn't there from one
    /// that could not be read, and a whole listing from one that broke off.
    [[nodiscard]] std::optional<StoreError> LastError() const;
    void ClearError();

Q_SIGNALS:
    /// Writes that had been answered with true are not durable and gone: the end of their scope could not commit, or a
    /// fault took the transaction back before it. Emitted on the thread of the scope; a slot may use the store.
    void CommitFailed(sync::database::StoreError const& error);

private:
    explicit SqliteDatabaseFactory(std::shared_ptr<SqliteStore> store);

    /// Runs an operation with the calling thread's connection, and tells and keeps its failure.
    template <class Operation>
    bool Answer(QString* error, Operation const& operation);

    std::shared_ptr<SqliteStore> _store;
};

} // namespace sync::database
