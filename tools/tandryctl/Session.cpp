#include "Session.h"

#include "ServerStore.h"
#include "StoreCopy.h"
#include "StoreFailure.h"
#include "StoreQueries.h"
#include "Terminal.h"
#include "Text.h"

#include "database/AbsolutePath.h"
#include "database/SqliteDatabaseFactory.h"
#include "tools/carry/Snapshot.h"
#include "tools/findings/StoreAdvice.h"
#include "tools/findings/StoreLocation.h"
#include "tools/findings/TemporaryFolder.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <optional>

#include <unistd.h>

namespace tandryctl {

using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::database::StoreFactory;
using tandry::findings::PrivateCopy;
using tandry::findings::TemporaryFolder;

namespace {

[[noreturn]] void ThrowNoStore(QString const& path)
{
    throw Failure(FailureCode::StoreMissing,
                  QStringLiteral("there is no store %1").arg(Quoted(path)),
                  tandry::findings::AdviceOnMissingStore());
}

PlainForm PlainFormOf(SessionOptions const& options)
{
    PlainForm form;
    form.clock = options.utc ? Clock::Utc : Clock::Local;
    form.width = options.width ? options.width : TerminalWidth(STDOUT_FILENO);
    if (form.width == 0)
        form.width.reset();
    form.hasColours = HasColours(STDOUT_FILENO);
    return form;
}

std::unique_ptr<QTemporaryDir> MakeFolderForDryRun()
{
    auto folder = std::make_unique<QTemporaryDir>(TemporaryFolder().filePath(QStringLiteral("tandry-dry-run-XXXXXX")));
    if (!folder->isValid())
        throw Failure(FailureCode::StoreFailed,
                      QStringLiteral("%1 cannot hold a copy of the store: %2")
                          .arg(Quoted(TemporaryFolder().path()), OneLine(folder->errorString())),
                      AdviceOnTemporaryFolder());
    return folder;
}

OpenOptions OpenOptionsFor(StoreAccess access, std::optional<int> waitSeconds)
{
    constexpr int mostSeconds = std::numeric_limits<int>::max() / 1000;
    OpenOptions options;
    if (waitSeconds)
        options.busyTimeoutMsec = std::min(*waitSeconds, mostSeconds) * 1000;
    switch (access) {
    case StoreAccess::Create:
        options.mode = OpenMode::OpenOrCreate;
        break;
    case StoreAccess::Write:
        options.mode = OpenMode::OpenExisting;
        break;
    case StoreAccess::Read:
    case StoreAccess::Replace:
    case StoreAccess::None:
        options.mode = OpenMode::ReadOnly;
        break;
    }
    return options;
}

} // namespace

QString StorePathOf(SessionOptions const& options)
{
    if (options.storePath && options.storePath->isEmpty())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the store's name is empty"),
                      QStringLiteral("give a file with --store or in TANDRY_STORE, or neither for your own store"));
    if (options.storePath)
        return *options.storePath;
    return tandry::findings::OwnStorePath();
}

OutputFormat FormatOf(SessionOptions const& options)
{
    return options.json ? OutputFormat::Json : OutputFormat::Plain;
}

Session::Session(SessionOptions const& options, StoreAccess access)
    : _options(options)
    , _storePath(access == StoreAccess::None ? QString() : StorePathOf(options))
    , _dryRun(options.dryRun ? MakeFolderForDryRun() : nullptr)
    , _output(_stdout, FormatOf(options), PlainFormOf(options))
{
    if (access == StoreAccess::None)
        return;
    if (IsOnServer(_storePath))
        _OpenOnServer(access);
    else
        _OpenFile(access);
    if (_store == nullptr)
        return;
    _managers.emplace(_store);
    _queries = std::make_unique<StoreQueries>(_store, isOnServer() ? OriginRecords::NotKept : OriginRecords::Kept);
}

Session::~Session() = default;

void Session::_OpenFile(StoreAccess access)
{
    QString error;
    QString path = sync::database::AbsolutePath(_storePath, &error);
    if (path.isNull())
        throw Failure(FailureCode::StoreMissing, OneLine(error), QStringLiteral("give an absolute path in UTF-8"));
    QFileInfo const file(path);
    bool const exists = file.exists() || file.isSymLink();
    if (!exists && access != StoreAccess::Create && access != StoreAccess::Replace)
        ThrowNoStore(_storePath);
    if (!exists && !_options.storePath && !isDryRun())
        QDir().mkpath(file.absolutePath()); // if this fails, opening the store reports it
    _isNew = !exists;
    if (access == StoreAccess::Replace)
        return;

    StoreError openError;
    _fileStore = isDryRun()
                     ? SqliteDatabaseFactory::Open(_CopyForDryRun(exists), openError)
                     : SqliteDatabaseFactory::Open(_storePath, openError, OpenOptionsFor(access, _options.waitSeconds));
    if (!_fileStore && access == StoreAccess::Read && PrivateCopy::IsNeededAfter(openError.kind))
        _OpenPrivateCopy(openError);
    else if (!_fileStore)
        throw StoreFailure(openError);
    _store = _fileStore;

    for (QString const& warning : _fileStore->openingWarnings())
        PrintWarning(QStringLiteral("warning: ") + OneLine(warning));
}

void Session::_OpenOnServer(StoreAccess access)
{
    if (isDryRun())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("--dry-run tries a command on a copy of the store's file, and this store is on a "
                                     "server"),
                      QLatin1String(CopyToAFile));
    StoreError error;
    OpenOptions options = OpenOptionsFor(access, _options.waitSeconds);
    ServerStore opened;
    if (access == StoreAccess::Create) {
        // Whether it is there already tells whether this creates it.
        options.mode = OpenMode::OpenExisting;
        opened = OpenOnServer(_storePath, options, error);
        _isNew = opened.store == nullptr;
        options.mode = OpenMode::OpenOrCreate;
    }
    if (opened.store == nullptr)
        opened = OpenOnServer(_storePath, options, error);
    if (opened.store == nullptr)
        throw StoreFailure(error, {}, StorePlace::Server);
    _store = opened.store;
    _storePath = opened.name;
}

std::unique_ptr<Session> Session::OpenOther(QString const& store, StoreAccess access, bool onCopy) const
{
    SessionOptions options = _options;
    options.storePath = store;
    options.dryRun = onCopy;
    try {
        return std::make_unique<Session>(options, access);
    }
    catch (Failure const& failure) {
        throw failure.InOtherStore(store);
    }
}

std::shared_ptr<StoreFactory> Session::State()
{
    if (isOnServer()) {
        StoreError error;
        ServerStore const state = OpenStateOnServer(StorePathOf(_options), error);
        if (state.store == nullptr)
            throw StoreFailure(error, {}, StorePlace::Server);
        return state.store;
    }
    StoreError error;
    _snapshot = tandry::carry::Snapshot::Take(*_fileStore, error);
    if (_snapshot == nullptr)
        throw CopyFailure(error);
    return _snapshot->store();
}

QString Session::_CopyForDryRun(bool exists)
{
    QString path = _dryRun->filePath(QStringLiteral("store.db"));
    if (!exists)
        return path;
    StoreError error;
    auto const store =
        SqliteDatabaseFactory::Open(_storePath, error, OpenOptionsFor(StoreAccess::Read, _options.waitSeconds));
    if (!store && PrivateCopy::IsNeededAfter(error.kind)) {
        _copy = CopyPrivately(_storePath, error.kind);
        return _copy->path();
    }
    if (!store)
        throw StoreFailure(error);
    if (!store->Backup(path))
        throw CopyFailure(*store->LastError());
    return path;
}

void Session::_OpenPrivateCopy(StoreError const& reason)
{
    _copy = CopyPrivately(_storePath, reason.kind);
    StoreError error;
    _fileStore =
        SqliteDatabaseFactory::Open(_copy->path(), error, OpenOptionsFor(StoreAccess::Write, _options.waitSeconds));
    if (!_fileStore)
        throw StoreFailure(error);
}

Failure Session::FailureOf(StoreError const& error, QString const& hintForOther) const
{
    return StoreFailure(error, hintForOther, isOnServer() ? StorePlace::Server : StorePlace::File);
}

void Session::CheckWritten(bool written, QString const& hintForOther)
{
    _ThrowIfStoreFailed(hintForOther);
    if (!written)
        throw Failure(FailureCode::StoreFailed,
                      QStringLiteral("the store %1 failed and reported no reason").arg(Quoted(_storePath)),
                      isOnServer() ? QStringLiteral("see what the server's log says") : See("check"));
}

void Session::Announce(QString const& line)
{
    if (_AsksNothing() && _output.format() == OutputFormat::Plain)
        _output.PrintLine(line);
    else
        PrintWarning(line);
}

Consent Session::AskFor(QString const& question) const
{
    if (_AsksNothing())
        return Consent::Given;
    if (!CanAsk())
        return Consent::CannotAsk;
    return Ask(question) ? Consent::Given : Consent::Denied;
}

void Session::ConfirmRemoval(QString const& what)
{
    switch (AskFor(QStringLiteral("Remove %1?").arg(what))) {
    case Consent::Given:
        return;
    case Consent::Denied:
        throw Failure(
            FailureCode::Declined, QStringLiteral("nothing was removed"), QStringLiteral("answer y to remove it"));
    case Consent::CannotAsk:
        throw Failure(FailureCode::Unconfirmed,
                      QStringLiteral("this would remove %1").arg(what),
                      QStringLiteral("without a terminal to confirm it, give --yes"));
    }
}

void Session::Backup(QString const& path)
{
    CheckWritten(isDryRun() ? _fileStore->DryRunBackup(path) : _fileStore->Backup(path),
                 QStringLiteral("give a name that is not taken, in a folder that you may write"));
}

QStringList Session::FindDamage()
{
    std::optional<QStringList> const damage = _fileStore->FindDamage();
    CheckWritten(damage.has_value());
    return *damage;
}

void Session::Flush()
{
    if (!_output.Flush() || !_stdout.Settle())
        throw _stdout.failure();
    if (_output.leftOut().isEmpty())
        return;
    PrintNote(QStringLiteral("the table is too wide for %1; --width 0 shows all columns")
                  .arg(JoinWithAnd(_output.leftOut())));
    _output.SetLeftOut({});
}

void Session::_ThrowIfStoreFailed(QString const& hintForOther)
{
    if (auto const error = _store->LastError())
        throw FailureOf(*error, hintForOther);
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
