#include "CommandLine.h"
#include "Commands.h"
#include "StoreCopy.h"
#include "StoreFailure.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"

#include <memory>

namespace tandryctl {

using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;

namespace {

ExitStatus Restore(Session& session, QString const& backup)
{
    struct Restored
    {
        QString store;
        QString backup;
        QString kept;
    };
    static Columns<Restored> const columns{
        {"store", Shown::Always, [](Restored const& restored) { return restored.store; }},
        {"backup", Shown::Always, [](Restored const& restored) { return restored.backup; }},
        {"kept", Shown::Always, [](Restored const& restored) { return restored.kept; }},
    };
    auto const restore = session.isDryRun() ? &SqliteDatabaseFactory::DryRunRestore : &SqliteDatabaseFactory::Restore;
    StoreError error;
    std::optional<QString> kept = restore(backup, session.storePath(), error);
    if (!kept && error.kind == StoreErrorKind::NotClosed) {
        auto const copy = CopyPrivately(backup, error.kind);
        // Closes it: what its log holds moves into the file.
        static_cast<void>(SqliteDatabaseFactory::Open(copy->path(), error));
        kept = restore(copy->path(), session.storePath(), error);
    }
    if (!kept)
        throw StoreFailure(error, QStringLiteral("give a backup that can be read, and a place that you may write"));

    QString text = QStringLiteral("restored the store %1 from %2").arg(Quoted(session.storePath()), Quoted(backup));
    if (!kept->isEmpty())
        text += QStringLiteral("; the earlier store is kept as %1").arg(Quoted(*kept));
    session.output().Report(text, columns, Restored{session.storePath(), backup, kept->isEmpty() ? QString() : *kept});
    return ExitStatus::Done;
}

} // namespace

void AddRestoreCommand(Command& top)
{
    auto const backup = std::make_shared<QString>();
    top.Add("restore", "Put a backup in the place of the store")
        .Argument("BACKUP", *backup, "A file that 'backup' has written, or another closed store; it is not changed")
        .DryRun()
        .Remark("Checks the backup for damage before anything changes. Keeps the earlier store, with the log or the\n"
                "journal beside it, under its name with '.replaced' appended. Fails if a program has the store open,\n"
                "so close the client first. If it is interrupted, run it again.")
        .Example("restore ~/backups/monday.db", "restore the user's own store")
        .OnlyOnFiles("put a dump of the profile back with 'pg_restore' or 'psql'")
        .Run(StoreAccess::Replace, [backup](Session& session) { return Restore(session, *backup); });
}

} // namespace tandryctl
