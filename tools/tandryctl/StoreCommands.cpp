#include "CommandLine.h"
#include "Commands.h"
#include "Text.h"

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
                                : QStringLiteral("the store %1 is there already; nothing was changed").arg(path),
                            columns,
                            Store{session.storePath(), session.isNew()});
    return ExitStatus::Done;
}

} // namespace

void AddStoreCommands(Command& top)
{
    top.Add("init", "Make a store")
        .Remark("The file is made with its whole schema, readable by its owner only. A store that is there already is\n"
                "left as it is. Without --store it is made in the user's data folder.")
        .Example("init", "make the user's own store")
        .Example("--store /tmp/try.db init", "make a store to try things out")
        .Run(StoreAccess::Create, Init);
}

} // namespace tandryctl
