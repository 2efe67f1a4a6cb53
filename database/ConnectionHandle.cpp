#include "database/ConnectionHandle.h"

#include "database/file/SecretErasure.h"
#include "database/file/StoreCommit.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/store/StoreLog.h"

namespace sync::database {

namespace {

/// A log that a long listing kept from being checkpointed shrinks to its limit at the next chance.
constexpr char const* ConnectionSettings = "PRAGMA cache_size = -8192;"
                                           "PRAGMA wal_autocheckpoint = 1000;"
                                           "PRAGMA journal_size_limit = 8388608;";

/// A commit is on the disk when it returns. With a journal that includes a flush of the folder, since the commit is the
/// deletion of the journal.
///
/// With a journal, a connection that writes pages to the file before its commit locks all readers out until then, even
/// those that its own thread may have to wait for. So up to 64 MiB of changed pages stay in memory.
constexpr char const* SettingsWithLog = "PRAGMA synchronous = FULL";
constexpr char const* SettingsWithJournal = "PRAGMA synchronous = EXTRA;"
                                            "PRAGMA cache_spill = 16384;";

} // namespace

ConnectionHandle::ConnectionHandle(StoreFile const& file,
                                   OpenOptions const& options,
                                   SecretErasure& secrets,
                                   OwnCommits& ownCommits)
    : _secrets(secrets)
    , _logLimitBytes(options.logLimitBytes)
    , _store(file, options.busyTimeoutMsec)
    , _notice(ownCommits)
{}

Failure ConnectionHandle::Open(OpenPurpose purpose, StoreAccess access)
{
    if (Failure failure = _store.Open(purpose, access))
        return failure;
    sqlite3* const handle = _store.get();
    int code = Execute(handle, ConnectionSettings);
    if (code == SQLITE_OK)
        code = Execute(handle, hasLog() ? SettingsWithLog : SettingsWithJournal);
    if (hasLog())
        _logLimit = LogLimit(handle, _logLimitBytes);
    sqlite3_set_authorizer(handle, &ConnectionHandle::Authorize, this);
    sqlite3_update_hook(handle, &ConnectionHandle::NoticeChange, this);
    _notice.SetHandle(handle, hasLog());
    if (code == SQLITE_OK && access == StoreAccess::ReadWrite)
        code = PrepareOwnStatements();
    return code == SQLITE_OK ? Failure() : Describe(code);
}

int ConnectionHandle::PrepareOwnStatements() noexcept
{
    _runsOwnStatement = true;
    int code = PreparePersistent(_store.get(), "BEGIN IMMEDIATE", _begin);
    if (code == SQLITE_OK)
        code = PreparePersistent(_store.get(), "COMMIT", _commit);
    if (code == SQLITE_OK)
        code = PreparePersistent(_store.get(), "ROLLBACK", _rollback);
    _runsOwnStatement = false;
    return code;
}

/// Only the connection begins and ends transactions: if a client's statement ended one, earlier results would become
/// untrue. Nor may a statement attach other files or change settings.
int ConnectionHandle::Authorize(
    void* handle, int action, char const* name, char const* argument, char const*, char const*)
{
    auto& self = *static_cast<ConnectionHandle*>(handle);
    if (self._runsOwnStatement)
        return SQLITE_OK;
    switch (action) {
    case SQLITE_TRANSACTION:
    case SQLITE_SAVEPOINT:
    case SQLITE_ATTACH:
    case SQLITE_DETACH:
        return SQLITE_DENY;
    case SQLITE_PRAGMA:
        return argument == nullptr ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_DELETE:
        self._deletesFrom |= schema::TableNamed(name);
        return SQLITE_OK;
    default:
        return SQLITE_OK;
    }
}

void ConnectionHandle::NoticeChange(
    void* handle, int action, char const* database, char const* table, sqlite3_int64) noexcept
{
    auto& self = *static_cast<ConnectionHandle*>(handle);
    self._secrets.NoticeChange(action, table);
    self._notice.NoteChange(database, table);
}

/// SQLite does not call the update hook when it empties a table as a whole. While it prepares the statement again, it
/// names the table.
schema::TableSet ConnectionHandle::TablesEmptiedBy(PreparedStatement const& statement) noexcept
{
    _deletesFrom = 0;
    StatementHandle prepared;
    static_cast<void>(PreparePersistent(_store.get(), statement.text().toUtf8().constData(), prepared));
    return _deletesFrom;
}

int ConnectionHandle::RunOwn(StatementHandle const& statement) noexcept
{
    _runsOwnStatement = true; // SQLite asks for authorization when it has to prepare the statement again
    sqlite3_step(statement.get());
    int const code = sqlite3_reset(statement.get());
    _runsOwnStatement = false;
    return code;
}

int ConnectionHandle::BeginOwn() noexcept
{
    int const code = RunOwn(_begin);
    if (code == SQLITE_OK)
        _notice.Begin();
    return code;
}

int ConnectionHandle::CommitOwn() noexcept
{
    _notice.BeforeCommit();
    int const code = RunOwn(_commit);
    _notice.AfterCommit(code == SQLITE_OK);
    return code;
}

Failure ConnectionHandle::Begin()
{
    _store.busyHandler().BeforeTransaction();
    int code = _logLimit.MakeRoom(_store.get());
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
        return MakeError(_store.file().path(),
                         code,
                         QStringLiteral("the log has reached its limit, and a query that is still open reads an old "
                                        "state from it"));
    if (code == SQLITE_OK)
        code = BeginOwn();
    if (code != SQLITE_OK)
        return Describe(code);
    _store.busyHandler().TransactionBegan(_store.get());
    return {};
}

Failure ConnectionHandle::Commit()
{
    int const code = CommitOwn();
    if (code == SQLITE_OK) {
        _store.busyHandler().TransactionCommitted(_store.get());
        return {};
    }
    StoreError const error = Describe(code); // before what follows has errors of its own
    RollBack();
    _runsOwnStatement = true;
    Failure failure = SettleStoreCommit(
        _store, error, QStringLiteral("once a later write has succeeded, read what it wrote before you repeat it"));
    _runsOwnStatement = false;
    return failure;
}

void ConnectionHandle::RollBack() noexcept
{
    _store.busyHandler().TransactionRolledBack();
    if (isInTransaction())
        RunOwn(_rollback);
    if (LeftJournalBehind(_store))
        _isUsable = false;
}

int ConnectionHandle::Write(PreparedStatement& statement, RunResult& result)
{
    qint64 const changesBefore = changes();
    sqlite3_set_last_insert_rowid(_store.get(), 0);
    int const code = statement.Step();
    if (code == SQLITE_DONE && changes() != changesBefore && !_notice.hasChange())
        _notice.NoteChanges(TablesEmptiedBy(statement));
    _notice.EndStatement(code == SQLITE_DONE);
    if (code != SQLITE_DONE)
        return code;
    result.rowsAffected = changes() != changesBefore ? sqlite3_changes(_store.get()) : 0;
    result.insertId = sqlite3_last_insert_rowid(_store.get());
    return SQLITE_OK;
}

int ConnectionHandle::FlushToLog()
{
    return sqlite3_db_cacheflush(_store.get());
}

void ConnectionHandle::EraseSecrets(bool mayWait) noexcept
{
    if (!_isUsable || _store.CheckWritable() || !_secrets.Claim())
        return;
    RollBack(); // a client transaction may be open
    if (!mayWait)
        sqlite3_busy_handler(_store.get(), nullptr, nullptr);
    int code = BeginOwn();
    if (code == SQLITE_OK) {
        _runsOwnStatement = true;
        code = SecretErasure::Run(_store.get());
        _runsOwnStatement = false;
        _notice.EndStatement(false); // every row is what it was
    }
    if (code == SQLITE_OK)
        code = CommitOwn();
    if (code == SQLITE_OK)
        return;
    _secrets.Return();
    qCWarning(StoreLog).noquote() << Describe(code).text << "while removed secrets were being overwritten";
    RollBack();
}

StoreError ConnectionHandle::Describe(int code, PreparedStatement const* statement) const
{
    // Of SQLite's messages only that of a constraint certainly names columns and no values.
    bool const withMessage = (code & 0xff) == SQLITE_CONSTRAINT;
    return _store.Describe(code, statement != nullptr ? statement->text() : QString(), withMessage);
}

} // namespace sync::database
