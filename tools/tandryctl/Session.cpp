#include "Session.h"

#include "Failure.h"
#include "StoreQueries.h"
#include "Terminal.h"
#include "Text.h"

#include "database/AbsolutePath.h"
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
    throw Failure(
        ExitStatus::StoreFailed,
        QStringLiteral("there is no store %1; create it with 'tandryctl --store FILE init' or give another one")
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
    case StoreAccess::None:
        options.mode = OpenMode::ReadOnly;
        break;
    }
    return options;
}

} // namespace

Session::Session(SessionOptions const& options, StoreAccess access)
    : _storePath(StorePath(options.storePath))
    , _yes(options.yes)
    , _output(_stdout, options.json ? OutputFormat::Json : OutputFormat::Plain)
{
    if (!_stdout.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered))
        throw Failure(ExitStatus::NothingFound, QStringLiteral("standard output cannot be written"));

    if (access == StoreAccess::None)
        return;

    QString error;
    QString const path = sync::database::AbsolutePath(_storePath, &error);
    if (path.isNull())
        throw Failure(ExitStatus::StoreFailed, Printable(error));
    QFileInfo const file(path);
    bool const exists = file.exists() || file.isSymLink();
    if (!exists && access != StoreAccess::Create)
        ThrowNoStore(_storePath);
    if (!exists && options.storePath.isEmpty())
        QDir().mkpath(file.absolutePath()); // if this fails, opening the store reports it
    _isNew = !exists;

    _store = SqliteDatabaseFactory::Open(_storePath, &error, OptionsFor(access));
    if (!_store)
        throw Failure(ExitStatus::StoreFailed, Printable(error));

    _managers.emplace(_store);
    _queries = std::make_unique<StoreQueries>(_store);
}

Session::~Session() = default;

void Session::CheckWritten(bool written)
{
    _ThrowIfStoreFailed();
    if (!written)
        throw Failure(
            ExitStatus::StoreFailed,
            QStringLiteral("the store %1 could not be written and reported no reason").arg(Quoted(_storePath)));
}

void Session::ConfirmRemoval(QString const& what)
{
    if (_yes)
        return;
    if (!CanAsk())
        throw Failure(ExitStatus::WrongUsage,
                      QStringLiteral("this would remove %1; without a terminal to confirm it, give --yes").arg(what));
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

void Session::Flush()
{
    if (!_output.Flush())
        throw Failure(ExitStatus::NothingFound, QStringLiteral("the output could not be written completely"));
}

void Session::_ThrowIfStoreFailed()
{
    auto const error = _store->LastError();
    if (error)
        throw Failure(ExitStatus::StoreFailed, QStringLiteral("the store failed: ") + Printable(error->text));
}

ClientTransaction::ClientTransaction(Session& session)
    : _session(session)
{
    _session.CheckWritten(_session.files().transaction());
}

ClientTransaction::~ClientTransaction()
{
    if (_open)
        static_cast<void>(_session.files().rollback()); // a failure is already being reported
}

void ClientTransaction::Commit()
{
    _open = false;
    _session.CheckWritten(_session.files().commit());
}

} // namespace tandryctl
