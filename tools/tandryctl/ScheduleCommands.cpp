#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQueries.h"
#include "Text.h"

namespace tandryctl {

using sync::config::FolderConfiguration;
using sync::config::ScheduleEntry;
using sync::config::SyncSchedule;

namespace {

/// The `folderConfigurationId` of the default schedule.
constexpr int NoFolder = 0;

struct Arguments
{
    int id = 0;
    std::optional<int> folder;
    bool isDefault = false;
    std::optional<QString> start;
    std::optional<QString> expire;
    std::optional<int> type;
    std::optional<int> interval;
};

QString LabelOf(Session& session, ScheduleEntry const& schedule)
{
    if (schedule.getFolderConfigId() == NoFolder)
        return QStringLiteral("default schedule %1").arg(schedule.getId());
    FolderConfiguration const folder =
        session.Checked(session.folders().GetFolderConfigurationById(schedule.getFolderConfigId()));
    QString const owner = folder.getId() == -1
                              ? QStringLiteral("the missing folder %1").arg(schedule.getFolderConfigId())
                              : Label("folder", folder.getId(), folder.getClientPath());
    return QStringLiteral("schedule %1 of %2").arg(QString::number(schedule.getId()), owner);
}

/// Returns the time, or an invalid one for "none". Times of schedules are clock readings without a time zone.
QDateTime ReadTime(QString const& text)
{
    if (text == QLatin1String("none"))
        return {};
    QDateTime const time = QDateTime::fromString(text, Qt::ISODate);
    if (!time.isValid() || time.timeSpec() != Qt::LocalTime || time.date().year() < 1 || time.date().year() > 9999)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("%1 is not a time").arg(Quoted(text)),
                      QStringLiteral("give one such as 2027-01-31T08:30, without a time zone, or none"));
    return time;
}

void Fill(Session& session, ScheduleEntry& schedule, Arguments const& arguments)
{
    if (arguments.folder)
        schedule.setFolderConfigId(FindFolder(session, *arguments.folder).getId());
    if (arguments.isDefault)
        schedule.setFolderConfigId(NoFolder);
    if (arguments.start)
        schedule.setStartTime(ReadTime(*arguments.start));
    if (arguments.expire)
        schedule.setExpireTime(ReadTime(*arguments.expire));
    if (arguments.type)
        schedule.setSyncScheduleType(SyncSchedule(*arguments.type));
    if (arguments.interval)
        schedule.setSyncInterval(*arguments.interval);
    if (schedule.getStartTime().isValid() && schedule.getExpireTime().isValid() &&
        schedule.getExpireTime() < schedule.getStartTime())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the schedule would end before it begins"),
                      QStringLiteral("change --start or --expire"));
}

void RefuseDuplicate(Session& session, ScheduleEntry const& schedule)
{
    for (ScheduleEntry const& other : AllSchedules(session)) {
        if (other.getId() != schedule.getId() && other.getFolderConfigId() == schedule.getFolderConfigId())
            throw Failure(FailureCode::Conflict,
                          QStringLiteral("%1 is on record already").arg(LabelOf(session, other)),
                          QStringLiteral("change it with 'tandryctl schedule update %1'").arg(other.getId()));
    }
}

ExitStatus Add(Session& session, Arguments const& arguments)
{
    if (!arguments.folder && !arguments.isDefault)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("a schedule belongs to a folder or is the default"),
                      QStringLiteral("give --folder or --default"));
    ClientTransaction transaction(session);
    ScheduleEntry schedule;
    Fill(session, schedule, arguments);
    RefuseDuplicate(session, schedule);
    int const id = session.Checked(session.queries().AddSchedule(schedule));
    transaction.Commit();
    schedule = FindSchedule(session, id);
    session.output().Report(QStringLiteral("added ") + LabelOf(session, schedule), ScheduleColumns(), schedule);
    return ExitStatus::Done;
}

ExitStatus Update(Session& session, Arguments const& arguments)
{
    ClientTransaction transaction(session);
    ScheduleEntry schedule = FindSchedule(session, arguments.id);
    Fill(session, schedule, arguments);
    RefuseDuplicate(session, schedule);
    session.CheckWritten(session.schedules().Update(schedule));
    transaction.Commit();
    session.output().Report(QStringLiteral("updated ") + LabelOf(session, schedule), ScheduleColumns(), schedule);
    return ExitStatus::Done;
}

ExitStatus Remove(Session& session, Arguments const& arguments)
{
    ScheduleEntry const schedule = FindSchedule(session, arguments.id);
    Removal const removal(LabelOf(session, schedule));
    session.ConfirmRemoval(removal.text());
    session.CheckWritten(session.schedules().Remove(schedule.getId()));
    session.output().Report(QStringLiteral("removed ") + removal.text(), ScheduleColumns(), schedule);
    return ExitStatus::Done;
}

ExitStatus ShowDefault(Session& session)
{
    ScheduleEntry const schedule = session.Checked(session.schedules().GetDefaultScheduleEntry());
    if (schedule.getId() == -1)
        throw Failure(
            FailureCode::NotFound, QStringLiteral("the store has no default schedule"), See("list schedules"));
    session.output().Show(ScheduleColumns(), schedule);
    return ExitStatus::Done;
}

Command& AddFieldOptions(Command& command, Arguments& arguments)
{
    return command.Option("--folder", arguments.folder, "The folder that it belongs to")
        .Flag("--default", arguments.isDefault, "Make it the default, for folders without a schedule of their own")
        .Excludes("--default", "--folder")
        .Option("--start", arguments.start, "TIME", "When it begins, such as 2027-01-31T08:30; none for at once")
        .Option("--expire", arguments.expire, "TIME", "When it ends; none for never")
        .Number("--type", arguments.type, "The kind of schedule, a number of the client's own")
        .Number("--interval", arguments.interval, "The interval, in the client's own unit; 30 at first");
}

} // namespace

void AddScheduleCommands(Command& top)
{
    Command schedules = top.Add("schedule", "Manage schedules");
    auto const arguments = std::make_shared<Arguments>();

    Command add = schedules.Add("add", "Add a schedule to a folder");
    AddFieldOptions(add, *arguments)
        .Remark("Times are clock readings without a time zone. A folder has one schedule at most.")
        .Example("schedule add --folder 1 --interval 60", "give folder 1 a schedule of its own")
        .Example("schedule add --default", "add the default schedule if it is missing")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Add(session, *arguments); });

    schedules.Add("default", "Show the default schedule, for folders without their own")
        .Example("schedule default", "show the default schedule")
        .Run(StoreAccess::Read, ShowDefault);

    Command update = schedules.Add("update", "Change a schedule");
    AddFieldOptions(update.Argument("ID", arguments->id, "The schedule's id"), *arguments)
        .Remark("Options that are not given leave their values unchanged.")
        .Example("schedule update 2 --expire 2027-12-31T18:00", "let schedule 2 end")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Update(session, *arguments); });

    schedules.Add("remove", "Remove a schedule")
        .Argument("ID", arguments->id, "The schedule's id; see 'tandryctl list schedules'")
        .Remark("Shows the folder that will be left to the default schedule, and asks for confirmation.")
        .Example("schedule remove 2", "remove schedule 2 after confirmation")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Remove(session, *arguments); });
}

} // namespace tandryctl
