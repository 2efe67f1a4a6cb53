#include "CommandLine.h"
#include "Commands.h"
#include "Text.h"

#include <memory>

namespace tandryctl {

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

ExitStatus Backup(Session& session, QString const& path)
{
    struct Copy
    {
        QString store;
        QString backup;
    };
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

    auto const target = std::make_shared<QString>();
    top.Add("backup", "Copy the store to a new file")
        .Argument("PATH", *target, "The new file; an existing one is never replaced")
        .Remark("The copy is a store itself, readable and writable by its owner only. It holds the committed state of\n"
                "one moment, even while other programs write, and is checked for damage before it gets its name.")
        .Example("backup ~/backups/monday.db", "copy the user's own store")
        .Run(StoreAccess::Read, [target](Session& session) { return Backup(session, *target); });
    top.Add("check", "Check the store for damage")
        .Remark("Reads the whole store and changes nothing. Lists the damage it finds; the exit status is then 1.")
        .Example("check", "check the user's own store")
        .Run(StoreAccess::Read, Check);
}

} // namespace tandryctl
