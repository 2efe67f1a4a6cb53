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
        if (!_address.password.isEmpty())
            reason.replace(_address.password, "***");
        return MakeServerError(ServerState::CannotConnect,
                               name() +
                                   QStringLiteral(": no connection to the server (%1)").arg(QString::fromUtf8(reason)));
    }
    PQsetNoticeProcessor(
        _connection.get(), [](void*, char const*) {}, nullptr);
    _answerLimitMsec = _address.Value("connect_timeout").toLongLong() * MillisecondsPerSecond;
    return ApplySettings();
}

Failure ServerHandle::ApplySettings()
{
    bool const isReadOnly = _options.mode == OpenMode::ReadOnly;
    QByteArray const schema = Quoted(_address.schema);
    // A lock timeout of 0 would wait for ever.
    QByteArray settings =
        "SET search_path TO " + schema + ", pg_temp;SET lock_timeout TO " +
        QByteArray::number(std::max(_options.busyTimeoutMsec, 1)) +
        ";SET default_transaction_isolation TO 'read committed';SET default_transaction_read_only TO " +
        (isReadOnly ? "on" : "off") +
        ";SET standard_conforming_strings TO on;SET extra_float_digits TO 1;SET bytea_output TO hex;";
    // Else a server would keep the lock of a client whose machine is gone for two hours.
    for (auto const& [keyword, setting] : DeadConnectionRules)
        settings += QByteArray("SET ") + setting + " TO " +
                    QByteArray::number(std::max(_address.Value(keyword).toInt(), 0)) + ';';
    settings += "SELECT current_setting('synchronous_commit'), oid, CASE WHEN pg_is_in_recovery() THEN '' ELSE "
                "left(pg_walfile_name(pg_current_wal_lsn()), 8) END, CAST(1000 * extract(epoch FROM "
                "CAST(current_setting('statement_timeout') AS interval)) AS bigint) FROM (SELECT 1) one LEFT JOIN "
                "pg_catalog.pg_namespace ON nspname = " +
                Literal(_address.schema);
    Result result;
    if (Failure failure = Execute(settings, result))
        return failure;
    _synchronousCommit = PQgetvalue(result.get(), 0, 0);
    _schema = QByteArray(PQgetvalue(result.get(), 0, 1)).toUInt();
    _timeline = PQgetvalue(result.get(), 0, 2);
    _answerLimitMsec = AnswerFactor * QByteArray(PQgetvalue(result.get(), 0, 3)).toLongLong();
    return {};
}

Failure ServerHandle::HoldState()
{
    return Execute("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY;SELECT 1"); // the first query takes the snapshot
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
/// committed, so nothing of others is committed meanwhile.
Failure ServerHandle::Begin()
{
    Result result;
    Failure failure = Execute("BEGIN ISOLATION LEVEL READ COMMITTED READ WRITE;SELECT pg_advisory_xact_lock(" +
                                  QByteArray::number(WritersLock) + ", " +
                                  QByteArray::number(static_cast<qint32>(_schema)) + ");SELECT pg_current_xact_id()",
                              result);
    if (failure)
        RollBack();
    else
        _transaction = PQgetvalue(result.get(), 0, 0);
    return failure;
}

Failure ServerHandle::Commit()
{
    Result result;
    Failure failure = Execute("COMMIT", result);
    if (failure && failure->kind == StoreErrorKind::ConnectionLost)
        return SettleCommit();
    // The server answers a commit that it could not make with a rollback.
    if (!failure && qstrcmp(PQcmdStatus(result.get()), "COMMIT") != 0)
        failure = MakeServerError(ServerState::RolledBack,
                                  name() + QStringLiteral(": the server rolled the transaction back"));
    if (failure)
        RollBack();
    return failure;
}

Failure ServerHandle::SettleCommit()
{
    Close(); // leaves its place to the next one
    ServerHandle next(_address, _options);
    std::optional<bool> hasCommitted;
    if (!next.Open() && next._schema == _schema && next._timeline == _timeline)
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
std::optional<bool> ServerHandle::HasCommitted(QByteArray const& transaction)
{
    // Whoever has the lock of the writers knows that the transaction has ended.
    if (Begin())
        return std::nullopt;
    Result result;
    Failure const failure = Execute("SELECT pg_xact_status('" + transaction + "')", result);
    QByteArray const status = failure ? QByteArray() : QByteArray(PQgetvalue(result.get(), 0, 0));
    RollBack();
    if (status == "committed")
        return true;
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

ServerHandle::Place ServerHandle::PlaceOf(StatementText const& statement)
{
    if (statement.text().size() > LongestText)
        return {LongStatement, _longText == statement.text()};
    auto const found = _prepared.find(statement.text());
    if (found != _prepared.end())
        return {found->second, true};
    return {"t" + QByteArray::number(++_lastName), false};
}

void ServerHandle::NotePrepared(StatementText const& statement, Place const& place)
{
    if (place.name == LongStatement)
        _longText = statement.text();
    else
        _prepared.emplace(statement.text(), place.name);
}

Failure ServerHandle::Prepare(StatementText const& statement)
{
    Place const place = PlaceOf(statement);
    if (place.isPrepared)
        return {};
    if (_prepared.size() >= Capacity) {
        if (Failure failure = Execute("DEALLOCATE ALL"))
            return failure;
        _prepared.clear();
        _longText.clear();
    }
    if (place.name == LongStatement && !_longText.isEmpty()) {
        if (Failure failure = Execute(QByteArray("DEALLOCATE ") + LongStatement))
            return failure;
        _longText.clear();
    }
    Result result;
    Failure failure = RunCommand(
        [&] {
            return PQsendPrepare(
                _connection.get(), place.name.constData(), statement.serverText().constData(), 0, nullptr);
        },
        ServerMessage::Show, // no value is bound yet
        statement.text(),
        result);
    if (!failure)
        NotePrepared(statement, place);
    return failure;
}

Failure ServerHandle::Run(StatementText const& statement, BoundValues const& values, Result& result)
{
    if (Failure failure = Prepare(statement))
        return failure;
    Place const place = PlaceOf(statement);
    std::vector<char const*> texts;
    texts.reserve(values.size());
    for (std::optional<QByteArray> const& value : values)
        texts.push_back(value ? value->constData() : nullptr);
    auto const send = [&] {
        return PQsendQueryPrepared(_connection.get(),
                                   place.name.constData(),
                                   static_cast<int>(texts.size()),
                                   texts.data(),
                                   nullptr,
                                   nullptr,
                                   0);
    };
    Failure failure = RunCommand(send, ServerMessage::Hide, statement.text(), result);
    if (!failure && !statement.isReading())
        _changes += QByteArray(PQcmdTuples(result.get())).toLongLong();
    return failure;
}

Failure
ServerHandle::RunCommand(std::function<int()> const& send, ServerMessage message, QString const& text, Result& result)
{
    if (isInTransaction())
        return RunInSavepoint(send, message, text, result);
    result = LastResult(send() == 1);
    return IsGood(result.get()) ? Failure() : Describe(result.get(), message, text);
}

Failure ServerHandle::RunInSavepoint(std::function<int()> const& send,
                                     ServerMessage message,
                                     QString const& text,
                                     Result& result)
{
    PGconn* const connection = _connection.get();
    auto const sendCommand = [&](char const* command) {
        return PQsendQueryParams(connection, command, 0, nullptr, nullptr, nullptr, nullptr, 0);
    };
    bool const isSent = PQenterPipelineMode(connection) == 1 && sendCommand("SAVEPOINT tandry") == 1 && send() == 1 &&
                        sendCommand("RELEASE SAVEPOINT tandry") == 1 && PQpipelineSync(connection) == 1;
    Failure failure;
    if (!isSent)
        failure = Describe(nullptr, ServerMessage::Hide, text);
    // Reads up to the answer to the last message, or until the connection is lost.
    bool isSynchronised = false;
    QDeadlineTimer const deadline = AnswerDeadline();
    for (int answer = 0; !isSynchronised && PQstatus(connection) == CONNECTION_OK && isSent && !_isLate;) {
        Result next = NextResult(deadline);
        if (next == nullptr) {
            ++answer;
            continue;
        }
        isSynchronised = PQresultStatus(next.get()) == PGRES_PIPELINE_SYNC;
        if (isSynchronised || PQresultStatus(next.get()) == PGRES_PIPELINE_ABORTED)
            continue;
        if (!IsGood(next.get()) && !failure)
            failure = Describe(next.get(), message, text);
        else if (answer == 1)
            result = std::move(next);
    }
    if (!failure && !isSynchronised)
        failure = Describe(nullptr, ServerMessage::Hide, text);
    PQexitPipelineMode(connection);
    if (failure && PQtransactionStatus(connection) == PQTRANS_INERROR) {
        result.reset();
        // Where this fails, the transaction is lost: the handle is not usable then.
        static_cast<void>(Execute("ROLLBACK TO SAVEPOINT tandry;RELEASE SAVEPOINT tandry"));
    }
    return failure;
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
