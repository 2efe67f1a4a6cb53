#pragma once

#include "Output.h"

#include "config/AuthenticationConfigManager.h"
#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <memory>
#include <utility>

namespace sync::database {
class SqliteDatabaseFactory;
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
    /// Opens it for reading; changes no byte of it.
    Read
};

/// The common options of all commands.
struct SessionOptions
{
    /// Empty for the user's own store.
    QString storePath;
    bool json = false;
    bool yes = false;
};

/// The open store with its managers, and the output of one command.
///
/// A manager returns the same for a miss and for a failure, so every result is passed to `Checked` or `CheckWritten`,
/// which throw `Failure` if the store has failed.
class Session
{
public:
    Session(SessionOptions const& options, StoreAccess access);
    ~Session();

    QString const& storePath() const { return _storePath; }
    /// Returns whether this session has created the store.
    bool isNew() const { return _isNew; }

    sync::config::FolderConfigManager& folders() { return *_folders; }
    sync::config::FileConfigManager& files() { return *_files; }
    sync::config::ServerConfigManager& servers() { return *_servers; }
    sync::config::AuthenticationConfigManager& accounts() { return *_accounts; }
    sync::config::ProductConfigManager& products() { return *_products; }
    sync::config::ScheduleEntryManager& schedules() { return *_schedules; }
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

    /// Throws if a writing operation has returned false, or if its commit has failed.
    void CheckWritten(bool written);

    /// Asks for confirmation; throws if it is denied or if there is no terminal. `what` completes the question "Remove
    /// ...?", such as "folder 3 '/a' with 2 files".
    void ConfirmRemoval(QString const& what);

    /// Copies the store to a new file. Throws if that fails.
    void Backup(QString const& path);
    /// Returns one text per fault found in the store. Throws if the store cannot be checked.
    QStringList FindDamage();

    /// Writes all output. Throws if that fails.
    void Flush();

private:
    Q_DISABLE_COPY_MOVE(Session)

    void _ThrowIfStoreFailed();

    QString const _storePath;
    bool const _yes;
    bool _isNew = false;
    QFile _stdout;
    Output _output;
    std::shared_ptr<sync::database::SqliteDatabaseFactory> _store;
    std::shared_ptr<sync::config::FolderConfigManager> _folders;
    std::unique_ptr<sync::config::FileConfigManager> _files;
    std::unique_ptr<sync::config::ServerConfigManager> _servers;
    std::unique_ptr<sync::config::AuthenticationConfigManager> _accounts;
    std::unique_ptr<sync::config::ProductConfigManager> _products;
    std::unique_ptr<sync::config::ScheduleEntryManager> _schedules;
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
