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

class StoreQuestions;

/// How a command opens the store.
enum class StoreAccess
{
    /// Makes it where there is none.
    Create,
    Write,
    /// Changes no byte of it.
    Read
};

/// What every command takes from the command line.
struct SessionOptions
{
    /// Empty for the user's own store.
    QString storePath;
    bool json = false;
    bool yes = false;
};

/// An open store with its managers, and the output of one command.
///
/// The managers answer a failure like a miss, so every answer goes through `Read` or `Wrote`, which ask the store
/// whether it failed and throw `Failure` if so.
class Session
{
public:
    Session(SessionOptions const& options, StoreAccess access);
    ~Session();

    QString const& storePath() const { return _storePath; }
    /// False when `StoreAccess::Create` found a store.
    bool isNew() const { return _isNew; }

    sync::config::FolderConfigManager& folders() { return *_folders; }
    sync::config::FileConfigManager& files() { return *_files; }
    sync::config::ServerConfigManager& servers() { return *_servers; }
    sync::config::AuthenticationConfigManager& accounts() { return *_accounts; }
    sync::config::ProductConfigManager& products() { return *_products; }
    sync::config::ScheduleEntryManager& schedules() { return *_schedules; }
    /// What no manager answers.
    StoreQuestions& questions() { return *_questions; }
    Output& output() { return _output; }

    /// Passes on what a reading operation answered, unless the store could not be read.
    template <class Answer>
    Answer Read(Answer answer)
    {
        _ThrowIfStoreFailed();
        return answer;
    }

    /// Looks at what a writing operation answered, and at whether what it wrote has become durable.
    void Wrote(bool done);

    /// Asks before something goes; throws when the answer is no, or when nobody can be asked. `what` says what will go
    /// and what will not: "folder 3 '/a' with 2 files".
    void ConfirmRemoval(QString const& what);

    /// Copies the store to a new file; throws when there is no whole copy.
    void Backup(QString const& path);
    /// What is wrong in the store, each fault in one text; throws when it can't be looked through.
    QStringList FindDamage();

    /// Hands over all output; throws when it could not be written.
    void Finish();

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
    std::unique_ptr<StoreQuestions> _questions;
};

/// The client's own bracket around several operations: what was written in it goes when it ends without a `Commit`.
class Bracket
{
public:
    explicit Bracket(Session& session);
    ~Bracket();

    void Commit();

private:
    Q_DISABLE_COPY_MOVE(Bracket)

    Session& _session;
    bool _open = true;
};

} // namespace tandryctl
