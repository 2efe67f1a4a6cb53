#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "RecordColumns.h"

namespace tandryctl {

using sync::config::ScheduleEntry;

namespace {

ExitStatus ShowDefault(Session& session)
{
    ScheduleEntry const schedule = session.Read(session.schedules().GetDefaultScheduleEntry());
    if (schedule.getId() == -1)
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("the store has no default schedule; see 'tandryctl list schedules'"));
    session.output().Show(ScheduleColumns(), schedule);
    return ExitStatus::Done;
}

} // namespace

void AddScheduleCommands(Command& top)
{
    Command schedules = top.Add("schedule", "Look at schedules");
    schedules.Add("default", "Show the schedule of folders that have none of their own")
        .Example("schedule default", "show how often folders are synchronised")
        .Run(StoreAccess::Read, ShowDefault);
}

} // namespace tandryctl
