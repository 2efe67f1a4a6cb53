#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Progress.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/BackupFolder.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <memory>

namespace tandryctl {

using sync::database::Compaction;
using tandry::findings::BackupFolder;

namespace {

ExitStatus Init(Session& session)
{
    struct Store
    {
        QString path;
        bool made;
    };
    static Columns<Store> const columns{
        {"store", Shown::Always, [](Store const& store) { return store.path; }},
        {"made", Shown::Always, [](Store const& store) { return store.made; }},
    };
    QString const path = Quoted(session.storePath());
    session.output().Report(session.isNew()
                                ? QStringLiteral("made the store ") + path
                                : QStringLiteral("the store %1 is there already; no record was changed").arg(path),
                            columns,
                            Store{session.storePath(), session.isNew()});
    return ExitStatus::Done;
}

struct BackupArguments
{
    QString path;
    std::optional<int> keep;
};

struct Copy
{
    QString store;
    QString backup;
};

QString SentenceOn(Copy const& copy)
{
    return QStringLiteral("copied the store %1 to %2").arg(Quoted(copy.store), Quoted(copy.backup));
}

ExitStatus BackupToFile(Session& session, QString const& path)
{
    static Columns<Copy> const columns{
        {"store", Shown::Always, [](Copy const& copy) { return copy.store; }},
        {"backup", Shown::Always, [](Copy const& copy) { return copy.backup; }},
    };
    session.Backup(path);
    Copy const copy{session.storePath(), path};
    session.output().Report(SentenceOn(copy), columns, copy);
    return ExitStatus::Done;
}

/// Names the older backups and asks whether they may be deleted. Returns the failure of the command if not.
std::optional<Failure> AskToDelete(Session& session, QStringList const& older, QString const& newest)
{
    for (QString const& path : older)
        session.Announce(QStringLiteral("to be deleted from the disk: ") + Quoted(path));
    QString const counted = Counted(older.size(), "older backup", "older backups");
    QString const copied = QStringLiteral("the store was copied to %1, but ").arg(Quoted(newest));
    switch (session.AskFor(QStringLiteral("Delete %1?").arg(counted))) {
    case Consent::Given:
        break;
    case Consent::Denied:
        return Failure(FailureCode::Declined,
                       copied + QStringLiteral("no older backup was deleted"),
                       QStringLiteral("answer y to delete them"));
    case Consent::CannotAsk:
        return Failure(FailureCode::Unconfirmed,
                       copied + QStringLiteral("this would delete %1").arg(counted),
                       QStringLiteral("without a terminal to confirm it, give --yes"));
    }
    return std::nullopt;
}

/// Deletes the older backups, unless this is a dry run, and adds them to `deleted`. Returns the failure of the command
/// if some are still there.
std::optional<Failure>
DeleteOlder(Session const& session, QStringList const& older, QString const& newest, QVariantList& deleted)
{
    QStringList failed;
    for (QString const& path : older) {
        QFile file(path);
        if (session.isDryRun() || file.remove())
            deleted.append(path);
        else
            failed.append(QStringLiteral("%1 (%2)").arg(Quoted(path), file.errorString()));
    }
    if (failed.isEmpty())
        return std::nullopt;
    return Failure(FailureCode::UnusableFile,
                   QStringLiteral("the store was copied to %1, but these older backups cannot be deleted: %2")
                       .arg(Quoted(newest), failed.join(QStringLiteral(", "))),
                   QStringLiteral("allow yourself to write their folder, or delete them by hand"));
}

ExitStatus BackupIntoFolder(Session& session, QString const& folder, int keep)
{
    struct DatedCopy
    {
        Copy copy;
        QVariantList removed;
    };
    static Columns<DatedCopy> const columns{
        {"store", Shown::Always, [](DatedCopy const& dated) { return dated.copy.store; }},
        {"backup", Shown::Always, [](DatedCopy const& dated) { return dated.copy.backup; }},
        {"removed", Shown::Always, [](DatedCopy const& dated) { return dated.removed; }},
    };
    if (!QFileInfo(folder).isDir())
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("there is no folder %1").arg(Quoted(folder)),
                      QStringLiteral("make it first; with --keep, backups go into a folder"));
    BackupFolder const backups(folder, session.storePath());
    QString const path = backups.NewPath(QDateTime::currentDateTimeUtc());
    session.Backup(path);
    DatedCopy dated{{session.storePath(), path}, {}};
    session.output().PrintLine(SentenceOn(dated.copy));
    session.Flush(); // so that it precedes the question

    std::optional<Failure> failure;
    if (QStringList const older = backups.OlderThanKept(path, keep); !older.isEmpty()) {
        failure = AskToDelete(session, older, path);
        if (!failure)
            failure = DeleteOlder(session, older, path, dated.removed);
    }
    if (session.output().format() == OutputFormat::Json)
        session.output().Show(columns, dated);
    else if (!dated.removed.isEmpty())
        session.output().PrintLine(QStringLiteral("deleted from the disk: ") +
                                   Counted(dated.removed.size(), "older backup", "older backups"));
    session.Flush();
    if (failure)
        throw Failure(*failure);
    return ExitStatus::Done;
}

ExitStatus Backup(Session& session, BackupArguments const& arguments)
{
    return arguments.keep ? BackupIntoFolder(session, arguments.path, *arguments.keep)
                          : BackupToFile(session, arguments.path);
}

ExitStatus Compact(Session& session)
{
    struct Compacted
    {
        QString store;
        Compaction sizes;
    };
    static Columns<Compacted> const columns{
        {"store", Shown::Always, [](Compacted const& compacted) { return compacted.store; }},
        {"bytesBefore", Shown::Always, [](Compacted const& compacted) { return compacted.sizes.bytesBefore; }},
        {"bytesAfter", Shown::Always, [](Compacted const& compacted) { return compacted.sizes.bytesAfter; }},
        {"pending", Shown::Always, [](Compacted const& compacted) { return compacted.sizes.isPending; }},
    };
    std::optional<Progress> progress;
    qint64 done = 0;
    auto const sizes = session.fileStore()->Compact([&](qint64 pages, qint64 ofPages) {
        if (!progress)
            progress.emplace(QStringLiteral("compacting"), "pages", ofPages);
        progress->Advance(pages - done);
        done = pages;
    });
    progress.reset(); // erases its line
    session.CheckWritten(sizes.has_value());
    session.output().Report(QStringLiteral("compacted the store %1: %2 bytes before, %3 after")
                                .arg(Quoted(session.storePath()))
                                .arg(sizes->bytesBefore)
                                .arg(sizes->bytesAfter),
                            columns,
                            Compacted{session.storePath(), *sizes});
    if (sizes->isPending)
        session.output().PrintLine(QStringLiteral("another program still reads the store as it was: the file shrinks "
                                                  "when that has finished and something is written"));
    return ExitStatus::Done;
}

ExitStatus Check(Session& session)
{
    static Columns<QString> const columns{{"damage", Shown::Always, [](QString const& fault) { return fault; }}};
    QStringList const damage = session.FindDamage();
    session.output().List(columns, damage);
    if (!damage.isEmpty())
        return ExitStatus::NothingFound;
    session.output().PrintLine(QStringLiteral("the store %1 is whole").arg(Quoted(session.storePath())));
    return ExitStatus::Done;
}

} // namespace

void AddStoreCommands(Command& top)
{
    top.Add("init", "Create a store")
        .Remark(
            "Creates the store with its complete schema, readable and writable by its owner only. Keeps an existing\n"
            "store and its records, and upgrades one that an older version has written. Without --store, the store\n"
            "is in the user's data folder. With the URI of a profile, creates the profile's schema on the server.")
        .Example("init", "create the user's own store")
        .Example("--store /tmp/try.db init", "create a store to experiment with")
        .Run(StoreAccess::Create, Init);

    auto const backup = std::make_shared<BackupArguments>();
    top.Add("backup", "Copy the store to a new file")
        .Argument("PATH", backup->path, "The new file, which must not exist; with --keep, a folder that exists")
        .Count("--keep", backup->keep, "Copy to a dated file in the folder PATH; keep the N newest of its backups")
        .DryRun()
        .Remark(
            "The copy is a store itself, readable and writable by its owner only. It holds the committed state of\n"
            "one moment, even while other programs write, and is checked for damage before it gets its name.\n"
            "\n"
            "With --keep its name consists of the store's name and the time in UTC. When it is whole, the oldest\n"
            "backups in the folder are deleted, except for the N newest. Each is named first, and a question asked;\n"
            "without a terminal, --yes is needed, or they stay and the exit status is 2. Files with other names,\n"
            "and files that are no stores, are never deleted.")
        .Example("backup ~/backups/monday.db", "copy the user's own store")
        .Example("backup --keep 7 --yes ~/backups", "the same from a timer every day, for a week")
        .OnlyOnFiles("dump the profile with 'pg_dump --schema=tandry_NAME', or use 'tandryctl export'")
        .Run(StoreAccess::Read, [backup](Session& session) { return Backup(session, *backup); });
    top.Add("compact", "Give the space of removed rows back to the disk")
        .Remark(
            "Rebuilds the store's file without unused space; no record changes. Other programs may read meanwhile,\n"
            "unless the store has a rollback journal, and writing ones wait. Needs room for a second copy of the\n"
            "records in the store's folder, which is checked first, and as much memory. If it is interrupted, the\n"
            "store is as it was.")
        .Example("compact", "compact the user's own store")
        .Example("compact --dry-run", "see what it would gain")
        .OnlyOnFiles("the server does it by itself, or with 'VACUUM (FULL)'")
        .Run(StoreAccess::Write, Compact);
    top.Add("check", "Check the store for damage")
        .Remark("Reads the whole store and changes nothing. Lists the damage it finds; the exit status is then 1.")
        .Example("check", "check the user's own store")
        .OnlyOnFiles("check the server's files with 'pg_amcheck'; the profile's tables are checked at each opening")
        .Run(StoreAccess::Read, Check);
}

} // namespace tandryctl
