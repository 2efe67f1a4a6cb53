#include "database/file/StoreOwner.h"

#include "database/file/NewFile.h"
#include "database/file/StoreFile.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/store/StoreLog.h"

#include <QFile>

#include <sqlite3.h>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sync::database {

namespace {

constexpr uid_t Root = 0;

} // namespace

std::optional<FileOwner> OwnerOf(StoreFile const& file)
{
    struct stat status = {};
    if (::stat(file.name(), &status) != 0)
        return std::nullopt;
    return FileOwner{status.st_uid, status.st_gid};
}

void GiveTo(FileOwner owner, int descriptor)
{
    if (::geteuid() == Root && ::fchown(descriptor, owner.user, owner.group) != 0)
        qCWarning(StoreLog) << "a new file can't be given to the owner of the store:" << qt_error_string(errno);
}

Failure CheckOwnersBeside(StoreFile const& file)
{
    std::optional<FileOwner> const store = OwnerOf(file);
    if (!store)
        return {}; // opening it tells why
    for (char const* suffix : SuffixesBeside) {
        QByteArray const name = file.name() + QByteArray(suffix);
        struct stat beside = {};
        if (::lstat(name.constData(), &beside) != 0 || beside.st_uid == store->user || beside.st_uid == Root)
            continue;
        return MakeError(file.path(),
                         SQLITE_PERM,
                         QStringLiteral("%1 belongs to user %2 and the store to user %3: SQLite would play into the "
                                        "store what another user has written. Move the file away, or, if you know that "
                                        "it comes from this store, give it to the store's owner")
                             .arg(QFile::decodeName(name))
                             .arg(beside.st_uid)
                             .arg(store->user));
    }
    return {};
}

Failure CheckWriter(StoreFile const& file)
{
    uid_t const user = ::geteuid();
    std::optional<FileOwner> const store = OwnerOf(file);
    if (user == Root || !store || store->user == user)
        return {};
    // Some file systems give all files to one user, whoever creates them.
    NewFile probe(file);
    if (probe.Create())
        return {}; // SQLite tells why nothing can be created
    if (std::optional<FileOwner> const created = OwnerOf(probe.file()); !created || created->user == store->user)
        return {};
    return MakeError(file.path(),
                     SQLITE_PERM,
                     QStringLiteral("the store belongs to user %1, and only that user or root may write to it: open it "
                                    "as that user, or for reading only")
                         .arg(store->user));
}

void TakeRightsOfOthers(StoreFile const& file)
{
    constexpr mode_t Others = S_IRWXG | S_IRWXO;
    for (char const* suffix : DatabaseSuffixes) {
        QByteArray const name = file.name() + QByteArray(suffix);
        struct stat status = {};
        if (::lstat(name.constData(), &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & Others) != 0)
            ::fchmodat(AT_FDCWD, name.constData(), status.st_mode & S_IRWXU, AT_SYMLINK_NOFOLLOW);
    }
}

} // namespace sync::database
