#include "CommandLine.h"
#include "Commands.h"
#include "Text.h"

namespace tandryctl {

namespace {

ExitStatus Init(Session& session)
{
    session.output().Line(
        session.isNew()
            ? QStringLiteral("made the store %1").arg(Quoted(session.storePath()))
            : QStringLiteral("the store %1 is there already; nothing was changed").arg(Quoted(session.storePath())));
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
