#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQuestions.h"
#include "Text.h"

#include <QSettings>

namespace tandryctl {

using sync::config::AuthenticationConfiguration;
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

QString Title(ServerConfiguration const& server)
{
    return Titled("server", server.getId(), NameOf(server));
}

/// Stored URLs end without the slash that look-ups by URL cut off; an update stores what it is given.
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

void RefuseDouble(Session& session, ServerConfiguration const& server)
{
    ServerConfiguration const other =
        session.Read(session.servers().GetServerConfigByServers(server.getDavUrl(), server.getWebServiceUrl()));
    if (other.getId() != -1 && other.getId() != server.getId())
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("%1 has these URLs already; change that one with 'tandryctl server update %2'")
                          .arg(Title(other), QString::number(other.getId())));
}

ExitStatus Add(Session& session, Arguments const& arguments)
{
    ServerConfiguration server;
    Fill(server, arguments);
    if (server.getDavUrl().isEmpty() && server.getWebServiceUrl().isEmpty())
        throw Failure(ExitStatus::WrongUsage,
                      QStringLiteral("a server needs a URL; give --dav-url, --web-service-url or both"));
    Bracket bracket(session);
    RefuseDouble(session, server);
    session.Wrote(session.servers().Add(server));
    bracket.Commit();
    session.output().Report(QStringLiteral("added ") + Title(server), ServerColumns(), server);
    return ExitStatus::Done;
}

ExitStatus ListAll(Session& session)
{
    return List(session, ServerColumns(), session.Read(session.servers().GetAll()), "servers");
}

ExitStatus Show(Session& session, Arguments const& arguments)
{
    session.output().Show(ServerColumns(), FindServer(session, arguments.id));
    return ExitStatus::Done;
}

ExitStatus Update(Session& session, Arguments const& arguments)
{
    Bracket bracket(session);
    ServerConfiguration server = FindServer(session, arguments.id);
    Fill(server, arguments);
    RefuseDouble(session, server);
    session.Wrote(session.servers().Update(server));
    bracket.Commit();
    session.output().Report(QStringLiteral("updated ") + Title(server), ServerColumns(), server);
    return ExitStatus::Done;
}

QStringList NamesOfAccounts(Session& session, int serverId)
{
    QStringList names;
    for (AuthenticationConfiguration const& account : session.Read(session.accounts().GetAll())) {
        if (account.getServerId() == serverId)
            names.append(Titled("account", account.getId(), NameOf(account)));
    }
    return names;
}

QStringList NamesOfProducts(Session& session, int serverId)
{
    QStringList names;
    for (ProductConfiguration const& product : session.Read(session.products().GetAll())) {
        if (session.Read(session.questions().ServerOfProduct(product.getId())) == serverId)
            names.append(Titled("product", product.getId(), product.getName()));
    }
    return names;
}

ExitStatus Remove(Session& session, Arguments const& arguments)
{
    ServerConfiguration const server = FindServer(session, arguments.id);
    Removal removal(Title(server));
    auto const countNaming = [&](char const* table) {
        return session.Read(session.questions().CountNaming(table, "serverId", server.getId()));
    };
    removal.Leaves(
        countNaming("AuthenticationConfiguration"), "account", "accounts", NamesOfAccounts(session, server.getId()));
    removal.Leaves(
        countNaming("ProductConfiguration"), "product", "products", NamesOfProducts(session, server.getId()));
    session.ConfirmRemoval(removal.text());
    session.Wrote(session.servers().Remove(server.getId()));
    session.output().Report(QStringLiteral("removed ") + removal.text(), ServerColumns(), server);
    return ExitStatus::Done;
}

/// The setting that the library reads; it gives back the server alone.
class DefaultServerSetting
{
public:
    DefaultServerSetting()
        : _settings(QSettings::UserScope, QStringLiteral("Norvalis"), QStringLiteral("Norvalis Sync"))
    {}

    QString text() const
    {
        if (!_settings.contains(_key))
            return QStringLiteral("server 1, since %1 holds no %2").arg(Quoted(_settings.fileName()), _key);
        return QStringLiteral("%1 = %2 in %3")
            .arg(_key, Printable(_settings.value(_key).toString()), Quoted(_settings.fileName()));
    }

private:
    QSettings _settings;
    QString const _key = QStringLiteral("Tandry/DefaultServerConfigurationId");
};

ExitStatus ShowDefault(Session& session)
{
    QString const setting = DefaultServerSetting().text();
    ServerConfiguration const server = session.Read(session.servers().GetDefaultServerConfig());
    if (server.getId() == -1)
        throw Failure(
            ExitStatus::NothingFound,
            QStringLiteral("the default server is not on record (%1); see 'tandryctl server list'").arg(setting));
    session.output().Show(ServerColumns(), server, {{"setting", setting}});
    return ExitStatus::Done;
}

Command& TakeFields(Command& command, Arguments& arguments)
{
    return command.Option("--dav-url", arguments.davUrl, "URL", "Where files are exchanged")
        .Option("--web-service-url", arguments.webServiceUrl, "URL", "Where the web service answers")
        .Option("--alias", arguments.alias, "NAME", "What to call it; without it a part of the web service URL")
        .Option("--encoder", arguments.encoder, "NAME", "The binary-diff encoder that it uses");
}

} // namespace

void AddServerCommands(Command& top)
{
    Command servers = top.Add("server", "Look after the servers");
    auto const arguments = std::make_shared<Arguments>();

    Command add = servers.Add("add", "Add a server");
    TakeFields(add, *arguments)
        .Example("server add --dav-url https://files.example.org/dav --web-service-url https://files.example.org/api",
                 "add a server that will be called 'files'")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Add(session, *arguments); });

    servers.Add("list", "List the servers").Example("server list", "show all servers").Run(StoreAccess::Read, ListAll);

    servers.Add("show", "Show everything about a server")
        .Argument("ID", arguments->id, "The server's id")
        .Example("server show 1", "show server 1")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Show(session, *arguments); });

    Command update = servers.Add("update", "Change a server");
    TakeFields(update.Argument("ID", arguments->id, "The server's id"), *arguments)
        .Remark("What is not given stays as it is.")
        .Example("server update 1 --alias Office", "give server 1 another name")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Update(session, *arguments); });

    servers.Add("remove", "Remove a server")
        .Argument("ID", arguments->id, "The server's id")
        .Remark("Says which accounts and products would be left without a server, and asks first.")
        .Example("server remove 1", "remove server 1 after a question")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Remove(session, *arguments); });

    servers.Add("default", "Show the default server and what makes it that")
        .Example("server default", "show which server a new account is offered")
        .Run(StoreAccess::Read, ShowDefault);
}

} // namespace tandryctl
