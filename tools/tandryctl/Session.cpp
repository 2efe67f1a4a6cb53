#include "Session.h"

#include "Failure.h"
#include "StoreQuestions.h"
#include "Terminal.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <optional>

#include <unistd.h>

namespace tandryctl {

using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;

namespace {

QString StorePath(QString const& given)
{
    if (!given.isEmpty())
        return given;
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/tandry.db");
}

[[noreturn]] void ThrowNoStore(QString const& path)
{
    throw Failure(ExitStatus::StoreFailed,
                  QStringLiteral("there is no store %1; make one with 'tandryctl --store FILE init', or name another")
                      .arg(Quoted(path)));
}

OpenOptions OptionsFor(StoreAccess access)
{
    OpenOptions options;
    switch (access) {
    case StoreAccess::Create:
        options.mode = OpenMode::OpenOrCreate;
        break;
    case StoreAccess::Write:
        options.mode = OpenMode::OpenExisting;
        break;
    case StoreAccess::Read:
        options.mode = OpenMode::ReadOnly;
        break;
    }
    return options;
}

} // namespace

Session::Session(SessionOptions const& options, StoreAccess access)
    : _storePath(StorePath(options.storePath))
    , _yes(options.yes)
    , _output(_stdout, options.json ? Form::Json : Form::Plain)
{
    if (!_stdout.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered))
        throw Failure(ExitStatus::NothingFound, QStringLiteral("standard output can't be written to"));

    QFileInfo const file(_storePath);
    bool const exists = file.exists() || file.isSymLink();
    if (!exists && access != StoreAccess::Create)
        ThrowNoStore(_storePath);
    if (!exists && options.storePath.isEmpty())
        QDir().mkpath(file.absolutePath()); // one that can't be made shows at the opening
    _isNew = !exists;

    QString error;
    _store = SqliteDatabaseFactory::Open(_storePath, &error, OptionsFor(access));
    if (!_store)
        throw Failure(ExitStatus::StoreFailed, Printable(error));

    _folders = std::make_shared<sync::config::FolderConfigManager>(_store, nullptr);
    _files = std::make_unique<sync::config::FileConfigManager>(_store, nullptr, _folders);
    _servers = std::make_unique<sync::config::ServerConfigManager>(_store);
    _accounts = std::make_unique<sync::config::AuthenticationConfigManager>(_store);
    _products = std::make_unique<sync::config::ProductConfigManager>(_store);
    _schedules = std::make_unique<sync::config::ScheduleEntryManager>(_store);
    _questions = std::make_unique<StoreQuestions>(_store);
}

Session::~Session() = default;

void Session::Wrote(bool done)
{
    _ThrowIfStoreFailed();
    if (!done)
        throw Failure(ExitStatus::StoreFailed,
                      QStringLiteral("the store %1 refused to write and gave no reason").arg(Quoted(_storePath)));
}

void Session::ConfirmRemoval(QString const& what)
{
    if (_yes)
        return;
    if (!CanAsk())
        throw Failure(
            ExitStatus::WrongUsage,
            QStringLiteral("this would remove %1; give --yes to do so without a terminal to ask on").arg(what));
    if (!Ask(QStringLiteral("Remove %1?").arg(what)))
        throw Failure(ExitStatus::NothingFound, QStringLiteral("nothing was removed"));
}

void Session::Backup(QString const& path)
{
    QString error;
    if (!_store->Backup(path, &error))
        throw Failure(ExitStatus::StoreFailed, Printable(error));
}

QStringList Session::FindDamage()
{
    QString error;
    std::optional<QStringList> const damage = _store->FindDamage(&error);
    if (!damage)
        throw Failure(ExitStatus::StoreFailed, Printable(error));
    return *damage;
}

void Session::Finish()
{
    if (!_output.Finish())
        throw Failure(ExitStatus::NothingFound, QStringLiteral("the output could not be written in full"));
}

void Session::_ThrowIfStoreFailed()
{
    auto const error = _store->LastError();
    if (error)
        throw Failure(ExitStatus::StoreFailed, QStringLiteral("the store failed: ") + Printable(error->text));
}

Bracket::Bracket(Session& session)
    : _session(session)
{
    _session.Wrote(_session.files().transaction());
}

Bracket::~Bracket()
{
    if (_open)
        static_cast<void>(_session.files().rollback()); // on the way out with the failure that counts
}

void Bracket::Commit()
{
    _open = false;
    _session.Wrote(_session.files().commit());
}

} // namespace tandryctl
