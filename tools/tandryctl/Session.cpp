#include "Session.h"

#include "Failure.h"
#include "StoreCopy.h"
#include "StoreFailure.h"
#include "StoreQueries.h"
#include "Terminal.h"
#include "Text.h"

#include "database/AbsolutePath.h"
#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/StoreAdvice.h"
#include "tools/findings/StoreLocation.h"

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
using tandry::findings::PrivateCopy;

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

OpenOptions OptionsFor(StoreAccess access, std::optional<int> waitSeconds)
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
    : _storePath(access == StoreAccess::None ? QString() : StorePathOf(options))
    , _waitSeconds(options.waitSeconds)
    , _yes(options.yes || options.dryRun)
    , _dryRun(options.dryRun ? std::make_unique<QTemporaryDir>() : nullptr)
    , _output(_stdout, FormatOf(options), PlainFormOf(options))
{
    if (access == StoreAccess::None)
        return;

    QString error;
    QString path = sync::database::AbsolutePath(_storePath, &error);
    if (path.isNull())
        throw Failure(FailureCode::StoreMissing, OneLine(error), QStringLiteral("give an absolute path in UTF-8"));
    QFileInfo const file(path);
    bool const exists = file.exists() || file.isSymLink();
    if (!exists && access != StoreAccess::Create && access != StoreAccess::Replace)
        ThrowNoStore(_storePath);
    if (!exists && !options.storePath && !isDryRun())
        QDir().mkpath(file.absolutePath()); // if this fails, opening the store reports it
    _isNew = !exists;
    if (access == StoreAccess::Replace)
        return;

    StoreError openError;
    _store = isDryRun() ? SqliteDatabaseFactory::Open(_CopyForDryRun(exists), openError)
                        : SqliteDatabaseFactory::Open(_storePath, openError, OptionsFor(access, _waitSeconds));
    if (!_store && access == StoreAccess::Read && PrivateCopy::IsNeededAfter(openError.kind))
        _OpenPrivateCopy(openError);
    else if (!_store)
        throw StoreFailure(openError);

    for (QString const& warning : _store->openingWarnings())
        PrintWarning(QStringLiteral("warning: ") + OneLine(warning));

    _managers.emplace(_store);
    _queries = std::make_unique<StoreQueries>(_store);
}

Session::~Session() = default;

QString Session::_CopyForDryRun(bool exists)
{
    if (!_dryRun->isValid())
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("the dry run has no temporary folder for its copy of the store: %1")
                          .arg(OneLine(_dryRun->errorString())),
                      QStringLiteral("set TMPDIR to a folder that you may write"));
    QString path = _dryRun->filePath(QStringLiteral("store.db"));
    if (!exists)
        return path;
    StoreError error;
    auto const store = SqliteDatabaseFactory::Open(_storePath, error, OptionsFor(StoreAccess::Read, _waitSeconds));
    if (!store && PrivateCopy::IsNeededAfter(error.kind)) {
        _copy = CopyPrivately(_storePath, error.kind);
        return _copy->path();
    }
    if (!store)
        throw StoreFailure(error);
    if (!store->Backup(path))
        throw StoreFailure(*store->LastError());
    return path;
}

void Session::_OpenPrivateCopy(StoreError const& reason)
{
    _copy = CopyPrivately(_storePath, reason.kind);
    StoreError error;
    _store = SqliteDatabaseFactory::Open(_copy->path(), error, OptionsFor(StoreAccess::Write, _waitSeconds));
    if (!_store)
        throw StoreFailure(error);
}

void Session::CheckWritten(bool written, QString const& hintForOther)
{
    _ThrowIfStoreFailed(hintForOther);
    if (!written)
        throw Failure(FailureCode::StoreFailed,
                      QStringLiteral("the store %1 failed and reported no reason").arg(Quoted(_storePath)),
                      See("check"));
}

void Session::Announce(QString const& line)
{
    if (_yes && _output.format() == OutputFormat::Plain)
        _output.PrintLine(line);
    else
        PrintWarning(line);
}

Consent Session::AskFor(QString const& question) const
{
    if (_yes)
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
    CheckWritten(isDryRun() ? _store->DryRunBackup(path) : _store->Backup(path),
                 QStringLiteral("give a name that is not taken, in a folder that you may write"));
}

QStringList Session::FindDamage()
{
    std::optional<QStringList> const damage = _store->FindDamage();
    CheckWritten(damage.has_value());
    return *damage;
}

void Session::Flush()
{
    if (!_output.Flush() || !_stdout.Settle())
        throw _stdout.failure();
}

void Session::_ThrowIfStoreFailed(QString const& hintForOther)
{
    if (auto const error = _store->LastError())
        throw StoreFailure(*error, hintForOther);
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
