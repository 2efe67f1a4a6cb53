#pragma once

#include "database/OpenOptions.h"
#include "database/store/TransactionHandle.h"
#include "postgres/ServerErrors.h"
#include "postgres/StatementText.h"

#include <libpq-fe.h>

#include <QByteArray>
#include <QDeadlineTimer>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

namespace sync::database {

struct ServerAddress;

struct FreeResult
{
    void operator()(PGresult* result) const noexcept { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, FreeResult>;

/// The values of a statement's placeholders, in the order of their numbers, as the server reads them; nothing is NULL.
using BoundValues = std::vector<std::optional<QByteArray>>;

/// A connection to the server, with its settings, its transaction and its prepared statements.
class ServerHandle final : public TransactionHandle
{
public:
    ServerHandle(ServerAddress const& address, OpenOptions const& options);
    ~ServerHandle();

    /// How many handles the process may have open at a time.
    static void SetLimit(int limit) noexcept;
    static int Limit() noexcept;

    /// Call once; the object is of no use if it fails.
    Failure Open();
    /// Reads `synchronousCommit` and `schema` anew.
    Failure ReadServer();

    /// From now on the handle reads the rows that are there now, until it is closed.
    Failure HoldState();

    /// False after the connection was lost: a new handle must take the place of this one.
    bool isUsable() const;
    /// The value of the server's `synchronous_commit` for this connection.
    QByteArray const& synchronousCommit() const { return _synchronousCommit; }
    /// The schema's number on the server; `InvalidOid` if there is no such schema.
    Oid schema() const { return _schema; }
    QString const& name() const;

    Failure CheckWritable() const override { return {}; }
    Failure Begin() override;
    /// Begins a transaction and runs its first statement, in one round trip. There is no transaction if that fails.
    Failure BeginWith(StatementText const& statement, BoundValues const& values, Result& result);
    /// If the connection is lost during the commit, asks on a new one whether it has happened.
    Failure Commit() override;
    void RollBack() noexcept override;
    qint64 changes() const override { return _changes; }

    /// Runs statements without placeholders, and returns the result of the last one. For the store's own statements.
    Failure Execute(QByteArray const& statements, Result& result);
    Failure Execute(QByteArray const& statements);

    /// Adds what the notices since the last call have named. Fails if the connection is lost.
    Failure TakeNotices(QSet<QByteArray>& names);
    /// Readable when there may be notices.
    int socket() const { return PQsocket(_connection.get()); }

    /// Has the server check the statement, unless it has done so.
    Failure Prepare(StatementText const& statement);
    /// Runs a prepared statement. If it fails inside a transaction, only the statement itself is undone.
    Failure Run(StatementText const& statement, BoundValues const& values, Result& result);

    /// Quotes a name or a text for use in a statement.
    static QByteArray Quoted(QByteArray const& name);
    static QByteArray Literal(QByteArray const& text);

private:
    /// Where a statement is kept on the server.
    struct Place
    {
        QByteArray name;
        bool isPrepared = false;
    };

    struct CloseConnection
    {
        void operator()(PGconn* connection) const noexcept { PQfinish(connection); }
    };

    /// What a transaction goes back to if its next statement fails.
    enum class Savepoint
    {
        /// Nothing: a savepoint must be set before.
        None,
        /// The savepoint, behind which nothing was written.
        Fresh,
        /// The savepoint would take a write along: another one must take its place before.
        Stale,
    };

    /// Sends a command, and returns 1 on success, as libpq's functions do.
    using Sender = std::function<int()>;

    /// A command whose failure is told.
    struct Command
    {
        Sender send;
        ServerMessage message;
        QString const& text;
    };

    Failure ReadServer(QByteArray const& settings);
    QByteArray Settings() const;
    Place PlaceOf(StatementText const& statement) const;
    void NotePrepared(StatementText const& statement, Place const& place);
    Failure Prepare(StatementText const& statement, Place& place);
    Command RunningOf(StatementText const& statement, BoundValues const& values, Place const& place) const;
    void CountChanges(StatementText const& statement, Result const& result);
    bool isInTransaction() const { return PQtransactionStatus(_connection.get()) != PQTRANS_IDLE; }
    /// Runs a command. If it fails inside a transaction, only the command itself is undone.
    Failure RunCommand(Command const& command, bool mayWrite, Result& result);
    /// Runs all in one round trip, and sets `results` to those of the commands that succeed: none runs behind one that
    /// fails.
    Failure RunBehind(std::vector<Sender> const& first, Command const& command, std::vector<Result>& results);
    /// Of a command without values.
    Sender Sending(char const* command) const;
    std::vector<Sender> BeginAndLock() const;
    void NoteBegun(PGresult const& locked, Savepoint savepoint);
    QDeadlineTimer AnswerDeadline() const;
    Result NextResult(QDeadlineTimer const& deadline);
    Result LastResult(bool isSent);
    Failure CommitOnce();
    Failure SettleCommit();
    std::optional<bool> HasCommitted(QByteArray const& transaction);
    void Close() noexcept;
    Failure Describe(PGresult const* result, ServerMessage message, QString const& statement = {});

    ServerAddress const& _address;
    OpenOptions const& _options;
    std::unique_ptr<PGconn, CloseConnection> _connection;
    bool _isCounted = false;
    bool _isLost = false;
    /// How long the server may take to answer; 0 if there is no limit.
    qint64 _answerLimitMsec = 0;
    bool _isLate = false;
    /// Whether the server has warned since this was last set to false.
    bool _hasWarned = false;
    QByteArray _synchronousCommit;
    Oid _schema = InvalidOid;
    /// The history of the server, in which a number of a transaction is used once. Empty on a standby.
    QByteArray _timeline;
    /// The server's number of the open transaction.
    QByteArray _transaction;
    Savepoint _savepoint = Savepoint::None;
    qint64 _changes = 0;
    /// The numbers of the statements that the server keeps.
    std::unordered_set<int> _prepared;
    /// That of the one long statement that it keeps; 0 for none.
    int _longStatement = 0;
};

} // namespace sync::database
