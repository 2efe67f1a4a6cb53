#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Listing.h"
#include "Lookups.h"
#include "Removal.h"
#include "StoreQuestions.h"
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

/// A product with what its record doesn't give away.
struct Product
{
    ProductConfiguration record;
    QVariant serverId;
    bool showSecret;
};

Columns<Product> const& ProductColumns()
{
    static Columns<Product> const columns{
        {"id", Shown::Always, [](Product const& p) { return p.record.getId(); }},
        {"name", Shown::Always, [](Product const& p) { return p.record.getName(); }},
        {"consumerKey", Shown::Always, [](Product const& p) { return p.record.getConsumerKey(); }},
        {"consumerSecret",
         Shown::InFull,
         [](Product const& p) {
             QString const secret = p.record.getConsumerSecret();
             return p.showSecret || secret.isEmpty() ? secret : QStringLiteral("(hidden)");
         }},
        {"serverId", Shown::Always, [](Product const& p) { return p.serverId; }},
    };
    return columns;
}

Product Complete(Session& session, ProductConfiguration const& record, bool showSecret = false)
{
    auto const serverId = session.Read(session.questions().ServerOfProduct(record.getId()));
    return {record, serverId ? QVariant(*serverId) : QVariant(), showSecret};
}

QString Title(ProductConfiguration const& product)
{
    return Titled("product", product.getId(), product.getName());
}

/// The first line of a file, or of standard input for "-": a secret on the command line would be seen by everyone.
QString ReadSecret(QString const& path)
{
    QFile file(path);
    bool const opened =
        path == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!opened)
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("the secret can't be read from %1: %2").arg(Quoted(path), file.errorString()));
    QByteArray line = file.readLine();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    auto const secret = Decoded(line);
    if (!secret)
        throw Failure(ExitStatus::WrongUsage, QStringLiteral("the secret in %1 is no UTF-8 text").arg(Quoted(path)));
    return *secret;
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
        throw Failure(ExitStatus::WrongUsage,
                      QStringLiteral("a product needs a name and a key; give them with --name and --key"));
}

void RefuseDouble(Session& session, ProductConfiguration const& product, int serverId)
{
    ProductConfiguration const other = session.Read(
        session.products().GetProductConfigurationByServerIdAndConsumerKey(serverId, product.getConsumerKey()));
    if (other.getId() != -1 && other.getId() != product.getId())
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("%1 has this key on server %2 already; change that one with 'tandryctl product "
                                     "update %3'")
                          .arg(Title(other), QString::number(serverId), QString::number(other.getId())));
}

ExitStatus Add(Session& session, Arguments const& arguments)
{
    ProductConfiguration product;
    if (arguments.secretFile)
        product.setConsumerSecret(ReadSecret(*arguments.secretFile)); // may wait for someone to type
    Bracket bracket(session);
    Fill(session, product, arguments);
    RefuseDouble(session, product, *arguments.server);
    session.Wrote(session.products().Add(product));
    bracket.Commit();
    session.output().Report(QStringLiteral("added ") + Title(product), ProductColumns(), Complete(session, product));
    return ExitStatus::Done;
}

ExitStatus ListAll(Session& session)
{
    QVector<Product> products;
    for (ProductConfiguration const& product : session.Read(session.products().GetAll()))
        products.append(Complete(session, product));
    return List(session, ProductColumns(), products, "products");
}

ExitStatus Show(Session& session, Arguments const& arguments)
{
    Product const product = Complete(session, FindProduct(session, arguments.id), arguments.showSecret);
    auto const server = session.Read(session.servers().GetServerConfigById(product.serverId.toLongLong()));
    session.output().Show(ProductColumns(), product, {{"server", server.getId() == -1 ? QString() : NameOf(server)}});
    return ExitStatus::Done;
}

ExitStatus Update(Session& session, Arguments const& arguments)
{
    if (ProductConfiguration const before = FindProduct(session, arguments.id); !before.getConsumerSecret().isEmpty())
        session.ConfirmRemoval(
            QStringLiteral("the consumer secret of %1, as every update of a product does").arg(Title(before)));

    Bracket bracket(session);
    ProductConfiguration product = FindProduct(session, arguments.id);
    int const serverId = Complete(session, product).serverId.toInt();
    Fill(session, product, arguments);
    RefuseDouble(session, product, arguments.server.value_or(serverId));
    session.Wrote(session.products().Update(product));
    bracket.Commit();
    session.output().Report(QStringLiteral("updated ") + Title(product),
                            ProductColumns(),
                            Complete(session, FindProduct(session, arguments.id)));
    return ExitStatus::Done;
}

ExitStatus Remove(Session& session, Arguments const& arguments)
{
    ProductConfiguration const product = FindProduct(session, arguments.id);
    Product const before = Complete(session, product);
    auto const countNaming = [&](char const* table) {
        return session.Read(session.questions().CountNaming(table, "productConfigurationId", product.getId()));
    };
    Removal removal(Title(product));
    removal.Leaves(countNaming("FolderConfiguration"),
                   "folder",
                   "folders",
                   NamesOfRoots(session, [&](FolderConfiguration const& root) {
                       return root.getProductConfigurationId() == product.getId();
                   }));
    removal.Leaves(countNaming("FileConfiguration"), "file", "files");
    removal.Leaves(countNaming("GeneratedFileConfiguration"), "generated file", "generated files");
    removal.Leaves(countNaming("BaseFileConfiguration"), "base file", "base files");
    session.ConfirmRemoval(removal.text());
    session.Wrote(session.products().Remove(product.getId()));
    session.output().Report(QStringLiteral("removed ") + removal.text(), ProductColumns(), before);
    return ExitStatus::Done;
}

Command& TakeFields(Command& command, Arguments& arguments)
{
    return command.Option("--name", arguments.name, "NAME", "The product's name")
        .Option("--key", arguments.key, "KEY", "Its consumer key")
        .Option("--server", arguments.server, "The server that it belongs to");
}

} // namespace

void AddProductCommands(Command& top)
{
    Command products = top.Add("product", "Look after the consumer products of the servers");
    auto const arguments = std::make_shared<Arguments>();

    Command add = products.Add("add", "Add a product");
    TakeFields(add, *arguments)
        .Option("--secret-file",
                arguments->secretFile,
                "FILE",
                "Take the consumer secret from the first line; - is standard input")
        .Demands("--name")
        .Demands("--key")
        .Demands("--server")
        .Example("product add --name Notes --key n-1 --server 1", "add a product without a secret")
        .Example("product add --name Notes --key n-1 --secret-file - --server 1", "type its secret, or pipe it in")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Add(session, *arguments); });

    products.Add("list", "List the products")
        .Example("product list", "show all products, without their secrets")
        .Run(StoreAccess::Read, ListAll);

    products.Add("show", "Show everything about a product")
        .Argument("ID", arguments->id, "The product's id")
        .Flag("--show-secret", arguments->showSecret, "Show its consumer secret too")
        .Example("product show 1", "show product 1 and its server")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Show(session, *arguments); });

    Command update = products.Add("update", "Change a product");
    TakeFields(update.Argument("ID", arguments->id, "The product's id"), *arguments)
        .Remark("What is not given stays as it is, but for the consumer secret: an update takes it away, so one that\n"
                "is there is asked about first.")
        .Example("product update 1 --name Notes", "give product 1 another name")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Update(session, *arguments); });

    products.Add("remove", "Remove a product")
        .Argument("ID", arguments->id, "The product's id")
        .Remark("Says how many folders and files would be left without a product, and asks first.")
        .Example("product remove 1", "remove product 1 after a question")
        .Run(StoreAccess::Write, [arguments](Session& session) { return Remove(session, *arguments); });
}

} // namespace tandryctl
