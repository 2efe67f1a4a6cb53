#include "database/file/StoreRestore.h"

#include "database/file/Descriptor.h"
#include "database/file/DiskFlush.h"
#include "database/file/NewFile.h"
#include "database/file/StoreHeader.h"
#include "database/sqlite/ErrorTexts.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace sync::database {

namespace {

/// For a backup that another program is writing.
constexpr int BusyTimeoutMsec = 5000;

void Remove(StoreFile const& file)
{
    for (char const* suffix : DatabaseSuffixes)
        ::unlink((QByteArray(file.name()) + suffix).constData());
}

/// Returns 0 or the operating system's error number.
int CopyClosedFile(QByteArray const& from, QByteArray const& to)
{
    std::error_code error;
    std::filesystem::copy_file(from.constData(), to.constData(), error);
    return error ? error.value() : FlushFile(to.constData());
}

} // namespace

StoreRestore::StoreRestore(StoreFile backup, StoreFile store)
    : _backup(std::move(backup))
    , _store(std::move(store))
    , _lock(_store)
{}

Failure StoreRestore::Prepare()
{
    if (Failure failure = CheckNames())
        return failure;
    if (Failure failure = StoreHeader::Check(_backup))
        return failure;
    if (!_store.IsMissing()) {
        if (Failure failure = _lock.Take())
            return failure;
        StoreHeader header;
        if (Failure failure = header.Read(_store))
            return failure;
        _wasInterrupted = header.isRestoreNotice();
    }
    return {};
}

Failure StoreRestore::Run()
{
    if (Failure failure = Prepare())
        return failure;
    // With two names, the store to be kept could only be read.
    if (!_wasInterrupted) {
        for (QByteArray const& name : _store.NamesOfInterruptedRestore())
            ::unlink(name.constData());
    }
    std::optional<FileIdentity> const earlier = _store.Identity();
    Failure failure = Replace();
    if (failure && _kept && _store.Identity() == earlier) {
        Remove(*_kept);
        _kept.reset();
    }
    return failure;
}

Failure StoreRestore::DryRun()
{
    if (Failure failure = Prepare())
        return failure;
    if (Failure failure = NewFile(_store).CheckFolder())
        return failure;
    if (Failure failure = SourceOfCopy().CheckSource())
        return CannotRestore(*failure);
    if (HasEarlierStore())
        _kept = NameToKeep();
    return {};
}

Failure StoreRestore::CheckNames() const
{
    if (Failure failure = _store.CheckNewName())
        return failure;
    if (_store.Identity() && _store.Identity() == _backup.Identity())
        return MakeError(_store.path(), SQLITE_CANTOPEN, QStringLiteral("the backup is the store itself"));
    struct stat status = {};
    if (!_store.IsMissing() && ::stat(_store.name(), &status) != 0)
        return DescribeSystemError(_store.path(), QStringLiteral("the store can't be replaced"), errno);
    if (!_store.IsMissing() && !S_ISREG(status.st_mode))
        return MakeError(_store.path(), SQLITE_CANTOPEN, QStringLiteral("this is no ordinary file"));
    return {};
}

Failure StoreRestore::Replace()
{
    NewFile restored(_store);
    if (Failure failure = restored.Create(OwnerOf(_store.IsMissing() ? _backup : _store)))
        return failure;
    if (Failure failure = SourceOfCopy().WriteTo(restored))
        return CannotRestore(*failure);
    if (HasEarlierStore()) {
        if (Failure failure = Keep())
            return failure;
    }
    if (HasFilesBeside()) {
        if (Failure failure = RemoveFilesBeside())
            return failure;
    }
    return restored.Replace();
}

StoreBackup StoreRestore::SourceOfCopy() const
{
    return {_backup, StoreAccess::ReadOnly, BusyTimeoutMsec};
}

StoreError StoreRestore::CannotRestore(StoreError const& reason) const
{
    return MakeError(_backup.path(), reason.code, QStringLiteral("this backup can't be restored: ") + reason.text);
}

bool StoreRestore::HasEarlierStore() const
{
    return !_wasInterrupted && !_store.IsFree();
}

StoreFile StoreRestore::NameToKeep() const
{
    return StoreFile::FirstFree(_store.path() + QLatin1String(KeptSuffix));
}

bool StoreRestore::HasFilesBeside() const
{
    return std::any_of(std::next(std::begin(DatabaseSuffixes)), std::end(DatabaseSuffixes), [&](char const* suffix) {
        return _store.Exists(suffix);
    });
}

Failure StoreRestore::Keep()
{
    StoreFile const kept = NameToKeep();
    Failure failure = kept.CheckName();
    if (!failure)
        failure = KeepFiles(kept);
    if (failure)
        Remove(kept);
    else
        _kept = kept;
    return failure;
}

/// The file itself comes last: where it is, the files beside it are too.
Failure StoreRestore::KeepFiles(StoreFile const& kept) const
{
    int errorNumber = 0;
    for (auto suffix = std::rbegin(DatabaseSuffixes); suffix != std::rend(DatabaseSuffixes); ++suffix) {
        if (errorNumber != 0 || !_store.Exists(*suffix))
            continue;
        QByteArray const from = QByteArray(_store.name()) + *suffix;
        QByteArray const to = QByteArray(kept.name()) + *suffix;
        if (::link(from.constData(), to.constData()) == 0)
            continue;
        // Not every file system has hard links. To open and close the locked file would release the lock.
        errorNumber = **suffix == '\0' ? _lock.CopyTo(to.constData()) : CopyClosedFile(from, to);
    }
    if (errorNumber == 0)
        errorNumber = FlushFolder(kept.folder());
    if (errorNumber == 0)
        return {};
    return DescribeSystemError(
        _store.path(), QStringLiteral("the earlier store can't be kept as %1").arg(kept.path()), errorNumber);
}

Failure StoreRestore::RemoveFilesBeside()
{
    if (!_wasInterrupted) {
        if (Failure failure = PutUpNotice())
            return failure;
    }
    int errorNumber = 0;
    for (auto suffix = std::next(std::begin(DatabaseSuffixes)); suffix != std::end(DatabaseSuffixes); ++suffix) {
        if (::unlink((QByteArray(_store.name()) + *suffix).constData()) != 0 && errno != ENOENT)
            errorNumber = errno;
    }
    if (errorNumber == 0)
        errorNumber = FlushFolder(_store.folder());
    if (errorNumber == 0)
        return {};
    return DescribeSystemError(_store.path(),
                               QStringLiteral("the log and the journal of the earlier store can't be removed; restore "
                                              "the backup again"),
                               errorNumber);
}

Failure StoreRestore::PutUpNotice()
{
    QByteArray const text = QByteArray(StoreHeader::RestoreNotice) +
                            ".\nThis was interrupted: restore the backup again.\nThe earlier store is kept as " +
                            QFile::encodeName(_kept->path()) + "\n";
    NewFile notice(_store);
    if (Failure failure = notice.Create(OwnerOf(_store)))
        return failure;
    {
        Descriptor const file(::open(notice.file().name(), O_WRONLY | O_CLOEXEC));
        if (!file.isValid() || ::write(file.get(), text.constData(), static_cast<size_t>(text.size())) != text.size())
            return DescribeSystemError(_store.path(), QStringLiteral("the store can't be replaced"), errno);
    }
    return notice.Replace();
}

} // namespace sync::database
