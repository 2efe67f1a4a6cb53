#pragma once

#include "database/OpenOptions.h"
#include "database/ScopeParticipant.h"
#include "database/file/StoreFile.h"
#include "database/sqlite/Failure.h"
#include "database/sqlite/LockQueue.h"
#include "database/sqlite/SqliteHandle.h"
#include "database/sqlite/StatementCache.h"

#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace sync::database {

class SqliteStore;

/// What a statement's run gave.
struct RunResult
{
    /// Whether the statement stands on a row.
    bool hasRow = false;
    int rowsAffected = 0;
    /// 0 where nothing was inserted.
    qint64 insertId = 0;
};

/// A thread's connection to a store: opened at its first use, with the thread's transaction, prepared statements and
/// first error.
///
/// The store owns it, and queries and database objects share it. So does the connection itself between the begin and
/// the commit of a scope's transaction: the scope's end finds it, whatever went before.
class SqliteConnection : public ScopeParticipant, public std::enable_shared_from_this<SqliteConnection>
{
public:
    explicit SqliteConnection(std::shared_ptr<SqliteStore> store);
    ~SqliteConnection() override;

    /// Opens the connection unless it is open already.
    Failure Open();
    /// The same, and looks whether the file is a whole store; for the first connection.
    Failure OpenAndCheck();
    /// Opens the connection unless it is open already, and says why no other handle of this thread should read the
    /// store now: the file was moved, or an open transaction of the connection would lock it out or stay unseen.
    Failure OpenBeside();
    /// Of an open connection.
    JournalMode journalMode() const { return _journalMode; }

    Failure Prepare(QString const& text, StatementLease& statement);

    /// Runs a statement to its end, or to its first row. A statement that writes begins the transaction of an open
    /// scope; when it fails, nothing of it has happened.
    Failure Run(PreparedStatement& statement, RunResult& result);
    /// Moves a statement that stands on a row to the next one, or to its end.
    Failure Advance(PreparedStatement& statement, bool& hasRow);

    Failure BeginBracket();
    Failure CommitBracket();
    Failure RollbackBracket();

    bool CommitScope() noexcept override;
    /// Commits what a scope that was never ended has written: the thread ends now.
    void LeaveThread() noexcept;

    /// What a refused value makes the statement's `exec` answer.
    StoreError DescribeRefusal(Refusal const& refusal, PreparedStatement const& statement) const;

    /// Logs an error and keeps it for `lastError` unless there is one already.
    void Record(StoreError const& error);
    std::optional<StoreError> const& lastError() const { return _lastError; }
    void ClearError() { _lastError.reset(); }

private:
    enum class Transaction
    {
        None,
        Scope,
        Bracket,
        /// A fault took the bracket's transaction back: nothing may be written until the client ends the bracket.
        LostBracket,
    };

    /// A handle in place of which there is a new one, while queries still hold statements of it.
    struct OutdatedHandle
    {
        SqliteHandle handle;
        std::unique_ptr<StatementCache> cache;
    };

    Failure CheckUsable() const;
    Failure CheckUsable(PreparedStatement const& statement) const;
    Failure OpenFor(bool firstOfStore);
    Failure OpenForWriting(bool firstOfStore);
    Failure ConnectForWriting(bool firstOfStore);
    Failure OpenForReading(bool firstOfStore);
    Failure Configure(bool firstOfStore);
    Failure CheckUnmoved() const;
    Failure PrepareOwnStatements();
    void Disconnect() noexcept;
    Failure RefreshReading();
    Failure Reopen();
    Failure CheckUnchanged(PreparedStatement const& statement) const;
    void DropOutdated() noexcept;

    Failure Write(PreparedStatement& statement, RunResult& result);
    Failure BeginScope();
    /// What is left to do when the engine, or a full disk, made an end of the transaction; `changesBefore` counts what
    /// had been changed before the statement that failed.
    void LoseTransaction(StoreError const& error, qint64 changesBefore);
    void Rollback() noexcept;
    void NoticeLeftJournal() noexcept;
    void RewriteSecrets() noexcept;
    Failure Describe(int code, PreparedStatement const* statement = nullptr) const;
    Failure Refuse(int code, QString const& words, PreparedStatement const* statement = nullptr) const;

    int Begin() noexcept;
    int Commit() noexcept;
    int RunOwn(StatementHandle const& statement) noexcept;
    static int Authorize(void* connection, int action, char const*, char const* argument, char const*, char const*);
    static void NoticeChange(void* connection, int action, char const*, char const* table, sqlite3_int64) noexcept;

    std::shared_ptr<SqliteStore> const _store;
    std::thread::id const _thread;

    LockQueue _queue;
    SqliteHandle _handle;
    StatementHandle _begin;
    StatementHandle _commit;
    StatementHandle _rollback;
    std::unique_ptr<StatementCache> _cache; // goes before the handle
    JournalMode _journalMode = JournalMode::WriteAheadLog;
    std::optional<FileIdentity> _log;
    std::optional<FileStamp> _stamp; // of a file that is read as if nobody wrote it
    std::vector<OutdatedHandle> _outdated;
    bool _isSpoilt = false; // the handle, which must not be used any more

    Transaction _transaction = Transaction::None;
    qint64 _changesAtBegin = 0;
    std::shared_ptr<SqliteConnection> _untilScopeEnds;
    bool _runsOwnStatement = false;

    std::optional<StoreError> _lastError;
};

} // namespace sync::database
