#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Text.h"

#include "tools/findings/BackupFolder.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <memory>

namespace tandryctl {

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

ExitStatus BackupToFile(Session& session, QString const& path)
{
    static Columns<Copy> const columns{
        {"store", Shown::Always, [](Copy const& copy) { return copy.store; }},
        {"backup", Shown::Always, [](Copy const& copy) { return copy.backup; }},
    };
    session.Backup(path);
    session.output().Report(QStringLiteral("copied the store %1 to %2").arg(Quoted(session.storePath()), Quoted(path)),
                            columns,
                            Copy{session.storePath(), path});
    return ExitStatus::Done;
}

/// Removes the older backups after the new one has been checked.
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

    QString text = QStringLiteral("copied the store %1 to %2").arg(Quoted(session.storePath()), Quoted(path));
    QVariantList removed;
    QStringList failed;
    for (QString const& older : backups.OlderThanKept(path, keep)) {
        QFile file(older);
        if (!file.remove()) {
            failed.append(QStringLiteral("%1 (%2)").arg(Quoted(older), file.errorString()));
            continue;
        }
        removed.append(older);
        text += QStringLiteral("\nremoved the older backup ") + Quoted(older);
    }
    session.output().Report(text, columns, DatedCopy{{session.storePath(), path}, removed});
    if (!failed.isEmpty())
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("the store was copied to %1, but these older backups cannot be removed: %2")
                          .arg(Quoted(path), failed.join(QStringLiteral(", "))),
                      QStringLiteral("allow yourself to write their folder, or remove them by hand"));
    return ExitStatus::Done;
}

ExitStatus Backup(Session& session, BackupArguments const& arguments)
{
    return arguments.keep ? BackupIntoFolder(session, arguments.path, *arguments.keep)
                          : BackupToFile(session, arguments.path);
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
            "is in the user's data folder.")
        .Example("init", "create the user's own store")
        .Example("--store /tmp/try.db init", "create a store to experiment with")
        .Run(StoreAccess::Create, Init);

    auto const backup = std::make_shared<BackupArguments>();
    top.Add("backup", "Copy the store to a new file")
        .Argument("PATH", backup->path, "The new file, which must not exist; with --keep, a folder that exists")
        .Count("--keep", backup->keep, "Copy to a dated file in the folder PATH; keep the N newest of its backups")
        .Remark("The copy is a store itself, readable and writable by its owner only. It holds the committed state of\n"
                "one moment, even while other programs write, and is checked for damage before it gets its name.\n"
                "\n"
                "With --keep its name consists of the store's name and the time in UTC. When it is whole, the oldest\n"
                "backups in the folder are removed, except for the N newest. Files with other names, and files that\n"
                "are no stores, stay.")
        .Example("backup ~/backups/monday.db", "copy the user's own store")
        .Example("backup --keep 7 ~/backups", "the same every day, for a week")
        .Run(StoreAccess::Read, [backup](Session& session) { return Backup(session, *backup); });
    top.Add("check", "Check the store for damage")
        .Remark("Reads the whole store and changes nothing. Lists the damage it finds; the exit status is then 1.")
        .Example("check", "check the user's own store")
        .Run(StoreAccess::Read, Check);
}

} // namespace tandryctl
