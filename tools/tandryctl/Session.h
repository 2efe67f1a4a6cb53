#pragma once

#include "Failure.h"
#include "Output.h"
#include "StandardOutput.h"

#include "config/Managers.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <optional>

namespace sync::database {
class SqliteDatabaseFactory;
class StoreFactory;
struct StoreError;
} // namespace sync::database

namespace tandry::carry {
class Snapshot;
}

namespace tandry::findings {
class PrivateCopy;
}

namespace tandryctl {

class StoreQueries;

/// How a command opens the store.
enum class StoreAccess
{
    /// Opens it for writing; creates it if it is missing.
    Create,
    /// Opens it for writing.
    Write,
    /// Opens it for reading; changes no byte of it. A store that cannot be read without changing it is read from a
    /// private copy, which a line on standard error tells.
    Read,
    /// Opens no store: the command puts one in its place.
    Replace,
    /// Opens no store: the command gets an output and nothing else.
    None
};

/// The answer to a question, if it could be asked.
enum class Consent
{
    Given,
    Denied,
    /// There is no terminal.
    CannotAsk
};

/// The common options of all commands.
struct SessionOptions
{
    /// Without a value, the user's own store.
    std::optional<QString> storePath;
    /// How long to wait for a lock of another program; nothing for the library's own time.
    std::optional<int> waitSeconds;
    bool json = false;
    /// Shows times in UTC in plain text too.
    bool utc = false;
    bool yes = false;
    /// The number of columns that tables fit into, 0 for any; nothing for those of the terminal, if there is one.
    std::optional<int> width;
    /// Runs the command on a copy of the store.
    bool dryRun = false;
};

/// Returns the store's file or URI as the options name it; a URI may contain a password. Refuses an empty name, usually
/// an unset variable of a script: a command must not change the user's own store then.
QString StorePathOf(SessionOptions const& options);

OutputFormat FormatOf(SessionOptions const& options);

/// The open store with its managers, and the output of one command.
///
/// A manager returns the same for a miss and for a failure, so every result is passed to `Checked` or `CheckWritten`,
/// which throw `Failure` if the store has failed.
class Session
{
public:
    /// Opens the store, and prints what the store warns of to standard error.
    Session(SessionOptions const& options, StoreAccess access);
    ~Session();

    /// The store's name for messages: its file's path or, on a server, host, database and profile.
    QString const& storePath() const { return _storePath; }
    /// Whether the store is on a server, and not in a file.
    bool isOnServer() const { return _store != nullptr && _fileStore == nullptr; }
    /// Opens another store for the same command, a copy of it with `onCopy`. Throws a failure that names the store.
    std::unique_ptr<Session> OpenOther(QString const& store, StoreAccess access, bool onCopy) const;
    /// Whether the command may change nothing. The store is then a private copy; everything else is up to the command.
    bool isDryRun() const { return _dryRun != nullptr; }
    /// Returns whether this session has created the store.
    bool isNew() const { return _isNew; }

    sync::config::FolderConfigManager& folders() { return *_managers->folders; }
    sync::config::FileConfigManager& files() { return *_managers->files; }
    sync::config::ServerConfigManager& servers() { return *_managers->servers; }
    sync::config::AuthenticationConfigManager& accounts() { return *_managers->accounts; }
    sync::config::ProductConfigManager& products() { return *_managers->products; }
    sync::config::ScheduleEntryManager& schedules() { return *_managers->schedules; }
    /// For what goes over the whole store.
    std::shared_ptr<sync::database::StoreFactory> const& store() { return _store; }
    /// The same with the operations of a file. Only for commands that are declared with `Command::OnlyOnFiles`.
    std::shared_ptr<sync::database::SqliteDatabaseFactory> const& fileStore() { return _fileStore; }
    /// Returns one state of the store, which does not change while others write. Throws on failure.
    std::shared_ptr<sync::database::StoreFactory> State();
    /// Queries that no manager offers.
    StoreQueries& queries() { return *_queries; }
    Output& output() { return _output; }

    /// Returns the result of a reading operation. Throws if the store has failed.
    template <class Answer>
    Answer Checked(Answer answer)
    {
        _ThrowIfStoreFailed();
        return answer;
    }

    /// Returns the failure of a command for an error of the store. `hintForOther` is for `StoreFailure`.
    Failure FailureOf(sync::database::StoreError const& error, QString const& hintForOther = {}) const;

    /// Throws if an operation has returned false, or if its commit has failed. `hintForOther` is for `StoreFailure`.
    void CheckWritten(bool written, QString const& hintForOther = {});

    /// Prints a line that the user needs for the answer to the next question: on standard error, beside the question,
    /// or in the output of a command that asks nothing.
    void Announce(QString const& line);

    /// Asks a question on the terminal; with --yes it counts as answered.
    [[nodiscard]] Consent AskFor(QString const& question) const;

    /// Asks for confirmation; throws if it is denied or if there is no terminal. `what` completes the question "Remove
    /// ...?", such as "folder 3 '/a' with 2 files".
    void ConfirmRemoval(QString const& what);

    /// Copies the store to a new file, unless this is a dry run. Throws if that fails.
    void Backup(QString const& path);
    /// Returns one text per fault found in the store. Throws if the store cannot be checked.
    QStringList FindDamage();

    /// Writes all output. Throws if that fails.
    void Flush();

private:
    Q_DISABLE_COPY_MOVE(Session)

    void _OpenFile(StoreAccess access);
    void _OpenOnServer(StoreAccess access);
    void _OpenPrivateCopy(sync::database::StoreError const& reason);
    bool _AsksNothing() const { return _options.yes || isDryRun(); }
    void _ThrowIfStoreFailed(QString const& hintForOther = {});

    /// Copies the store, if there is one, to a temporary folder. Returns the path of the copy.
    QString _CopyForDryRun(bool exists);

    SessionOptions const _options;
    QString _storePath;
    std::unique_ptr<QTemporaryDir> _dryRun;
    bool _isNew = false;
    StandardOutput _stdout;
    Output _output;
    std::unique_ptr<tandry::findings::PrivateCopy> _copy;
    /// Null on a server.
    std::shared_ptr<sync::database::SqliteDatabaseFactory> _fileStore;
    std::shared_ptr<sync::database::StoreFactory> _store;
    std::unique_ptr<tandry::carry::Snapshot> _snapshot;
    std::optional<sync::config::Managers> _managers;
    std::unique_ptr<StoreQueries> _queries;
};

/// A client transaction. The destructor rolls it back unless `Commit` has been called.
class ClientTransaction
{
public:
    explicit ClientTransaction(Session& session);
    ~ClientTransaction();

    void Commit();

private:
    Q_DISABLE_COPY_MOVE(ClientTransaction)

    Session& _session;
    bool _open = true;
};

} // namespace tandryctl
