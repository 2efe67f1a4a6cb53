#include "database/SqliteConnection.h"

#include "database/SqliteStore.h"
#include "database/TransactionalScope.h"
#include "database/file/StoreLog.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

#include <utility>

namespace sync::database {

namespace {

/// The settings of a connection.
///
/// - No memory map: an I/O error or a file cut short would be a signal that ends the program instead of an error.
/// - Temporary tables in memory: nothing of the store's content comes to other files, and no other place can be full.
/// - A log that has grown, because a long listing held it, shrinks to its limit at the next chance.
constexpr char const* Settings = "PRAGMA cache_size = -8192;"
                                 "PRAGMA mmap_size = 0;"
                                 "PRAGMA temp_store = MEMORY;"
                                 "PRAGMA cell_size_check = ON;"
                                 "PRAGMA secure_delete = ON;"
                                 "PRAGMA wal_autocheckpoint = 1000;"
                                 "PRAGMA journal_size_limit = 8388608;";

/// A commit is on the disk when it returns. Without a log that takes the folder's flush too, since it is the journal's
/// deletion that commits.
///
/// With a journal, a connection that brings pages to the file before its commit locks everybody out until then, those
/// too on whom its own thread may have to wait: so up to 64 MiB of them stay in memory.
constexpr char const* SettingsWithLog = "PRAGMA synchronous = FULL";
constexpr char const* SettingsWithJournal = "PRAGMA synchronous = EXTRA;"
                                            "PRAGMA cache_spill = 16384;";

/// Whether a store with a log may have failed to open because its place allows for none.
bool RefusesLog(int code)
{
    switch (code) {
    case SQLITE_IOERR_SHMOPEN:
    case SQLITE_IOERR_SHMSIZE:
    case SQLITE_IOERR_SHMLOCK:
    case SQLITE_IOERR_SHMMAP:
        return true;
    default:
        return (code & 0xff) == SQLITE_CANTOPEN;
    }
}

} // namespace

SqliteConnection::SqliteConnection(std::shared_ptr<SqliteStore> store)
    : _store(std::move(store))
    , _thread(std::this_thread::get_id())
    , _queue(_store->options().busyTimeoutMsec)
{}

SqliteConnection::~SqliteConnection()
{
    DropOutdated();
    RewriteSecrets();
    Disconnect();
}

Failure SqliteConnection::CheckUsable() const
{
    if (_store->isClosed())
        return Refuse(SQLITE_MISUSE, QStringLiteral("the store has been closed"));
    if (_thread != std::this_thread::get_id())
        return Refuse(SQLITE_MISUSE, QStringLiteral("a query or a bracket was used on another thread than its own"));
    return {};
}

/// A statement of a handle that was given up must neither write past the new one nor show what was rolled back.
Failure SqliteConnection::CheckUsable(PreparedStatement const& statement) const
{
    Failure failure = CheckUsable();
    if (!failure && (_isSpoilt || (!_store->isReadOnly() && !statement.isOf(_handle.get()))))
        failure = Refuse(SQLITE_ABORT_ROLLBACK,
                         QStringLiteral("the statement was prepared before a failure and must be prepared anew"));
    if (failure)
        failure->statement = statement.text();
    return failure;
}

Failure SqliteConnection::Open()
{
    return OpenFor(false);
}

Failure SqliteConnection::OpenAndCheck()
{
    return OpenFor(true);
}

Failure SqliteConnection::OpenFor(bool firstOfStore)
{
    if (Failure failure = CheckUsable())
        return failure;
    DropOutdated();
    if (_isSpoilt)
        return Reopen();
    if (_handle != nullptr)
        return _store->isReadOnly() ? RefreshReading() : Failure();

    Failure failure = _store->isReadOnly() ? OpenForReading(firstOfStore) : OpenForWriting(firstOfStore);
    if (!failure)
        failure = _store->CheckUnmoved();
    if (failure)
        Disconnect();
    else
        _cache = std::make_unique<StatementCache>();
    return failure;
}

void SqliteConnection::Disconnect() noexcept
{
    _cache.reset();
    _begin.reset();
    _commit.reset();
    _rollback.reset();
    _handle.reset();
    _stamp.reset();
    _isSpoilt = false;
}

Failure SqliteConnection::OpenForWriting(bool firstOfStore)
{
    bool const hadLog = _store->file().LogIdentity().has_value();
    Failure failure = ConnectForWriting(firstOfStore);
    if (!failure || !firstOfStore || hadLog || !RefusesLog(failure->code))
        return failure;

    // The store may have come to a place where no log works. A fault that passes is no reason to change it.
    Disconnect();
    failure = ConnectForWriting(firstOfStore);
    if (!failure || !RefusesLog(failure->code))
        return failure;
    Disconnect();
    return _store->file().ConvertToJournal() == SQLITE_OK ? ConnectForWriting(firstOfStore) : failure;
}

Failure SqliteConnection::ConnectForWriting(bool firstOfStore)
{
    bool const hadLog = _store->file().LogIdentity().has_value();
    int const code = OpenHandle(_store->file().name(), SQLITE_OPEN_READWRITE, _handle);
    if (code != SQLITE_OK)
        return Describe(code);
    if (sqlite3_db_readonly(_handle.get(), "main") != 0)
        return Describe(SQLITE_READONLY);

    // Until the file has proved to be a store, closing it must not work off what a program left behind.
    sqlite3_db_config(_handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, hadLog ? 1 : 0, nullptr);
    if (Failure failure = Configure(firstOfStore))
        return failure;
    sqlite3_db_config(_handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    if (_journalMode == JournalMode::WriteAheadLog)
        _log = _store->file().LogIdentity();
    return PrepareOwnStatements();
}

Failure SqliteConnection::OpenForReading(bool firstOfStore)
{
    // What another program writes meanwhile can make a file look odd that is read as if nobody wrote it.
    constexpr int Attempts = 5;
    Failure failure;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        Disconnect();
        failure = _store->file().OpenForReading(_handle, _stamp);
        if (!failure)
            failure = Configure(firstOfStore);
        if (!failure || !_stamp || _store->file().Stamp() == _stamp)
            break;
    }
    return failure;
}

Failure SqliteConnection::Configure(bool firstOfStore)
{
    sqlite3* const handle = _handle.get();
    _queue.Attach(handle);
    Distrust(handle);

    int code = Execute(handle, Settings);
    if (code == SQLITE_OK) {
        bool const usesLog = _stamp || QueryText(handle, "PRAGMA journal_mode") == "wal";
        _journalMode = usesLog ? JournalMode::WriteAheadLog : JournalMode::Rollback;
        code = Execute(handle, usesLog ? SettingsWithLog : SettingsWithJournal);
    }
    if (code != SQLITE_OK)
        return Describe(code);

    // Another program may have brought the store to a newer version, in its log or since the header was looked at.
    std::optional<qint64> const version = QueryNumber(handle, "PRAGMA user_version");
    if (!version)
        return Describe(sqlite3_extended_errcode(handle));
    if (*version != schema::Version)
        return Refuse(SQLITE_SCHEMA, schema::OtherVersion(*version));
    if (firstOfStore) {
        if (Failure failure = _store->file().CheckLength(handle))
            return failure;
        if (Failure failure = schema::Check(handle, _store->file().path()))
            return failure;
    }

    sqlite3_set_authorizer(handle, &SqliteConnection::Authorize, this);
    sqlite3_update_hook(handle, &SqliteConnection::NoticeChange, this);
    return {};
}

Failure SqliteConnection::PrepareOwnStatements()
{
    _runsOwnStatement = true;
    int code = PrepareOwn(_handle.get(), "BEGIN IMMEDIATE", _begin);
    if (code == SQLITE_OK)
        code = PrepareOwn(_handle.get(), "COMMIT", _commit);
    if (code == SQLITE_OK)
        code = PrepareOwn(_handle.get(), "ROLLBACK", _rollback);
    _runsOwnStatement = false;
    return code == SQLITE_OK ? Failure() : Describe(code);
}

int SqliteConnection::Begin() noexcept
{
    _queue.GiveWay();
    int const code = RunOwn(_begin);
    if (code == SQLITE_OK)
        _queue.Begun(_handle.get());
    return code;
}

int SqliteConnection::Commit() noexcept
{
    int const code = RunOwn(_commit);
    if (code == SQLITE_OK)
        _queue.Committed(_handle.get());
    return code;
}

int SqliteConnection::RunOwn(StatementHandle const& statement) noexcept
{
    _runsOwnStatement = true; // the engine may prepare it anew
    sqlite3_step(statement.get());
    int const code = sqlite3_reset(statement.get());
    _runsOwnStatement = false;
    return code;
}

/// Transactions are the connection's own matter: a statement that ended one would make true answers false. Nor may a
/// statement bring in other files or change the settings.
int SqliteConnection::Authorize(
    void* connection, int action, char const*, char const* argument, char const*, char const*)
{
    if (static_cast<SqliteConnection*>(connection)->_runsOwnStatement)
        return SQLITE_OK;
    switch (action) {
    case SQLITE_TRANSACTION:
    case SQLITE_SAVEPOINT:
    case SQLITE_ATTACH:
    case SQLITE_DETACH:
        return SQLITE_DENY;
    case SQLITE_PRAGMA:
        return argument == nullptr ? SQLITE_OK : SQLITE_DENY;
    default:
        return SQLITE_OK;
    }
}

/// Rows that go with all others of their table don't come here. They leave nothing behind.
void SqliteConnection::NoticeChange(
    void* connection, int action, char const*, char const* table, sqlite3_int64) noexcept
{
    if (action != SQLITE_INSERT && qstrcmp(table, schema::SecretsTable) == 0)
        static_cast<SqliteConnection*>(connection)->_store->removedSecrets() = true;
}

/// A file that is read as if nobody wrote it is opened anew when somebody did.
Failure SqliteConnection::RefreshReading()
{
    return !_stamp || _store->file().Stamp() == _stamp ? Failure() : Reopen();
}

/// Opens a new handle. The old one stays as long as queries hold statements of it.
Failure SqliteConnection::Reopen()
{
    if (_cache->hasLeases())
        _outdated.push_back({std::move(_handle), std::move(_cache)});
    Disconnect();
    return Open();
}

void SqliteConnection::DropOutdated() noexcept
{
    for (auto outdated = _outdated.begin(); outdated != _outdated.end();) {
        if (outdated->cache->hasLeases()) {
            ++outdated;
            continue;
        }
        outdated = _outdated.erase(outdated);
    }
}

Failure SqliteConnection::CheckUnchanged(PreparedStatement const& statement) const
{
    if (!_store->isReadOnly() || (statement.isOf(_handle.get()) && (!_stamp || _store->file().Stamp() == _stamp)))
        return {};
    return Refuse(SQLITE_BUSY_SNAPSHOT, QStringLiteral("the store was changed while it was being read"), &statement);
}

/// The log must be there too: what is written to one that was removed is lost for all others.
Failure SqliteConnection::CheckUnmoved() const
{
    if (Failure failure = _store->CheckUnmoved())
        return failure;
    if (_log && _store->file().LogIdentity() != _log)
        return Refuse(SQLITE_READONLY_DBMOVED,
                      QStringLiteral("the log beside the file was removed or replaced while the store was open"));
    return {};
}

Failure SqliteConnection::Prepare(QString const& text, StatementLease& statement)
{
    statement.reset();
    if (Failure failure = Open()) {
        failure->statement = text;
        return failure;
    }
    Refusal refusal;
    statement = _cache->Take(_handle.get(), text, refusal);
    if (statement != nullptr)
        return {};
    if (!refusal.words.isEmpty())
        return MakeError(_store->file().path(), refusal.code, refusal.words, text);
    // Nothing is bound yet that the engine could quote.
    return DescribeError(_handle.get(), refusal.code, _store->file().path(), text, true);
}

Failure SqliteConnection::Run(PreparedStatement& statement, RunResult& result)
{
    result = {};
    if (Failure failure = CheckUsable(statement))
        return failure;
    return statement.isReading() ? Advance(statement, result.hasRow) : Write(statement, result);
}

Failure SqliteConnection::Advance(PreparedStatement& statement, bool& hasRow)
{
    hasRow = false;
    if (Failure failure = CheckUsable(statement))
        return failure;
    int const code = statement.Step();
    if (code == SQLITE_ROW || code == SQLITE_DONE) {
        hasRow = code == SQLITE_ROW;
        Failure failure = CheckUnchanged(statement);
        if (failure)
            statement.Reset();
        return failure;
    }
    Failure failure = Describe(code, &statement);
    if (_transaction != Transaction::None && sqlite3_get_autocommit(_handle.get()) != 0)
        LoseTransaction(*failure, sqlite3_total_changes64(_handle.get()));
    return failure;
}

Failure SqliteConnection::Write(PreparedStatement& statement, RunResult& result)
{
    if (_store->isReadOnly())
        return Refuse(SQLITE_READONLY, QStringLiteral("the store has been opened for reading only"), &statement);
    if (_transaction == Transaction::LostBracket)
        return Refuse(SQLITE_ABORT_ROLLBACK, QStringLiteral("an earlier failure took the bracket back"), &statement);
    // Inside a transaction the log was looked at when it began, and will be when it commits.
    Failure failure = _transaction == Transaction::None ? CheckUnmoved() : _store->CheckUnmoved();
    if (!failure && _transaction == Transaction::None && TransactionalScope::Depth() > 0)
        failure = BeginScope();
    if (failure) {
        failure->statement = statement.text();
        return failure;
    }

    sqlite3* const handle = _handle.get();
    bool const byItself = _transaction == Transaction::None;
    if (byItself)
        _queue.GiveWay();
    qint64 const changesBefore = sqlite3_total_changes64(handle);
    sqlite3_set_last_insert_rowid(handle, 0);
    int code = statement.Step();
    bool const done = code == SQLITE_DONE;
    if (done) {
        bool const changed = sqlite3_total_changes64(handle) != changesBefore;
        result.rowsAffected = changed ? sqlite3_changes(handle) : 0;
        result.insertId = sqlite3_last_insert_rowid(handle);
        // What the statement wrote goes to the log now, so that a full disk shows here and not when the scope ends. A
        // bracket needs none of it: its commit has an answer. Nor can a journal have it: from then on nobody could
        // read, and a thread that reads for a cached listing holds the lock that this one needs to clear it.
        if (_transaction == Transaction::Scope && _journalMode == JournalMode::WriteAheadLog)
            code = sqlite3_db_cacheflush(handle);
        if (byItself)
            _queue.Committed(handle);
    }
    if (code == SQLITE_DONE || code == SQLITE_OK)
        return {};

    result = {};
    failure = Describe(code, &statement);
    bool const ended = sqlite3_get_autocommit(handle) != 0;
    if (_transaction != Transaction::None && (done || ended))
        LoseTransaction(*failure, changesBefore);
    else if (ended)
        NoticeLeftJournal();
    return failure;
}

Failure SqliteConnection::BeginScope()
{
    int const code = Begin();
    if (code != SQLITE_OK)
        return Describe(code);
    _transaction = Transaction::Scope;
    _changesAtBegin = sqlite3_total_changes64(_handle.get());
    _untilScopeEnds = shared_from_this();
    TransactionalScope::Join(*this);
    return {};
}

void SqliteConnection::LoseTransaction(StoreError const& error, qint64 changesBefore)
{
    Rollback();
    if (_transaction == Transaction::Bracket) {
        _transaction = Transaction::LostBracket;
        return;
    }
    _transaction = Transaction::None;
    TransactionalScope::Leave(*this);
    std::shared_ptr<SqliteConnection> const self = std::move(_untilScopeEnds);
    if (changesBefore == _changesAtBegin)
        return; // nobody was told of a success
    StoreError lost = error;
    lost.text += QStringLiteral("; what was written before it in the same scope is lost");
    Record(lost);
    _store->TellLost(lost);
}

void SqliteConnection::Rollback() noexcept
{
    _queue.TakenBack();
    if (sqlite3_get_autocommit(_handle.get()) == 0)
        RunOwn(_rollback);
    NoticeLeftJournal();
}

/// An engine that could not delete its journal, because memory ran out, calls the rollback a success all the same. But
/// it takes the pages that it changed for written ones then, and what they go into next is not kept. To others the
/// journal means what it should: the transaction never was. So the handle is given up.
void SqliteConnection::NoticeLeftJournal() noexcept
{
    if (_journalMode != JournalMode::Rollback || !_store->file().HasJournal())
        return;
    // A journal that another connection writes right now comes with its lock.
    sqlite3_file* file = nullptr;
    sqlite3_file_control(_handle.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    int isAnothers = 0;
    if (file->pMethods->xCheckReservedLock(file, &isAnothers) != SQLITE_OK || isAnothers == 0)
        _isSpoilt = true;
}

/// After the last use of the connection: what was removed from the store is to be nowhere in its file. As long as the
/// store is open this waits for nobody: the next connection to be closed tries again.
void SqliteConnection::RewriteSecrets() noexcept
{
    if (_isSpoilt || _handle == nullptr || _store->isReadOnly() || CheckUnmoved())
        return;
    if (!_store->removedSecrets().exchange(false))
        return;
    _cache.reset();
    Rollback(); // a bracket that was left open
    if (!_store->isClosed())
        sqlite3_busy_handler(_handle.get(), nullptr, nullptr);
    _runsOwnStatement = true;
    int const code = schema::RewriteSecrets(_handle.get());
    _runsOwnStatement = false;
    if (code == SQLITE_OK)
        return;
    _store->removedSecrets() = true;
    qCWarning(StoreLog).noquote() << Describe(code)->text << "while removed secrets were being overwritten";
    Rollback();
}

bool SqliteConnection::CommitScope() noexcept
{
    std::shared_ptr<SqliteConnection> const self = std::move(_untilScopeEnds);
    _transaction = Transaction::None;

    Failure failure = CheckUnmoved();
    if (!failure) {
        int const code = Commit();
        if (code == SQLITE_OK)
            return true;
        failure = Describe(code);
    }
    Rollback();
    bool const lost = sqlite3_total_changes64(_handle.get()) != _changesAtBegin;
    if (lost)
        failure->text += QStringLiteral("; what was written in the scope is lost");
    Record(*failure);
    if (lost)
        _store->TellLost(*failure);
    return false;
}

void SqliteConnection::LeaveThread() noexcept
{
    if (_transaction != Transaction::Scope)
        return;
    TransactionalScope::Leave(*this);
    static_cast<void>(CommitScope()); // it tells of a failure by itself
}

Failure SqliteConnection::BeginBracket()
{
    if (Failure failure = Open())
        return failure;
    if (_store->isReadOnly())
        return Refuse(SQLITE_READONLY, QStringLiteral("the store has been opened for reading only"));
    if (_transaction == Transaction::Bracket || _transaction == Transaction::LostBracket)
        return Refuse(SQLITE_MISUSE, QStringLiteral("a bracket is open already"));
    if (TransactionalScope::Depth() > 0)
        return Refuse(SQLITE_MISUSE, QStringLiteral("a bracket can't be opened inside a scope"));
    if (Failure failure = CheckUnmoved())
        return failure;
    int const code = Begin();
    if (code != SQLITE_OK)
        return Describe(code);
    _transaction = Transaction::Bracket;
    return {};
}

Failure SqliteConnection::OpenBeside()
{
    if (Failure failure = Open())
        return failure;
    if (_transaction != Transaction::None)
        return Refuse(SQLITE_MISUSE, QStringLiteral("this thread has a bracket or a scope open that is not committed"));
    return CheckUnmoved();
}

Failure SqliteConnection::CommitBracket()
{
    if (Failure failure = CheckUsable())
        return failure;
    Transaction const bracket = std::exchange(_transaction, Transaction::None);
    if (bracket == Transaction::LostBracket)
        return Refuse(SQLITE_ABORT_ROLLBACK, QStringLiteral("an earlier failure took the bracket back"));
    if (bracket != Transaction::Bracket) {
        _transaction = bracket;
        return Refuse(SQLITE_MISUSE, QStringLiteral("no bracket is open"));
    }
    Failure failure = CheckUnmoved();
    if (!failure) {
        int const code = Commit();
        if (code == SQLITE_OK)
            return {};
        failure = Describe(code);
    }
    Rollback();
    return failure;
}

Failure SqliteConnection::RollbackBracket()
{
    if (Failure failure = CheckUsable())
        return failure;
    if (_transaction != Transaction::Bracket && _transaction != Transaction::LostBracket)
        return Refuse(SQLITE_MISUSE, QStringLiteral("no bracket is open"));
    _transaction = Transaction::None;
    Rollback();
    return {};
}

void SqliteConnection::Record(StoreError const& error)
{
    if (error.statement.isEmpty())
        qCWarning(StoreLog).noquote() << error.text;
    else
        qCWarning(StoreLog).noquote() << error.text << "in" << error.statement;
    if (!_lastError)
        _lastError = error;
}

Failure SqliteConnection::Describe(int code, PreparedStatement const* statement) const
{
    // Only of a constraint it is certain that the engine's words name columns and no values.
    bool const engineWords = (code & 0xff) == SQLITE_CONSTRAINT;
    return DescribeError(
        _handle.get(), code, _store->file().path(), statement != nullptr ? statement->text() : QString(), engineWords);
}

StoreError SqliteConnection::DescribeRefusal(Refusal const& refusal, PreparedStatement const& statement) const
{
    return refusal.words.isEmpty() ? *Describe(refusal.code, &statement)
                                   : *Refuse(refusal.code, refusal.words, &statement);
}

Failure SqliteConnection::Refuse(int code, QString const& words, PreparedStatement const* statement) const
{
    return MakeError(_store->file().path(), code, words, statement != nullptr ? statement->text() : QString());
}

} // namespace sync::database
