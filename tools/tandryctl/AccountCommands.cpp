#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQueries.h"
#include "Text.h"

namespace tandryctl {

using sync::config::AuthenticationConfiguration;
using sync::config::FolderConfiguration;

namespace {

struct Arguments
{
    int id = 0;
    std::optional<QString> domain;
    std::optional<QString> domainId;
    std::optional<QString> user;
    std::optional<int> server;
};

QString LabelOf(AuthenticationConfiguration const& account)
{
    return Label("account", account.getId(), NameOf(account));
}

void Fill(Session& session, AuthenticationConfiguration& account, Arguments const& arguments)
{
    if (arguments.domain)
        account.setDomain(*arguments.domain);
    if (arguments.domainId)
        account.setDomainId(*arguments.domainId);
    if (arguments.user)
        account.setUserName(*arguments.user);
    if (arguments.server)
        account.setServerId(FindServer(session, *arguments.server).getId());
    if (account.getUserName().isEmpty())
        throw Failure(
            FailureCode::WrongUsage, QStringLiteral("the user name is empty"), QStringLiteral("give one with --user"));
}

void RefuseDuplicate(Session& session, AuthenticationConfiguration const& account)
{
    for (AuthenticationConfiguration const& other : session.Checked(session.accounts().GetAll())) {
        if (other.getId() != account.getId() && other.getServerId() == account.getServerId() &&
            other.getDomain() == account.getDomain() && other.getUserName() == account.getUserName())
            throw Failure(FailureCode::Conflict,
                          QStringLiteral("%1 already has this domain, user name and server").arg(LabelOf(other)),
                          See("account list"));
    }
}

ExitStatus Add(Session& session, Arguments const& arguments)
{
    ClientTransaction transaction(session);
    AuthenticationConfiguration account;
    Fill(session, account, arguments);
    RefuseDuplicate(session, account);
    session.CheckWritten(session.accounts().Add(account));
    transaction.Commit();
    session.output().Report(QStringLiteral("added ") + LabelOf(account), AccountColumns(), account);
    return ExitStatus::Done;
}

ExitStatus ListAll(Session& session, ListOptions const& options)
{
    return List(session,
                AccountColumns(),
                session.Checked(session.accounts().GetAll()),
                "accounts",
                "add one with 'tandryctl account add --user NAME --server ID'",
                options);
}

ExitStatus Show(Session& session, Arguments const& arguments)
{
    AuthenticationConfiguration const account = FindAccount(session, arguments.id);
    auto const server = session.Checked(session.servers().GetServerConfigByAuthenticationId(account.getId()));
    session.output().Show(AccountColumns(), account, {{"server", server.getId() == -1 ? QString() : NameOf(server)}});
    return ExitStatus::Done;
}

ExitStatus Update(Session& session, Arguments const& arguments)
{
    ClientTransaction transaction(session);
    AuthenticationConfiguration account = FindAccount(session, arguments.id);
    Fill(session, account, arguments);
    RefuseDuplicate(session, account);
    session.CheckWritten(session.accounts().Update(account));
    transaction.Commit();
    session.output().Report(QStringLiteral("updated ") + LabelOf(account), AccountColumns(), account);
    return ExitStatus::Done;
}

ExitStatus Remove(Session& session, Arguments const& arguments)
{
    AuthenticationConfiguration const account = FindAccount(session, arguments.id);
    Removal removal(LabelOf(account));
    removal.AddOrphaned(
        session.Checked(session.queries().CountReferences("FolderConfiguration", "authenticationId", account.getId())),
        "folder",
        "folders",
        LabelsOfRoots(session,
                      [&](FolderConfiguration const& root) { return root.getAuthenticationId() == account.getId(); }));
    session.ConfirmRemoval(removal.text());
    session.CheckWritten(session.accounts().Remove(account.getId()));
    session.output().Report(QStringLiteral("removed ") + removal.text(), AccountColumns(), account);
    return ExitStatus::Done;
}

Command& AddFieldOptions(Command& command, Arguments& arguments)
{
    return command.Option("--domain", arguments.domain, "NAME", "The user's domain")
        .Option("--domain-id", arguments.domainId, "ID", "The domain's identifier")
        .Option("--server", arguments.server, "The account's server");
}

} // namespace

void AddAccountCommands(Command& top)
{
    Command accounts = top.Add("account", "Manage accounts");
    auto const arguments = std::make_shared<Arguments>();

    Command add = accounts.Add("add", "Add an account");
    AddFieldOptions(add.Option("--user", arguments->user, "NAME", "The user's name"), *arguments)
        .Require("--user")
        .Require("--server")
        .Remark("Asks for no password: the store holds none.")
        .Example("account add --user anna --domain example --server 1", "add an account on server 1")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Add(session, *arguments); });

    auto const options = std::make_shared<ListOptions>();
    Command list = accounts.Add("list", "List the accounts");
    AddListOptions(list, *options, "userName")
        .Example("account list", "show all accounts")
        .Run(StoreAccess::Read, [options](Session& session) { return ListAll(session, *options); });

    accounts.Add("show", "Show everything about an account")
        .Argument("ID", arguments->id, "The account's id")
        .Example("account show 1", "show account 1 and its server")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Show(session, *arguments); });

    Command update = accounts.Add("update", "Change an account");
    update.Argument("ID", arguments->id, "The account's id")
        .Option("--user", arguments->user, "NAME", "The user's name");
    AddFieldOptions(update, *arguments)
        .Remark("Options that are not given leave their values unchanged.")
        .Example("account update 1 --server 2", "move account 1 to server 2")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Update(session, *arguments); });

    accounts.Add("remove", "Remove an account")
        .Argument("ID", arguments->id, "The account's id")
        .Remark("Counts the folders that will be left without an account, and asks for confirmation.")
        .Example("account remove 1", "remove account 1 after confirmation")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Remove(session, *arguments); });
}

} // namespace tandryctl
