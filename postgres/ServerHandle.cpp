#include "postgres/ServerHandle.h"

#include "postgres/ServerAddress.h"

#include <algorithm>
#include <atomic>
#include <utility>

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
    return ApplySettings();
}

Failure ServerHandle::ApplySettings()
{
    bool const isReadOnly = _options.mode == OpenMode::ReadOnly;
    QByteArray const schema = Quoted(_address.schema);
    // A lock timeout of 0 would wait for ever.
    QByteArray const settings =
        "SET search_path TO " + schema + ", pg_temp;SET lock_timeout TO " +
        QByteArray::number(std::max(_options.busyTimeoutMsec, 1)) +
        ";SET default_transaction_isolation TO 'read committed';SET default_transaction_read_only TO " +
        (isReadOnly ? "on" : "off") +
        ";SET standard_conforming_strings TO on;SET extra_float_digits TO 1;SET bytea_output TO hex;"
        "SELECT current_setting('synchronous_commit'), oid, CASE WHEN pg_is_in_recovery() THEN '' ELSE "
        "left(pg_walfile_name(pg_current_wal_lsn()), 8) END FROM (SELECT 1) one LEFT JOIN pg_catalog.pg_namespace ON "
        "nspname = " +
        Literal(_address.schema);
    Result result;
    if (Failure failure = Execute(settings, result))
        return failure;
    _synchronousCommit = PQgetvalue(result.get(), 0, 0);
    _schema = QByteArray(PQgetvalue(result.get(), 0, 1)).toUInt();
    _timeline = PQgetvalue(result.get(), 0, 2);
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
    StoreError error = DescribeResult(result, name(), message, statement);
    if (error.kind == StoreErrorKind::ConnectionLost)
        _isLost = true;
    return error;
}

Failure ServerHandle::Execute(QByteArray const& statements, Result& result)
{
    result.reset(PQexec(_connection.get(), statements.constData()));
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
    Failure failure;
    PGconn* const connection = _connection.get();
    char const* const text = statement.serverText().constData();
    if (isInTransaction()) {
        failure = RunInSavepoint([&] { return PQsendPrepare(connection, place.name.constData(), text, 0, nullptr); },
                                 ServerMessage::Show, // no value is bound yet
                                 statement.text(),
                                 result);
    }
    else {
        result.reset(PQprepare(connection, place.name.constData(), text, 0, nullptr));
        if (!IsGood(result.get()))
            failure = Describe(result.get(), ServerMessage::Show, statement.text());
    }
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
    PGconn* const connection = _connection.get();
    int const count = static_cast<int>(texts.size());

    Failure failure;
    if (isInTransaction()) {
        auto const send = [&] {
            return PQsendQueryPrepared(connection, place.name.constData(), count, texts.data(), nullptr, nullptr, 0);
        };
        failure = RunInSavepoint(send, ServerMessage::Hide, statement.text(), result);
    }
    else {
        result.reset(PQexecPrepared(connection, place.name.constData(), count, texts.data(), nullptr, nullptr, 0));
        if (!IsGood(result.get()))
            failure = Describe(result.get(), ServerMessage::Hide, statement.text());
    }
    if (!failure && !statement.isReading())
        _changes += QByteArray(PQcmdTuples(result.get())).toLongLong();
    return failure;
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
    for (int answer = 0; !isSynchronised && PQstatus(connection) == CONNECTION_OK && isSent;) {
        Result next(PQgetResult(connection));
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
