#include "database/file/StoreOwner.h"

#include "database/file/NewFile.h"
#include "database/file/StoreFile.h"
#include "database/sqlite/ErrorTexts.h"

#include <QFile>

#include <sqlite3.h>

#include <sys/stat.h>
#include <unistd.h>

namespace sync::database {

namespace {

constexpr uid_t Root = 0;

} // namespace

Failure CheckOwnersBeside(StoreFile const& file)
{
    struct stat store = {};
    if (::stat(file.name(), &store) != 0)
        return {}; // opening it tells why
    for (char const* suffix : SuffixesBeside) {
        QByteArray const name = file.name() + QByteArray(suffix);
        struct stat beside = {};
        if (::lstat(name.constData(), &beside) != 0 || beside.st_uid == store.st_uid || beside.st_uid == Root)
            continue;
        return MakeError(file.path(),
                         SQLITE_PERM,
                         QStringLiteral("%1 belongs to user %2 and the store to user %3: SQLite would play into the "
                                        "store what another user has written. Move the file away, or, if you know that "
                                        "it comes from this store, give it to the store's owner")
                             .arg(QFile::decodeName(name))
                             .arg(beside.st_uid)
                             .arg(store.st_uid));
    }
    return {};
}

Failure CheckWriter(StoreFile const& file)
{
    uid_t const user = ::geteuid();
    struct stat store = {};
    if (user == Root || ::stat(file.name(), &store) != 0 || store.st_uid == user)
        return {};
    // Some file systems give all files to one user, whoever creates them.
    NewFile probe(file);
    struct stat created = {};
    if (probe.Create() || ::stat(probe.file().name(), &created) != 0 || created.st_uid == store.st_uid)
        return {}; // SQLite tells why nothing can be created
    return MakeError(file.path(),
                     SQLITE_PERM,
                     QStringLiteral("the store belongs to user %1, and only that user or root may write to it: open it "
                                    "as that user, or for reading only")
                         .arg(store.st_uid));
}

} // namespace sync::database
