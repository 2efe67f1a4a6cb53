#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "ServerStore.h"
#include "Text.h"

#include "database/StoreChanges.h"
#include "database/StoreFactory.h"

namespace tandryctl {

namespace {

struct Notices
{
    QString store;
    bool on;
};

void CheckIsOnServer(Session const& session)
{
    if (!session.isOnServer())
        throw Failure(
            FailureCode::WrongUsage,
            QStringLiteral("the store %1 is a file, and files need no notices").arg(Quoted(session.storePath())),
            QStringLiteral("name a profile on a server; 'tandryctl watch' hears of every commit to a file"));
}

ExitStatus Report(Session& session, bool on)
{
    static Columns<Notices> const columns{
        {"store", Shown::Always, [](Notices const& notices) { return notices.store; }},
        {"notices", Shown::Always, [](Notices const& notices) { return notices.on; }},
    };
    session.output().Report(QStringLiteral("notices of commits to %1 are %2")
                                .arg(Quoted(session.storePath()), on ? QStringLiteral("on") : QStringLiteral("off")),
                            columns,
                            Notices{session.storePath(), on});
    return ExitStatus::Done;
}

ExitStatus Switch(Session& session, bool on)
{
    CheckIsOnServer(session);
    session.CheckWritten(SetNoticesOnServer(*session.store(), on));
    return Report(session, on);
}

ExitStatus Show(Session& session)
{
    CheckIsOnServer(session);
    return Report(session, session.Checked(session.store()->WatchChanges()) != nullptr);
}

} // namespace

void AddNoticesCommands(Command& top)
{
    // These have no --dry-run, which tries a command on the copy of a file.
    Command notices = top.Add("notices", "Have a profile on a server tell of commits");
    notices.Add("on", "Switch the notices on, for all clients")
        .Remark(
            "'tandryctl watch' and clients then hear of each commit at once. A statement that writes takes longer,\n"
            "and commits wait for each other. Any user of the database can hear the names of the tables that\n"
            "are written to. Only the profile's owner can switch.")
        .Example("--store postgresql://db.example/tandry?tandry_profile=ada notices on", "of Ada's profile")
        .Run([] { return StoreAccess::Write; }, [](Session& session) { return Switch(session, true); });
    notices.Add("off", "Switch them off")
        .Example("--store postgresql://db.example/tandry?tandry_profile=ada notices off", "of Ada's profile")
        .Run([] { return StoreAccess::Write; }, [](Session& session) { return Switch(session, false); });
    notices.Add("show", "Show whether they are on")
        .Example("--store postgresql://db.example/tandry?tandry_profile=ada notices show", "of Ada's profile")
        .Run(StoreAccess::Read, Show);
}

} // namespace tandryctl
