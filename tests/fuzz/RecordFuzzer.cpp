// Writes records with any texts to a store and reads them back. They are unchanged, or refused with an error.

#include "config/AuthenticationConfigManager.h"
#include "config/AuthenticationConfiguration.h"
#include "config/FileConfigManager.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfigManager.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfigManager.h"
#include "config/ProductConfiguration.h"
#include "config/RecordColumns.h"
#include "config/ServerConfigManager.h"
#include "config/ServerConfiguration.h"
#include "database/SqliteDatabaseFactory.h"
#include "fuzz/FuzzInput.h"
#include "interf/IQSqlDatabaseWrapper.h"

#include <QLoggingCategory>
#include <QTemporaryDir>

using namespace tandry::fuzz;
using namespace sync::config;

namespace {

bool Same(QString const& left, QString const& right)
{
    return left == right && left.isNull() == right.isNull();
}

/// Sets all columns of text that a client may set, and returns the texts.
template <class Record>
QStringList TakeTexts(FuzzInput& input, Record& record)
{
    QStringList texts;
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        if (column.kind() == ColumnKind::Text && !column.isReadOnly()) {
            texts.append(input.TakeText());
            Require(column.Set(record, texts.back()), "a column takes a text");
        }
    }
    return texts;
}

/// Expects the columns of text to be the same in both records.
template <class Record>
void RequireSameTexts(Record const& read, Record const& written)
{
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        if (column.kind() == ColumnKind::Text)
            Require(Same(column.Get(read).toString(), column.Get(written).toString()), qPrintable(column.name()));
    }
}

/// One store for the whole run. Each input runs in a client transaction that is rolled back.
class Store
{
public:
    Store()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("tandry.*=false")); // there are many errors
        factory = sync::database::SqliteDatabaseFactory::Open(_folder.filePath(QStringLiteral("store.db")));
        Require(factory != nullptr, "the store opens");
        folders = std::make_shared<FolderConfigManager>(factory, nullptr);
    }

    /// Expects the right result of `Add` for a record with these texts.
    void ExpectResult(bool added, QStringList const& texts) const
    {
        bool const canBeKept = std::all_of(texts.begin(), texts.end(), HasNoLoneSurrogate);
        Require(added == canBeKept, "a record is added exactly when its texts can be kept");
        Require(factory->LastError().has_value() == !canBeKept, "there is an error exactly when a record was refused");
        factory->ClearError();
    }

private:
    QTemporaryDir _folder;

public:
    std::shared_ptr<sync::database::SqliteDatabaseFactory> factory;
    std::shared_ptr<FolderConfigManager> folders;
};

void TryServer(Store& store, FuzzInput& input)
{
    ServerConfigManager servers(store.factory);
    ServerConfiguration server;
    QStringList const texts = TakeTexts(input, server);

    bool const added = servers.Add(server);
    store.ExpectResult(added, texts);
    ServerConfiguration const read = servers.GetServerConfigById(server.getId());
    Require(read.getId() == server.getId(), "a server is there when it was added, and else not");
    if (!added)
        return;
    auto const chopped = [](QString const& url) { return url.endsWith(QLatin1Char('/')) ? url.chopped(1) : url; };
    server.setAlias(server.getAlias()); // the derived one if none was set
    server.setDavUrl(chopped(server.getDavUrl()));
    server.setWebServiceUrl(chopped(server.getWebServiceUrl()));
    RequireSameTexts(read, server);
}

void TryAccount(Store& store, FuzzInput& input)
{
    AuthenticationConfigManager accounts(store.factory);
    AuthenticationConfiguration account;
    QStringList const texts = TakeTexts(input, account);
    account.setPassword(input.TakeText());

    bool const added = accounts.Add(account);
    store.ExpectResult(added, texts);
    AuthenticationConfiguration const read = accounts.GetAuthenticationConfigurationById(account.getId());
    Require(read.getId() == account.getId(), "an account is there when it was added, and else not");
    if (!added)
        return;
    RequireSameTexts(read, account);
    Require(read.getPassword().isNull(), "no password comes from a store");
    int const found =
        accounts.GetAuthenticationConfigurationByDomainAndUser(account.getDomain(), account.getUserName()).getId();
    bool const comparable = !account.getDomain().isNull() && !account.getUserName().isNull();
    Require(found == (comparable ? account.getId() : -1), "an account is found by its name");
}

void TryProduct(Store& store, FuzzInput& input)
{
    ProductConfigManager products(store.factory);
    ProductConfiguration product;
    QStringList const texts = TakeTexts(input, product);

    bool const added = products.Add(product);
    store.ExpectResult(added, texts);
    ProductConfiguration const read = products.GetProductConfigurationById(product.getId());
    Require(read.getId() == product.getId(), "a product is there when it was added, and else not");
    if (!added)
        return;
    RequireSameTexts(read, product);
}

void TryFolder(Store& store, FuzzInput& input)
{
    FolderConfiguration folder;
    folder.setParentId(0);
    QStringList const texts = TakeTexts(input, folder);
    QString const feature = input.TakeText();
    folder.setFeatureName(feature);

    bool const added = store.folders->Add(folder);
    store.ExpectResult(added, texts + QStringList(feature));
    FolderConfiguration const read = store.folders->GetFolderConfigurationById(folder.getId());
    Require(read.getId() == folder.getId(), "a folder is there when it was added, and else not");
    if (!added)
        return;
    Require(read.getRootId() == folder.getId(), "root");
    RequireSameTexts(read, folder);
    Require(!FitsCdata(feature) || read.getFeatureName() == feature, "feature");
    Require(folder.getClientPath().isNull() ||
                store.folders->GetFolderConfigurationByClientPath(folder.getClientPath()).getId() == folder.getId(),
            "a folder is found by its path");
}

void TryFile(Store& store, FuzzInput& input)
{
    FileConfigManager files(store.factory, nullptr, store.folders);
    FileConfiguration file;
    QStringList const texts = TakeTexts(input, file);
    file.clientPath.prepend(QLatin1Char('/')); // an empty path is refused
    QString const value = input.TakeText();
    file.nameValueProperties.insert(QStringLiteral("Key"), value);
    file.size = qint64(quint64(input.TakeNumber(4)) << 32 | input.TakeNumber(4));

    // The look-up of the path before the write fails for the same texts.
    bool const added = files.Add(file);
    store.ExpectResult(added, texts + QStringList(value));
    FileConfiguration const read = files.GetFileConfigurationById(file.id);
    Require(read.id == file.id, "a file is in the store exactly when it was added");
    if (!added)
        return;
    RequireSameTexts(read, file);
    Require(read.size == file.size, "size");
    Require(!FitsCdata(value) || read.nameValueProperties == file.nameValueProperties, "properties");
    Require(files.GetFileConfigurationByClientPath(file.clientPath).id == file.id, "a file is found by its path");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Store store;
    constexpr void (*Tries[])(Store&, FuzzInput&) = {TryServer, TryAccount, TryProduct, TryFolder, TryFile};

    FuzzInput input(data, size);
    Require(store.factory->CreateDatabase()->transaction(), "a client transaction begins");
    Tries[input.TakeByte() % std::size(Tries)](store, input);
    Require(store.factory->CreateDatabase()->rollback(), "a client transaction is rolled back");
    Require(!store.factory->LastError(), "nothing else went wrong");
    return 0;
}
