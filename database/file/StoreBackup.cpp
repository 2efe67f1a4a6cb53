#include "database/file/StoreBackup.h"

#include "database/file/NewFile.h"
#include "database/file/StoreDamage.h"
#include "database/file/StoreHeader.h"
#include "database/file/StoreSnapshot.h"
#include "database/sqlite/ErrorTexts.h"

#include <QStringList>

#include <utility>

namespace sync::database {

namespace {

StoreError TargetIsTaken(StoreFile const& target)
{
    return MakeError(target.path(),
                     SQLITE_CANTOPEN,
                     QStringLiteral("a backup replaces nothing, and there is a file of this name already"));
}

StoreError CannotBackUp(StoreFile const& target, StoreError const& reason)
{
    return MakeError(target.path(), reason.code, QStringLiteral("no backup can be made: ") + reason.text);
}

/// Copies all pages that the source's transaction sees. Returns SQLite's result code.
int CopyPages(sqlite3* from, sqlite3* to)
{
    sqlite3_backup* const backup = sqlite3_backup_init(to, "main", from, "main");
    if (backup == nullptr)
        return sqlite3_extended_errcode(to);
    int const code = sqlite3_backup_step(backup, -1);
    int const finished = sqlite3_backup_finish(backup);
    if (code != SQLITE_DONE)
        return code == SQLITE_OK ? SQLITE_BUSY : code;
    return finished;
}

/// Reads the file as another program will.
Failure CheckWhole(StoreFile const& file, StoreAccess access, int busyTimeoutMsec)
{
    if (Failure failure = StoreHeader::Check(file))
        return failure;
    StoreSnapshot snapshot(file, busyTimeoutMsec);
    if (Failure failure = snapshot.Open(access))
        return failure;
    QStringList damage;
    if (Failure failure = FindDamage(snapshot.store(), damage))
        return failure;
    if (damage.isEmpty())
        return {};
    return MakeError(
        file.path(), SQLITE_CORRUPT, QStringLiteral("the copied store is damaged (%1)").arg(damage.first()));
}

Failure CheckTarget(NewFile const& copy, StoreFile const& target)
{
    bool isTaken = false;
    if (Failure failure = copy.CheckTarget(isTaken))
        return failure;
    return isTaken ? Failure(TargetIsTaken(target)) : Failure();
}

} // namespace

StoreBackup::StoreBackup(StoreFile source, StoreAccess access, int busyTimeoutMsec)
    : _source(std::move(source))
    , _access(access)
    , _busyTimeoutMsec(busyTimeoutMsec)
{}

Failure StoreBackup::Write(StoreFile const& target) const
{
    NewFile copy(target);
    if (Failure failure = CheckTarget(copy, target))
        return failure;
    if (Failure failure = copy.Create(OwnerOf(_source)))
        return failure;
    if (Failure failure = WriteTo(copy))
        return failure;
    bool isTaken = false;
    Failure failure = copy.Publish(isTaken);
    return isTaken ? Failure(TargetIsTaken(target)) : failure;
}

Failure StoreBackup::WriteTo(NewFile const& copy) const
{
    if (Failure failure = Copy(copy))
        return failure;
    return CheckWhole(copy.file(), StoreAccess::ReadOnly, 0);
}

Failure StoreBackup::DryRun(StoreFile const& target) const
{
    NewFile const copy(target);
    if (Failure failure = CheckTarget(copy, target))
        return failure;
    if (Failure failure = copy.CheckFolder())
        return failure;
    Failure failure = CheckSource();
    return failure ? Failure(CannotBackUp(target, *failure)) : Failure();
}

Failure StoreBackup::CheckSource() const
{
    return CheckWhole(_source, _access, _busyTimeoutMsec);
}

Failure StoreBackup::Copy(NewFile const& copy) const
{
    StoreFile const target = copy.file();
    StoreSnapshot source(_source, _busyTimeoutMsec);
    if (Failure failure = source.Open(_access))
        return CannotBackUp(target, *failure);

    SqliteHandle handle;
    int code = copy.Open(handle);
    if (code == SQLITE_OK)
        code = CopyPages(source.store().get(), handle.get());
    if (code != SQLITE_OK)
        return DescribeError(handle.get(), code, target.path());
    if (Failure failure = source.store().CheckUnchanged())
        return CannotBackUp(target, *failure);
    return {};
}

} // namespace sync::database
