#include "postgres/ServerHandle.h"

#include "postgres/ServerAddress.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <poll.h>
#include <sys/socket.h>

namespace sync::database {

namespace {

/// The first key of the advisory locks: "TNDY". The second one is the schema's number.
constexpr int WritersLock = 0x544e4459;

/// More than the store's clients have statements; what goes beyond comes from texts with lists of ids in them.
constexpr std::size_t Capacity = 160;
/// In characters. Longer texts are such lists, which hardly come again; only the last one is kept. It has a name, since
/// each command of a transaction takes the place of the unnamed statement.
constexpr int LongestText = 4096;
constexpr char const* LongStatement = "long";

constexpr char const* BeginTransaction = "BEGIN ISOLATION LEVEL READ COMMITTED READ WRITE";
/// A prepared statement that takes the lock of the profile's writers, whose second key is its argument. The second
/// column is the transaction's number.
constexpr char const* LockWriters = "lock_writers";
constexpr char const* SetSavepoint = "SAVEPOINT tandry";
constexpr char const* DropSavepoint = "RELEASE SAVEPOINT tandry";
constexpr char const* GoBackToSavepoint = "ROLLBACK TO SAVEPOINT tandry";

/// A server that has not answered after this multiple of its `statement_timeout` cannot be reached.
constexpr int AnswerFactor = 2;
constexpr int MillisecondsPerSecond = 1000;

/// The rules by which a connection of TCP is taken for dead, and the server's settings for the same.
constexpr std::pair<char const*, char const*> DeadConnectionRules[] = {
    {"keepalives_idle", "tcp_keepalives_idle"},
    {"keepalives_interval", "tcp_keepalives_interval"},
    {"keepalives_count", "tcp_keepalives_count"},
    {"tcp_user_timeout", "tcp_user_timeout"},
};

std::atomic<int> limit{32};
std::atomic<int> openHandles{0};

/// Of a prepared statement.
QByteArray NameOf(int number)
{
    return 't' + QByteArray::number(number);
}

bool IsGood(PGresult const* result)
{
    ExecStatusType const status = PQresultStatus(result);
    return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK;
}

} // namespace

ServerHandle::ServerHandle(ServerAddress const& address, OpenOptions const& options)
    : _address(address)
    , _options(options)
{}

ServerHandle::~ServerHandle()
{
    Close();
}

void ServerHandle::Close() noexcept
{
    _connection.reset();
    if (std::exchange(_isCounted, false))
        openHandles.fetch_sub(1, std::memory_order_relaxed);
}

void ServerHandle::SetLimit(int count) noexcept
{
    limit.store(count, std::memory_order_relaxed);
}

int ServerHandle::Limit() noexcept
{
    return limit.load(std::memory_order_relaxed);
}

QString const& ServerHandle::name() const
{
    return _address.name;
}

Failure ServerHandle::Open()
{
    _isCounted = true;
    if (openHandles.fetch_add(1, std::memory_order_relaxed) >= Limit())
        return MakeServerError(ServerState::TooManyConnections,
                               name() + QStringLiteral(": this process has %1 connections open, which is its limit "
                                                       "(PostgresDatabaseFactory::SetConnectionLimit); each thread "
                                                       "that uses a store has one until it ends")
                                            .arg(Limit()));

    std::vector<char const*> keywords;
    std::vector<char const*> values;
    for (auto const& [keyword, value] : _address.parameters) {
        keywords.push_back(keyword.constData());
        values.push_back(value.constData());
    }
    keywords.push_back(nullptr);
    values.push_back(nullptr);
    _connection.reset(PQconnectdbParams(keywords.data(), values.data(), 0));
    if (PQstatus(_connection.get()) != CONNECTION_OK) {
        QByteArray reason = QByteArray(PQerrorMessage(_connection.get())).simplified();
        for (QByteArray const& secret : _address.secrets)
            reason.replace(secret, "***");
        return MakeServerError(ServerState::CannotConnect,
                               name() +
                                   QStringLiteral(": no connection to the server (%1)").arg(QString::fromUtf8(reason)));
    }
    PQsetNoticeReceiver(
        _connection.get(),
        [](void* handle, PGresult const* notice) {
            if (qstrcmp(PQresultErrorField(notice, PG_DIAG_SEVERITY_NONLOCALIZED), "WARNING") == 0)
                static_cast<ServerHandle*>(handle)->_hasWarned = true;
        },
        this);
    _answerLimitMsec = _address.Value("connect_timeout").toLongLong() * MillisecondsPerSecond;
    return ReadServer(Settings());
}

QByteArray ServerHandle::Settings() const
{
    bool const isReadOnly = _options.mode == OpenMode::ReadOnly;
    // A lock timeout of 0 would wait for ever.
    QByteArray settings =
        "SET search_path TO " + Quoted(_address.schema) + ", pg_temp;SET lock_timeout TO " +
        QByteArray::number(std::max(_options.busyTimeoutMsec, 1)) +
        ";SET default_transaction_isolation TO 'read committed';SET default_transaction_read_only TO " +
        (isReadOnly ? "on" : "off") +
        ";SET standard_conforming_strings TO on;SET extra_float_digits TO 1;SET bytea_output TO hex;"
        "SET client_min_messages TO warning;";
    // Else a server would keep the lock of a client whose machine is gone for two hours.
    for (auto const& [keyword, setting] : DeadConnectionRules)
        settings += QByteArray("SET ") + setting + " TO " +
                    QByteArray::number(std::max(_address.Value(keyword).toInt(), 0)) + ';';
    return settings + "PREPARE " + LockWriters + "(integer) AS SELECT pg_advisory_xact_lock(" +
           QByteArray::number(WritersLock) + ", $1), pg_current_xact_id();";
}

Failure ServerHandle::ReadServer()
{
    return ReadServer({});
}

Failure ServerHandle::ReadServer(QByteArray const& settings)
{
    Result result;
    Failure failure =
        Execute(settings +
                    "SELECT current_setting('synchronous_commit'), oid, CASE WHEN pg_is_in_recovery() THEN '' ELSE "
                    "left(pg_walfile_name(pg_current_wal_lsn()), 8) END, CAST(1000 * extract(epoch FROM "
                    "CAST(current_setting('statement_timeout') AS interval)) AS bigint) FROM (SELECT 1) one LEFT JOIN "
                    "pg_catalog.pg_namespace ON nspname = " +
                    Literal(_address.schema),
                result);
    if (failure)
        return failure;
    _synchronousCommit = PQgetvalue(result.get(), 0, 0);
    _schema = QByteArray(PQgetvalue(result.get(), 0, 1)).toUInt();
    _timeline = PQgetvalue(result.get(), 0, 2);
    _answerLimitMsec = AnswerFactor * QByteArray(PQgetvalue(result.get(), 0, 3)).toLongLong();
    return {};
}

Failure ServerHandle::HoldState()
{
    _savepoint = Savepoint::Fresh;
    return Execute(QByteArray("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY;SELECT 1;") + // takes the snapshot
                   SetSavepoint);
}

bool ServerHandle::isUsable() const
{
    PGconn* const connection = _connection.get();
    return !_isLost && PQstatus(connection) == CONNECTION_OK && PQtransactionStatus(connection) != PQTRANS_INERROR &&
           PQpipelineStatus(connection) == PQ_PIPELINE_OFF;
}

/// If libpq could not send a statement, it may report this before it notices that the connection is lost.
Failure ServerHandle::Describe(PGresult const* result, ServerMessage message, QString const& statement)
{
    if (_isLate)
        return MakeServerError(ServerState::ConnectionLost,
                               name() +
                                   QStringLiteral(": the connection to the server was lost (no answer within %1 ms)")
                                       .arg(_answerLimitMsec),
                               statement);
    StoreError error = DescribeResult(result, name(), message, statement);
    if (error.kind == StoreErrorKind::ConnectionLost)
        _isLost = true;
    return error;
}

QDeadlineTimer ServerHandle::AnswerDeadline() const
{
    return _answerLimitMsec > 0 ? QDeadlineTimer(_answerLimitMsec) : QDeadlineTimer(QDeadlineTimer::Forever);
}

/// Returns null after the last result of a command; also if the server is late, and then the connection is lost.
Result ServerHandle::NextResult(QDeadlineTimer const& deadline)
{
    // With encryption there may be an answer though the socket has no more bytes.
    constexpr qint64 longestWaitMsec = 100;
    PGconn* const connection = _connection.get();
    while (!deadline.isForever() && PQisBusy(connection) == 1 && PQsocket(connection) >= 0) {
        if (deadline.hasExpired()) {
            _isLate = _isLost = true;
            // The server undoes what has begun and frees its locks, though this object may stay until its next use.
            ::shutdown(PQsocket(connection), SHUT_RDWR);
            return nullptr;
        }
        pollfd socket{PQsocket(connection), POLLIN, 0};
        ::poll(&socket, 1, static_cast<int>(std::min(deadline.remainingTime(), longestWaitMsec)));
        if (PQconsumeInput(connection) != 1)
            break; // the next call tells the reason
    }
    return Result(PQgetResult(connection));
}

/// The result of the last of the commands that were sent; null if there is no whole answer.
Result ServerHandle::LastResult(bool isSent)
{
    if (!isSent)
        return nullptr;
    QDeadlineTimer const deadline = AnswerDeadline();
    Result last;
    while (Result next = NextResult(deadline))
        last = std::move(next);
    if (_isLate)
        last.reset();
    return last;
}

Failure ServerHandle::Execute(QByteArray const& statements, Result& result)
{
    result = LastResult(PQsendQuery(_connection.get(), statements.constData()) == 1);
    return IsGood(result.get()) ? Failure() : Describe(result.get(), ServerMessage::Show);
}

Failure ServerHandle::Execute(QByteArray const& statements)
{
    Result result;
    return Execute(statements, result);
}

Failure ServerHandle::TakeNotices(QSet<QByteArray>& names)
{
    struct FreeNotice
    {
        void operator()(PGnotify* notice) const noexcept { PQfreemem(notice); }
    };
    if (PQconsumeInput(_connection.get()) != 1)
        return Describe(nullptr, ServerMessage::Hide);
    while (std::unique_ptr<PGnotify, FreeNotice> const notice{PQnotifies(_connection.get())})
        names.insert(notice->extra);
    return {};
}

/// Each statement of the transaction sees what was committed before it; but all who write hold the lock until they have
/// committed, so nothing of others is committed meanwhile. The savepoint comes behind the lock: to go back to it must
/// not free the lock.
Failure ServerHandle::Begin()
{
    std::vector<Result> results;
    QString const noStatement;
    Failure failure = RunBehind(BeginAndLock(), {Sending(SetSavepoint), ServerMessage::Show, noStatement}, results);
    if (failure)
        RollBack();
    else
        NoteBegun(*results[1], Savepoint::Fresh);
    return failure;
}

/// A failure of the first statement undoes the whole transaction, in which there was nothing before.
Failure ServerHandle::BeginWith(StatementText const& statement, BoundValues const& values, Result& result)
{
    Place place;
    if (Failure failure = Prepare(statement, place))
        return failure;
    std::vector<Result> results;
    Failure failure = RunBehind(BeginAndLock(), RunningOf(statement, values, place), results);
    if (failure) {
        RollBack();
        return failure;
    }
    NoteBegun(*results[1], Savepoint::None);
    result = std::move(results.back());
    CountChanges(statement, result);
    return {};
}

void ServerHandle::NoteBegun(PGresult const& locked, Savepoint savepoint)
{
    _transaction = PQgetvalue(&locked, 0, 1);
    _savepoint = savepoint;
}

Failure ServerHandle::Commit()
{
    Failure failure = CommitOnce();
    if (failure && failure->kind == StoreErrorKind::ConnectionLost)
        return SettleCommit();
    if (failure)
        RollBack();
    return failure;
}

Failure ServerHandle::CommitOnce()
{
    _hasWarned = false;
    Result result;
    if (Failure failure = Execute("COMMIT", result))
        return failure;
    // The server answers a commit that it could not make with a rollback.
    if (qstrcmp(PQcmdStatus(result.get()), "COMMIT") != 0)
        return MakeServerError(ServerState::RolledBack,
                               name() + QStringLiteral(": the server rolled the transaction back"));
    if (_hasWarned)
        return MakeServerError(ServerState::Unknown,
                               name() + QStringLiteral(": the commit is on the server, which was told to stop waiting "
                                                       "for its standbys; a switch-over to one may lose it"));
    return {};
}

Failure ServerHandle::SettleCommit()
{
    Close(); // leaves its place to the next one
    ServerHandle next(_address, _options);
    std::optional<bool> hasCommitted;
    if (!next.Open() && next._schema == _schema && next._timeline == _timeline &&
        next._synchronousCommit == _synchronousCommit)
        hasCommitted = next.HasCommitted(_transaction);
    if (!hasCommitted)
        return MakeServerError(ServerState::Unknown,
                               name() + QStringLiteral(": the connection was lost during the commit, which may have "
                                                       "happened or not; once a later write has succeeded, read what "
                                                       "it wrote before you repeat it"));
    if (*hasCommitted)
        return {};
    return MakeServerError(ServerState::ConnectionLost,
                           name() + QStringLiteral(": the connection was lost during the commit, which has not "
                                                   "happened"));
}

/// Nothing if the server does not tell.
///
/// A server that was restarted, or was told to stop waiting for its standbys, shows a commit that none of them has. So
/// a commit of this handle follows, which waits for them as the other one should have; and the log is sent in its
/// order.
std::optional<bool> ServerHandle::HasCommitted(QByteArray const& transaction)
{
    // Whoever has the lock of the writers knows that the transaction has ended.
    if (Begin())
        return std::nullopt;
    Result result;
    Failure failure = Execute("SELECT pg_xact_status('" + transaction + "')", result);
    QByteArray const status = failure ? QByteArray() : QByteArray(PQgetvalue(result.get(), 0, 0));
    if (status == "committed") {
        failure = Execute("UPDATE tandry_version SET version = version"); // a commit without a write does not wait
        if (!failure && !CommitOnce())
            return true;
    }
    RollBack();
    if (status == "aborted")
        return false;
    return std::nullopt;
}

void ServerHandle::RollBack() noexcept
{
    // A server that is lost has rolled back by itself.
    if (!_isLost && PQstatus(_connection.get()) == CONNECTION_OK && isInTransaction())
        static_cast<void>(Execute("ROLLBACK"));
}

ServerHandle::Place ServerHandle::PlaceOf(StatementText const& statement) const
{
    if (statement.text().size() > LongestText)
        return {LongStatement, _longStatement == statement.number()};
    return {NameOf(statement.number()), _prepared.count(statement.number()) > 0};
}

void ServerHandle::NotePrepared(StatementText const& statement, Place const& place)
{
    if (place.name == LongStatement)
        _longStatement = statement.number();
    else
        _prepared.insert(statement.number());
}

Failure ServerHandle::Prepare(StatementText const& statement)
{
    Place place;
    return Prepare(statement, place);
}

Failure ServerHandle::Prepare(StatementText const& statement, Place& place)
{
    place = PlaceOf(statement);
    if (place.isPrepared)
        return {};
    if (_prepared.size() >= Capacity) {
        QByteArray drop;
        for (int const number : _prepared)
            drop += "DEALLOCATE " + NameOf(number) + ';';
        if (Failure failure = Execute(drop))
            return failure;
        _prepared.clear();
    }
    if (place.name == LongStatement && _longStatement != 0) {
        if (Failure failure = Execute(QByteArray("DEALLOCATE ") + LongStatement))
            return failure;
        _longStatement = 0;
    }
    auto const send = [&] {
        return PQsendPrepare(_connection.get(), place.name.constData(), statement.serverText().constData(), 0, nullptr);
    };
    Result result;
    constexpr bool mayWrite = false;
    Failure failure =
        RunCommand({send, ServerMessage::Show /* no value is bound yet */, statement.text()}, mayWrite, result);
    if (!failure)
        NotePrepared(statement, place);
    return failure;
}

/// Refers to its arguments.
ServerHandle::Command
ServerHandle::RunningOf(StatementText const& statement, BoundValues const& values, Place const& place) const
{
    auto const send = [this, &values, &place] {
        std::vector<char const*> texts;
        texts.reserve(values.size());
        for (std::optional<QByteArray> const& value : values)
            texts.push_back(value ? value->constData() : nullptr);
        return PQsendQueryPrepared(_connection.get(),
                                   place.name.constData(),
                                   static_cast<int>(texts.size()),
                                   texts.data(),
                                   nullptr,
                                   nullptr,
                                   0);
    };
    return {send, ServerMessage::Hide, statement.text()};
}

Failure ServerHandle::Run(StatementText const& statement, BoundValues const& values, Result& result)
{
    Place place;
    if (Failure failure = Prepare(statement, place))
        return failure;
    Failure failure = RunCommand(RunningOf(statement, values, place), statement.mayWrite(), result);
    if (!failure)
        CountChanges(statement, result);
    return failure;
}

void ServerHandle::CountChanges(StatementText const& statement, Result const& result)
{
    if (!statement.isReading())
        _changes += QByteArray(PQcmdTuples(result.get())).toLongLong();
}

Failure ServerHandle::RunCommand(Command const& command, bool mayWrite, Result& result)
{
    if (!isInTransaction()) {
        result = LastResult(command.send() == 1);
        return IsGood(result.get()) ? Failure() : Describe(result.get(), command.message, command.text);
    }
    std::vector<Sender> first;
    if (_savepoint == Savepoint::Stale)
        first.push_back(Sending(DropSavepoint));
    if (_savepoint != Savepoint::Fresh)
        first.push_back(Sending(SetSavepoint));
    std::vector<Result> results;
    Failure failure = RunBehind(first, command, results);
    if (!failure) {
        result = std::move(results.back());
        _savepoint = mayWrite ? Savepoint::Stale : Savepoint::Fresh;
    }
    else if (results.size() == first.size() && PQtransactionStatus(_connection.get()) == PQTRANS_INERROR) {
        // Where this fails, the transaction is lost, and the handle not usable. So it is where the savepoint could not
        // be set: to go back to an earlier one would undo what has succeeded since.
        if (!Execute(GoBackToSavepoint))
            _savepoint = Savepoint::Fresh;
    }
    return failure;
}

Failure ServerHandle::RunBehind(std::vector<Sender> const& first, Command const& command, std::vector<Result>& results)
{
    PGconn* const connection = _connection.get();
    bool const isSent = PQenterPipelineMode(connection) == 1 &&
                        std::all_of(first.begin(), first.end(), [](Sender const& send) { return send() == 1; }) &&
                        command.send() == 1 && PQpipelineSync(connection) == 1;
    Failure failure;
    // Reads up to the answer to the last message, or until the connection is lost.
    bool isWhole = false;
    QDeadlineTimer const deadline = AnswerDeadline();
    while (isSent && !isWhole && !_isLate && PQstatus(connection) == CONNECTION_OK) {
        Result next = NextResult(deadline);
        if (next == nullptr) // behind the answer to each command
            continue;
        isWhole = PQresultStatus(next.get()) == PGRES_PIPELINE_SYNC;
        if (isWhole || PQresultStatus(next.get()) == PGRES_PIPELINE_ABORTED)
            continue;
        if (IsGood(next.get()))
            results.push_back(std::move(next));
        else if (!failure)
            failure = Describe(
                next.get(), results.size() < first.size() ? ServerMessage::Show : command.message, command.text);
    }
    if (!failure && !isWhole)
        failure = Describe(nullptr, ServerMessage::Hide, command.text);
    PQexitPipelineMode(connection);
    return failure;
}

ServerHandle::Sender ServerHandle::Sending(char const* command) const
{
    return [this, command] {
        return PQsendQueryParams(_connection.get(), command, 0, nullptr, nullptr, nullptr, nullptr, 0);
    };
}

std::vector<ServerHandle::Sender> ServerHandle::BeginAndLock() const
{
    auto const sendLock = [this] {
        QByteArray const key = QByteArray::number(static_cast<qint32>(_schema));
        char const* const value = key.constData();
        return PQsendQueryPrepared(_connection.get(), LockWriters, 1, &value, nullptr, nullptr, 0);
    };
    return {Sending(BeginTransaction), sendLock};
}

QByteArray ServerHandle::Quoted(QByteArray const& name)
{
    QByteArray quoted = name;
    return '"' + quoted.replace('"', "\"\"") + '"';
}

QByteArray ServerHandle::Literal(QByteArray const& text)
{
    QByteArray quoted = text;
    return '\'' + quoted.replace('\'', "''") + '\'';
}

} // namespace sync::database
