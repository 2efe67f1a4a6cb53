#include "database/file/StoreBackup.h"

#include "database/file/NewFile.h"
#include "database/file/StoreSnapshot.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/sqlite/SqliteHandle.h"

#include <QByteArray>
#include <QFileInfo>
#include <QStringList>

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace sync::database {

namespace {

StoreError TargetIsTaken(StoreFile const& target)
{
    return MakeError(target.path(),
                     SQLITE_CANTOPEN,
                     QStringLiteral("a backup replaces nothing, and there is a file of this name already, or a log or "
                                    "a journal that belongs to one"));
}

/// All pages of the source's transaction.
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

/// Whether a copy is a whole store, as another program will read it.
Failure LookThrough(StoreFile const& copy)
{
    if (Failure failure = copy.CheckHeader())
        return failure;
    StoreSnapshot snapshot(copy, 0);
    if (Failure failure = snapshot.Open(true))
        return failure;
    QStringList damage;
    if (Failure failure = snapshot.FindDamage(damage))
        return failure;
    if (damage.isEmpty())
        return {};
    return MakeError(
        copy.path(), SQLITE_CORRUPT, QStringLiteral("the copied store is damaged (%1)").arg(damage.first()));
}

Failure PutInPlace(NewFile const& file, StoreFile const& target)
{
    int errorNumber = file.PutInPlace();
    if (errorNumber == EEXIST)
        return TargetIsTaken(target);
    if (errorNumber != 0)
        return DescribeSystemError(target.path(), QStringLiteral("the backup can't be put in place"), errorNumber);
    errorNumber = file.FlushFolder();
    if (errorNumber == 0)
        return {};
    ::unlink(target.name());
    return DescribeSystemError(target.path(), QStringLiteral("the backup's folder can't be flushed"), errorNumber);
}

} // namespace

StoreBackup::StoreBackup(StoreFile source, bool readOnly, int busyTimeoutMsec)
    : _source(std::move(source))
    , _readOnly(readOnly)
    , _busyTimeoutMsec(busyTimeoutMsec)
{}

Failure StoreBackup::Write(StoreFile const& target) const
{
    if (Failure failure = target.CheckName())
        return failure;
    if (!target.IsFree())
        return TargetIsTaken(target);
    NewFile file(target.name());
    if (int const errorNumber = file.Make(); errorNumber != 0)
        return DescribeSystemError(
            target.path(),
            QStringLiteral("no backup can be made in %1").arg(QFileInfo(target.path()).absolutePath()),
            errorNumber);
    if (Failure failure = Copy(target, file.temporaryName()))
        return failure;
    if (Failure failure = LookThrough(target.Under(file.temporaryName())))
        return failure;
    return PutInPlace(file, target);
}

Failure StoreBackup::Copy(StoreFile const& target, QByteArray const& name) const
{
    StoreSnapshot source(_source, _busyTimeoutMsec);
    if (Failure failure = source.Open(_readOnly))
        return MakeError(target.path(), failure->code, QStringLiteral("no backup can be made: ") + failure->text);

    SqliteHandle copy;
    int code = OpenHandle(name.constData(), SQLITE_OPEN_READWRITE, copy);
    if (code == SQLITE_OK) // what fails is thrown away
        code = Execute(copy.get(), "PRAGMA journal_mode = MEMORY");
    if (code == SQLITE_OK)
        code = CopyPages(source.handle(), copy.get());
    if (code != SQLITE_OK)
        return DescribeError(copy.get(), code, target.path());
    if (Failure failure = source.CheckUnchanged())
        return MakeError(target.path(), failure->code, QStringLiteral("no backup can be made: ") + failure->text);
    return {};
}

} // namespace sync::database
