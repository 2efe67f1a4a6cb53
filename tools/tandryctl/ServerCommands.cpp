#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "Text.h"
#include "config/DefaultServerSetting.h"

#include <QSet>
#include <QSettings>

#include <algorithm>

namespace tandryctl {

using sync::config::AuthenticationConfiguration;
using sync::config::FolderConfiguration;
using sync::config::ProductConfiguration;
using sync::config::ServerConfiguration;

namespace {

struct Arguments
{
    int id = 0;
    std::optional<QString> davUrl;
    std::optional<QString> webServiceUrl;
    std::optional<QString> alias;
    std::optional<QString> encoder;
};

QString LabelOf(ServerConfiguration const& server)
{
    return Label("server", server.getId(), NameOf(server));
}

/// Look-ups by URL cut one trailing slash and so does adding a server, but `Update` stores the URL unchanged.
QString WithoutSlash(QString url)
{
    if (url.endsWith(QLatin1Char('/')))
        url.chop(1);
    return url;
}

void Fill(ServerConfiguration& server, Arguments const& arguments)
{
    if (arguments.davUrl)
        server.setDavUrl(WithoutSlash(*arguments.davUrl));
    if (arguments.webServiceUrl)
        server.setWebServiceUrl(WithoutSlash(*arguments.webServiceUrl));
    if (arguments.alias)
        server.setAlias(*arguments.alias);
    if (arguments.encoder)
        server.setBinaryDiffEncoder(*arguments.encoder);
}

void RefuseDuplicate(Session& session, ServerConfiguration const& server)
{
    ServerConfiguration const other =
        session.Checked(session.servers().GetServerConfigByServers(server.getDavUrl(), server.getWebServiceUrl()));
    if (other.getId() != -1 && other.getId() != server.getId())
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 already has these URLs").arg(LabelOf(other)),
                      QStringLiteral("change it with 'tandryctl server update %1'").arg(other.getId()));
}

ExitStatus Add(Session& session, Arguments const& arguments)
{
    ServerConfiguration server;
    Fill(server, arguments);
    if (server.getDavUrl().isEmpty() && server.getWebServiceUrl().isEmpty())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("a server needs a URL"),
                      QStringLiteral("give --dav-url, --web-service-url or both"));
    ClientTransaction transaction(session);
    RefuseDuplicate(session, server);
    session.CheckWritten(session.servers().Add(server));
    transaction.Commit();
    session.output().Report(QStringLiteral("added ") + LabelOf(server), ServerColumns(), server);
    return ExitStatus::Done;
}

ExitStatus ListAll(Session& session, ListOptions const& options)
{
    return List(session,
                ServerColumns(),
                session.Checked(session.servers().GetAll()),
                "servers",
                "add one with 'tandryctl server add --web-service-url URL'",
                options);
}

ExitStatus Show(Session& session, Arguments const& arguments)
{
    session.output().Show(ServerColumns(), FindServer(session, arguments.id));
    return ExitStatus::Done;
}

ExitStatus Update(Session& session, Arguments const& arguments)
{
    ClientTransaction transaction(session);
    ServerConfiguration server = FindServer(session, arguments.id);
    Fill(server, arguments);
    RefuseDuplicate(session, server);
    session.CheckWritten(session.servers().Update(server));
    transaction.Commit();
    session.output().Report(QStringLiteral("updated ") + LabelOf(server), ServerColumns(), server);
    return ExitStatus::Done;
}

QVector<AuthenticationConfiguration> AccountsOf(Session& session, int serverId)
{
    QVector<AuthenticationConfiguration> accounts = session.Checked(session.accounts().GetAll());
    accounts.erase(
        std::remove_if(accounts.begin(),
                       accounts.end(),
                       [&](AuthenticationConfiguration const& account) { return account.getServerId() != serverId; }),
        accounts.end());
    return accounts;
}

QStringList LabelsOfProducts(Session& session, int serverId)
{
    QStringList names;
    for (ProductConfiguration const& product : session.Checked(session.products().GetAll())) {
        if (ServerIdOf(product) == serverId)
            names.append(Label("product", product.getId(), product.getName()));
    }
    return names;
}

ExitStatus Remove(Session& session, Arguments const& arguments)
{
    ServerConfiguration const server = FindServer(session, arguments.id);
    QStringList accounts;
    QSet<int> accountIds;
    for (AuthenticationConfiguration const& account : AccountsOf(session, server.getId())) {
        accounts.append(Label("account", account.getId(), NameOf(account)));
        accountIds.insert(account.getId());
    }
    QStringList const roots = LabelsOfRoots(
        session, [&](FolderConfiguration const& root) { return accountIds.contains(root.getAuthenticationId()); });
    QStringList const products = LabelsOfProducts(session, server.getId());

    Removal removal(LabelOf(server));
    removal.AddOrphaned(accounts.size(), "account", "accounts", accounts);
    removal.AddOrphaned(products.size(), "product", "products", products);
    removal.AddDeprived(roots.size(), "root", "roots", roots, "a server");
    if (session.Checked(session.servers().GetDefaultServerConfig()).getId() == server.getId())
        removal.AddRemark(QStringLiteral("it is the default server"));
    session.ConfirmRemoval(removal.text());
    session.CheckWritten(session.servers().Remove(server.getId()));
    session.output().Report(QStringLiteral("removed ") + removal.text(), ServerColumns(), server);
    return ExitStatus::Done;
}

/// The setting behind `GetDefaultServerConfig`, which returns only the server.
class DefaultServerSetting
{
public:
    DefaultServerSetting()
        : _settings(QSettings::UserScope,
                    sync::config::DefaultServerSetting::Organization,
                    sync::config::DefaultServerSetting::Application)
    {}

    QString text() const
    {
        if (!_settings.contains(_key))
            return QStringLiteral("server 1, since %1 holds no %2").arg(Quoted(_settings.fileName()), _key);
        return QStringLiteral("%1 = %2 in %3")
            .arg(_key, OneLine(_settings.value(_key).toString()), Quoted(_settings.fileName()));
    }

private:
    QSettings _settings;
    QString const _key = sync::config::DefaultServerSetting::Key;
};

ExitStatus ShowDefault(Session& session)
{
    QString const setting = DefaultServerSetting().text();
    ServerConfiguration const server = session.Checked(session.servers().GetDefaultServerConfig());
    if (server.getId() == -1)
        throw Failure(FailureCode::NotFound,
                      QStringLiteral("the default server is not on record (%1)").arg(setting),
                      See("server list"));
    session.output().Show(ServerColumns(), server, {{"setting", setting}});
    return ExitStatus::Done;
}

Command& AddFieldOptions(Command& command, Arguments& arguments)
{
    return command.Option("--dav-url", arguments.davUrl, "URL", "The URL for file transfer")
        .Option("--web-service-url", arguments.webServiceUrl, "URL", "The URL of the web service")
        .Option("--alias", arguments.alias, "NAME", "The name to show; by default a part of the web service URL")
        .Option("--encoder", arguments.encoder, "NAME", "The binary-diff encoder that it uses");
}

} // namespace

void AddServerCommands(Command& top)
{
    Command servers = top.Add("server", "Manage servers");
    auto const arguments = std::make_shared<Arguments>();

    Command add = servers.Add("add", "Add a server");
    AddFieldOptions(add, *arguments)
        .Example("server add --dav-url https://files.example.org/dav --web-service-url https://files.example.org/api",
                 "add a server, shown as 'files'")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Add(session, *arguments); });

    auto const options = std::make_shared<ListOptions>();
    Command list = servers.Add("list", "List the servers");
    AddListOptions(list, *options, "alias")
        .Example("server list", "show all servers")
        .Run(StoreAccess::Read, [options](Session& session) { return ListAll(session, *options); });

    servers.Add("show", "Show everything about a server")
        .Argument("ID", arguments->id, "The server's id")
        .Example("server show 1", "show server 1")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Show(session, *arguments); });

    Command update = servers.Add("update", "Change a server");
    AddFieldOptions(update.Argument("ID", arguments->id, "The server's id"), *arguments)
        .Remark("Options that are not given leave their values unchanged.")
        .Example("server update 1 --alias Office", "rename server 1")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Update(session, *arguments); });

    servers.Add("remove", "Remove a server")
        .Argument("ID", arguments->id, "The server's id")
        .Remark(
            "Lists the accounts, the products and the roots that will be left without a server, says whether it is\n"
            "the default server, and asks for confirmation.")
        .Example("server remove 1", "remove server 1 after confirmation")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Remove(session, *arguments); });

    servers.Add("default", "Show the default server and the setting behind it")
        .Example("server default", "show the default server")
        .Run(StoreAccess::Read, ShowDefault);
}

} // namespace tandryctl
