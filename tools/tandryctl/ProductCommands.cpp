#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Listing.h"
#include "Lookups.h"
#include "RecordColumns.h"
#include "Removal.h"
#include "StoreQueries.h"
#include "Text.h"

#include <QFile>

#include <cstdio>

namespace tandryctl {

using sync::config::FolderConfiguration;
using sync::config::ProductConfiguration;

namespace {

struct Arguments
{
    int id = 0;
    std::optional<QString> name;
    std::optional<QString> key;
    std::optional<QString> secretFile;
    std::optional<int> server;
    bool showSecret = false;
};

QString LabelOf(ProductConfiguration const& product)
{
    return Label("product", product.getId(), product.getName());
}

/// Reads the first line of a file, or of standard input for "-": other users can see command lines. Returns null if it
/// is empty.
QString ReadSecret(QString const& path)
{
    QFile file(path);
    bool const opened =
        path == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!opened)
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("the secret cannot be read from %1: %2").arg(Quoted(path), file.errorString()),
                      QStringLiteral("give a file that you may read, or - for standard input"));
    QByteArray line = file.readLine();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    auto const secret = DecodeUtf8(line);
    if (!secret)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("the secret in %1 is not valid UTF-8").arg(Quoted(path)),
                      QStringLiteral("give a file with text in UTF-8"));
    return secret->isEmpty() ? QString() : *secret;
}

/// Returns the secret that the options name, or null. Call it before a transaction: it may wait for input.
QString GivenSecret(Arguments const& arguments)
{
    return arguments.secretFile ? ReadSecret(*arguments.secretFile) : QString();
}

void Fill(Session& session, ProductConfiguration& product, Arguments const& arguments)
{
    if (arguments.name)
        product.setName(*arguments.name);
    if (arguments.key)
        product.setConsumerKey(*arguments.key);
    if (arguments.server)
        product.setServerId(FindServer(session, *arguments.server).getId());
    if (product.getName().isEmpty() || product.getConsumerKey().isEmpty())
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("a product needs a name and a key"),
                      QStringLiteral("give them with --name and --key"));
}

void RefuseDuplicate(Session& session, ProductConfiguration const& product, int serverId)
{
    ProductConfiguration const other = session.Checked(
        session.products().GetProductConfigurationByServerIdAndConsumerKey(serverId, product.getConsumerKey()));
    if (other.getId() != -1 && other.getId() != product.getId())
        throw Failure(
            FailureCode::Conflict,
            QStringLiteral("%1 already has this key on server %2").arg(LabelOf(other), QString::number(serverId)),
            QStringLiteral("change it with 'tandryctl product update %1'").arg(other.getId()));
}

ExitStatus Add(Session& session, Arguments const& arguments)
{
    ProductConfiguration product;
    product.setConsumerSecret(GivenSecret(arguments));
    ClientTransaction transaction(session);
    Fill(session, product, arguments);
    RefuseDuplicate(session, product, *arguments.server);
    session.CheckWritten(session.products().Add(product));
    transaction.Commit();
    session.output().Report(QStringLiteral("added ") + LabelOf(product), ProductColumns(), product);
    return ExitStatus::Done;
}

ExitStatus ListAll(Session& session, ListOptions const& options)
{
    return List(session,
                ProductColumns(),
                session.Checked(session.products().GetAll()),
                "products",
                "add one with 'tandryctl product add --name NAME --key KEY --server ID'",
                options);
}

ExitStatus Show(Session& session, Arguments const& arguments)
{
    ProductConfiguration const product = FindProduct(session, arguments.id);
    auto const server = session.Checked(session.servers().GetServerConfigById(ServerIdOf(product)));
    session.output().Show(
        ProductColumns(arguments.showSecret), product, {{"server", server.getId() == -1 ? QString() : NameOf(server)}});
    return ExitStatus::Done;
}

ExitStatus Update(Session& session, Arguments const& arguments)
{
    QString const secret = GivenSecret(arguments);
    ClientTransaction transaction(session);
    ProductConfiguration product = FindProduct(session, arguments.id);
    ProductRemainder remainder = session.Checked(session.queries().RemainderOfProduct(arguments.id));
    if (arguments.secretFile)
        remainder.consumerSecret = secret;
    int const serverId = ServerIdOf(product);
    Fill(session, product, arguments);
    RefuseDuplicate(session, product, arguments.server.value_or(serverId));
    session.CheckWritten(session.products().Update(product));
    session.CheckWritten(session.queries().WriteRemainderOfProduct(arguments.id, remainder));
    transaction.Commit();
    session.output().Report(
        QStringLiteral("updated ") + LabelOf(product), ProductColumns(), FindProduct(session, arguments.id));
    return ExitStatus::Done;
}

ExitStatus Remove(Session& session, Arguments const& arguments)
{
    ProductConfiguration const product = FindProduct(session, arguments.id);
    auto const countReferences = [&](char const* table) {
        return session.Checked(session.queries().CountReferences(table, "productConfigurationId", product.getId()));
    };
    Removal removal(LabelOf(product));
    removal.AddOrphaned(countReferences("FolderConfiguration"),
                        "folder",
                        "folders",
                        LabelsOfRoots(session, [&](FolderConfiguration const& root) {
                            return root.getProductConfigurationId() == product.getId();
                        }));
    removal.AddOrphaned(countReferences("FileConfiguration"), "file", "files");
    removal.AddOrphaned(countReferences("GeneratedFileConfiguration"), "generated file", "generated files");
    removal.AddOrphaned(countReferences("BaseFileConfiguration"), "base file", "base files");
    session.ConfirmRemoval(removal.text());
    session.CheckWritten(session.products().Remove(product.getId()));
    session.output().Report(QStringLiteral("removed ") + removal.text(), ProductColumns(), product);
    return ExitStatus::Done;
}

Command& AddFieldOptions(Command& command, Arguments& arguments)
{
    return command.Option("--name", arguments.name, "NAME", "The product's name")
        .Option("--key", arguments.key, "KEY", "The consumer key")
        .Option("--server", arguments.server, "The product's server")
        .Option("--secret-file",
                arguments.secretFile,
                "FILE",
                "The file whose first line is the consumer secret; - for standard input");
}

} // namespace

void AddProductCommands(Command& top)
{
    Command products = top.Add("product", "Manage the consumer products of the servers");
    auto const arguments = std::make_shared<Arguments>();

    Command add = products.Add("add", "Add a product");
    AddFieldOptions(add, *arguments)
        .Require("--name")
        .Require("--key")
        .Require("--server")
        .Example("product add --name Notes --key n-1 --server 1", "add a product without a secret")
        .Example("product add --name Notes --key n-1 --secret-file - --server 1", "read its secret from standard input")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Add(session, *arguments); });

    auto const options = std::make_shared<ListOptions>();
    Command list = products.Add("list", "List the products");
    AddListOptions(list, *options)
        .Example("product list", "show all products, without their secrets")
        .Run(StoreAccess::Read, [options](Session& session) { return ListAll(session, *options); });

    products.Add("show", "Show everything about a product")
        .Argument("ID", arguments->id, "The product's id")
        .Flag("--show-secret", arguments->showSecret, "Show the consumer secret too")
        .Example("product show 1", "show product 1 and its server")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Show(session, *arguments); });

    Command update = products.Add("update", "Change a product");
    AddFieldOptions(update.Argument("ID", arguments->id, "The product's id"), *arguments)
        .Remark("Options that are not given leave their values unchanged. An empty first line of the secret's file "
                "removes\n"
                "the secret.")
        .Example("product update 1 --name Notes", "rename product 1 and keep its secret")
        .Example("product update 1 --secret-file - <secret.txt", "replace its secret")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Update(session, *arguments); });

    products.Add("remove", "Remove a product")
        .Argument("ID", arguments->id, "The product's id")
        .Remark("Counts the folders and files that will be left without a product, and asks for confirmation.")
        .Example("product remove 1", "remove product 1 after confirmation")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Remove(session, *arguments); });
}

} // namespace tandryctl
