#include "Lookups.h"

#include "Failure.h"
#include "Session.h"
#include "StoreQueries.h"
#include "Text.h"

namespace tandryctl {

using sync::config::AuthenticationConfiguration;
using sync::config::FolderConfiguration;
using sync::config::ProductConfiguration;
using sync::config::ScheduleEntry;
using sync::config::ServerConfiguration;

namespace {

[[noreturn]] void ThrowNotFound(char const* kind, int id, char const* listing)
{
    throw Failure(
        FailureCode::NotFound, QStringLiteral("there is no %1 %2").arg(QLatin1String(kind)).arg(id), See(listing));
}

template <class Record>
Record FoundOrThrow(Record const& record, char const* kind, int id, char const* listing)
{
    if (record.getId() == -1)
        ThrowNotFound(kind, id, listing);
    return record;
}

} // namespace

FolderConfiguration FindFolder(Session& session, int id)
{
    return FoundOrThrow(
        session.Checked(session.folders().GetFolderConfigurationById(id)), "folder", id, "list folders");
}

FolderConfiguration FindRoot(Session& session, int id)
{
    FolderConfiguration const folder = session.Checked(session.folders().GetFolderConfigurationById(id));
    if (!folder.isRoot())
        ThrowNotFound("root", id, "list roots");
    return folder;
}

AuthenticationConfiguration FindAccount(Session& session, int id)
{
    return FoundOrThrow(
        session.Checked(session.accounts().GetAuthenticationConfigurationById(id)), "account", id, "account list");
}

ServerConfiguration FindServer(Session& session, int id)
{
    return FoundOrThrow(session.Checked(session.servers().GetServerConfigById(id)), "server", id, "server list");
}

ProductConfiguration FindProduct(Session& session, int id)
{
    return FoundOrThrow(
        session.Checked(session.products().GetProductConfigurationById(id)), "product", id, "product list");
}

ScheduleEntry FindSchedule(Session& session, int id)
{
    return FoundOrThrow(
        session.Checked(session.schedules().GetScheduleEntryById(id)), "schedule", id, "list schedules");
}

QVector<ScheduleEntry> AllSchedules(Session& session)
{
    QVector<ScheduleEntry> schedules;
    for (int const id : session.Checked(session.queries().ScheduleIds()))
        schedules.append(session.Checked(session.schedules().GetScheduleEntryById(id)));
    return schedules;
}

QVector<FolderConfiguration> FindRoots(Session& session, std::optional<int> id)
{
    if (id)
        return {FindRoot(session, *id)};
    QVector<FolderConfiguration> const roots = session.Checked(session.folders().GetAllRootFolders());
    if (roots.isEmpty())
        throw Failure(FailureCode::NotFound, QStringLiteral("no roots on record"), QLatin1String(HowToAddARoot));
    return roots;
}

QStringList LabelsOfRoots(Session& session, std::function<bool(FolderConfiguration const&)> const& predicate)
{
    QStringList labels;
    for (FolderConfiguration const& root : session.Checked(session.folders().GetAllRootFolders())) {
        if (predicate(root))
            labels.append(Label("root", root.getId(), root.getClientPath()));
    }
    return labels;
}

QString NameOf(AuthenticationConfiguration const& account)
{
    return account.getDomain().isEmpty() ? account.getUserName()
                                         : account.getDomain() + QLatin1Char('\\') + account.getUserName();
}

QString NameOf(ServerConfiguration const& server)
{
    for (QString const& name : {server.getAlias(), server.getWebServiceUrl()}) {
        if (!name.isEmpty())
            return name;
    }
    return server.getDavUrl();
}

QString Label(char const* kind, int id, QString const& name)
{
    return QStringLiteral("%1 %2 %3").arg(QLatin1String(kind)).arg(id).arg(Quoted(name));
}

QVector<Extra> AccountAndServerOf(Session& session, FolderConfiguration const& folder)
{
    auto const account =
        session.Checked(session.accounts().GetAuthenticationConfigurationById(folder.getAuthenticationId()));
    auto const server = session.Checked(session.servers().GetServerConfigByFolderId(folder.getId()));

    QVector<Extra> extras{{"accountId", {}}, {"account", {}}, {"serverId", {}}, {"server", {}}};
    if (account.getId() != -1) {
        extras[0].value = account.getId();
        extras[1].value = NameOf(account);
    }
    if (server.getId() != -1) {
        extras[2].value = server.getId();
        extras[3].value = NameOf(server);
    }
    return extras;
}

} // namespace tandryctl
