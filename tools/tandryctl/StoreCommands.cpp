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
    session.output().Line(QStringLiteral("the store %1 is whole").arg(Quoted(session.storePath())));
    return ExitStatus::Done;
}

} // namespace

void AddStoreCommands(Command& top)
{
    top.Add("init", "Make a store")
        .Remark(
            "The file is made with its whole schema, readable by its owner only. A store that is there already is\n"
            "kept, and brought up to date where an older version wrote it. Without --store it is made in the user's\n"
            "data folder.")
        .Example("init", "make the user's own store")
        .Example("--store /tmp/try.db init", "make a store to try things out")
        .Run(StoreAccess::Create, Init);

    auto const target = std::make_shared<QString>();
    top.Add("backup", "Copy the store to a new file")
        .Argument("PATH", *target, "The file to make; one that is there already is never replaced")
        .Remark(
            "The copy is a store of its own, readable by its owner only. It holds what was committed at one moment,\n"
            "also while other programs write, and is looked through for damage before it gets its name.")
        .Example("backup ~/backups/monday.db", "copy the user's own store")
        .Run(StoreAccess::Read, [target](Session& session) { return Backup(session, *target); });
    top.Add("check", "Look through the store for damage")
        .Remark("Reads the whole store and changes nothing. What is found is listed and makes the exit status 1.")
        .Example("check", "look through the user's own store")
        .Run(StoreAccess::Read, Check);
}

} // namespace tandryctl
