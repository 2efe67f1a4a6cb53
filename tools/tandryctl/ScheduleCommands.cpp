#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "RecordColumns.h"
#include "Text.h"

namespace tandryctl {

using sync::config::ScheduleEntry;

namespace {

ExitStatus ShowDefault(Session& session)
{
    ScheduleEntry const schedule = session.Checked(session.schedules().GetDefaultScheduleEntry());
    if (schedule.getId() == -1)
        throw Failure(
            FailureCode::NotFound, QStringLiteral("the store has no default schedule"), See("list schedules"));
    session.output().Show(ScheduleColumns(), schedule);
    return ExitStatus::Done;
}

} // namespace

void AddScheduleCommands(Command& top)
{
    Command schedules = top.Add("schedule", "Show schedules");
    schedules.Add("default", "Show the default schedule, for folders without their own")
        .Example("schedule default", "show the default schedule")
        .Run(StoreAccess::Read, ShowDefault);
}

} // namespace tandryctl
