#pragma once

#include "database/file/StoreHandle.h"
#include "database/file/TransactionNotice.h"
#include "database/sqlite/LogLimit.h"
#include "database/sqlite/PreparedStatement.h"
#include "database/sqlite/StatementCache.h"
#include "database/store/TransactionHandle.h"

namespace sync::database {

class OwnCommits;
class SecretErasure;

/// The result of running a statement.
struct RunResult
{
    /// Whether the statement stands on a row.
    bool hasRow = false;
    int rowsAffected = 0;
    /// 0 if nothing was inserted.
    qint64 insertId = 0;
};

/// The SQLite handle of a thread's connection, with its settings, its transaction statements and its prepared
/// statements. Operations that return an int return SQLite's result code.
class ConnectionHandle final : public TransactionHandle
{
public:
    ConnectionHandle(StoreFile const& file, OpenOptions const& options, SecretErasure& secrets, OwnCommits& ownCommits);

    /// Call once; the object is of no use if it fails.
    [[nodiscard]] Failure Open(OpenPurpose purpose, StoreAccess access);

    StoreHandle const& store() const { return _store; }
    StatementCache& statements() { return _statements; }
    LogLimit const& logLimit() const { return _logLimit; }
    bool hasLog() const { return _store.journalMode() == JournalMode::WriteAheadLog; }

    /// False after a fault that makes the next commit unreliable: a new handle must take the place of this one.
    bool isUsable() const { return _isUsable; }
    bool Owns(PreparedStatement const& statement) const { return statement.isOf(_store.get()); }

    bool isInTransaction() const { return sqlite3_get_autocommit(_store.get()) == 0; }
    qint64 changes() const override { return sqlite3_total_changes64(_store.get()); }

    Failure CheckWritable() const override { return _store.CheckWritable(); }
    Failure Begin() override;
    Failure Commit() override;
    void RollBack() noexcept override;

    /// Runs a writing statement to its end, in the open transaction.
    [[nodiscard]] int Write(PreparedStatement& statement, RunResult& result);
    /// Writes what the open transaction has changed to the log.
    [[nodiscard]] int FlushToLog();

    /// Erases removed secrets if that is due; for the handle's last use. Rolls an open transaction back.
    void EraseSecrets(bool mayWait) noexcept;

    StoreError Describe(int code, PreparedStatement const* statement = nullptr) const;

private:
    int PrepareOwnStatements() noexcept;
    int RunOwn(StatementHandle const& statement) noexcept;
    static int Authorize(void* handle, int action, char const* name, char const* argument, char const*, char const*);
    static void NoticeChange(void* handle, int action, char const* database, char const* table, sqlite3_int64) noexcept;
    schema::TableSet TablesEmptiedBy(PreparedStatement const& statement) noexcept;
    int BeginOwn() noexcept;
    int CommitOwn() noexcept;

    SecretErasure& _secrets;
    qint64 const _logLimitBytes;
    StoreHandle _store;
    StatementHandle _begin;
    StatementHandle _commit;
    StatementHandle _rollback;
    StatementCache _statements;
    LogLimit _logLimit;
    TransactionNotice _notice;
    /// The tables from which the statements prepared last delete.
    schema::TableSet _deletesFrom = 0;
    bool _isUsable = true;
    bool _runsOwnStatement = false;
};

} // namespace sync::database
