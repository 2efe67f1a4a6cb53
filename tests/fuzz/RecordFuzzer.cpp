// Writes records with any texts to a store and reads them back. They are unchanged, or refused with an error.

#include "config/AuthenticationConfigManager.h"
#include "config/AuthenticationConfiguration.h"
#include "config/FileConfigManager.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfigManager.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfigManager.h"
#include "config/ProductConfiguration.h"
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
    void ExpectResult(bool added, std::initializer_list<QString> const& texts) const
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
    server.setAlias(input.TakeText());
    server.setDavUrl(input.TakeText());
    server.setWebServiceUrl(input.TakeText());
    server.setBinaryDiffEncoder(input.TakeText());

    bool const added = servers.Add(server);
    store.ExpectResult(
        added, {server.getAlias(), server.getDavUrl(), server.getWebServiceUrl(), server.getBinaryDiffEncoder()});
    ServerConfiguration const read = servers.GetServerConfigById(server.getId());
    Require(read.getId() == server.getId(), "a server is there when it was added, and else not");
    if (!added)
        return;
    auto const chopped = [](QString const& url) { return url.endsWith(QLatin1Char('/')) ? url.chopped(1) : url; };
    Require(Same(read.getAlias(), server.getAlias()), "alias");
    Require(Same(read.getDavUrl(), chopped(server.getDavUrl())), "DAV URL");
    Require(Same(read.getWebServiceUrl(), chopped(server.getWebServiceUrl())), "web service URL");
    Require(Same(read.getBinaryDiffEncoder(), server.getBinaryDiffEncoder()), "encoder");
}

void TryAccount(Store& store, FuzzInput& input)
{
    AuthenticationConfigManager accounts(store.factory);
    AuthenticationConfiguration account;
    account.setDomain(input.TakeText());
    account.setDomainId(input.TakeText());
    account.setUserName(input.TakeText());
    account.setPassword(input.TakeText());

    bool const added = accounts.Add(account);
    store.ExpectResult(added, {account.getDomain(), account.getDomainId(), account.getUserName()});
    AuthenticationConfiguration const read = accounts.GetAuthenticationConfigurationById(account.getId());
    Require(read.getId() == account.getId(), "an account is there when it was added, and else not");
    if (!added)
        return;
    Require(Same(read.getDomain(), account.getDomain()), "domain");
    Require(Same(read.getDomainId(), account.getDomainId()), "domain id");
    Require(Same(read.getUserName(), account.getUserName()), "user name");
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
    product.setName(input.TakeText());
    product.setConsumerKey(input.TakeText());
    product.setConsumerSecret(input.TakeText());

    bool const added = products.Add(product);
    store.ExpectResult(added, {product.getName(), product.getConsumerKey(), product.getConsumerSecret()});
    ProductConfiguration const read = products.GetProductConfigurationById(product.getId());
    Require(read.getId() == product.getId(), "a product is there when it was added, and else not");
    if (!added)
        return;
    Require(Same(read.getName(), product.getName()), "name");
    Require(Same(read.getConsumerKey(), product.getConsumerKey()), "key");
    Require(Same(read.getConsumerSecret(), product.getConsumerSecret()), "secret");
}

void TryFolder(Store& store, FuzzInput& input)
{
    FolderConfiguration folder;
    folder.setParentId(0);
    folder.setName(input.TakeText());
    folder.setRemoteShortKey(input.TakeText());
    folder.setRemoteLongKey(input.TakeText());
    folder.setClientPath(input.TakeText());
    folder.setServerPath(input.TakeText());
    folder.setOwnerId(input.TakeText());
    folder.setServerRoot(input.TakeText());
    folder.setServerFolderId(input.TakeText());
    QString const feature = input.TakeText();
    folder.setFeatureName(feature);

    bool const added = store.folders->Add(folder);
    store.ExpectResult(added,
                       {folder.getName(),
                        folder.getRemoteShortKey(),
                        folder.getRemoteLongKey(),
                        folder.getClientPath(),
                        folder.getServerPath(),
                        folder.getOwnerId(),
                        folder.getServerRoot(),
                        folder.getServerFolderId(),
                        feature});
    FolderConfiguration const read = store.folders->GetFolderConfigurationById(folder.getId());
    Require(read.getId() == folder.getId(), "a folder is there when it was added, and else not");
    if (!added)
        return;
    Require(read.getRootId() == folder.getId(), "root");
    Require(Same(read.getName(), folder.getName()), "name");
    Require(Same(read.getRemoteShortKey(), folder.getRemoteShortKey()), "short key");
    Require(Same(read.getRemoteLongKey(), folder.getRemoteLongKey()), "long key");
    Require(Same(read.getClientPath(), folder.getClientPath()), "client path");
    Require(Same(read.getServerPath(), folder.getServerPath()), "server path");
    Require(Same(read.getOwnerId(), folder.getOwnerId()), "owner");
    Require(Same(read.getServerRoot(), folder.getServerRoot()), "server root");
    Require(Same(read.getServerFolderId(), folder.getServerFolderId()), "server folder id");
    Require(!FitsCdata(feature) || read.getFeatureName() == feature, "feature");
    Require(folder.getClientPath().isNull() ||
                store.folders->GetFolderConfigurationByClientPath(folder.getClientPath()).getId() == folder.getId(),
            "a folder is found by its path");
}

void TryFile(Store& store, FuzzInput& input)
{
    FileConfigManager files(store.factory, nullptr, store.folders);
    FileConfiguration file;
    file.clientPath = QStringLiteral("/") + input.TakeText(); // an empty path is refused
    file.name = input.TakeText();
    file.serverPath = input.TakeText();
    file.checkSum = input.TakeText();
    file.checkSumMD5 = input.TakeText();
    file.ownerId = input.TakeText();
    file.serverFileId = input.TakeText();
    file.serverFileVersionId = input.TakeText();
    QString const value = input.TakeText();
    file.nameValueProperties.insert(QStringLiteral("Key"), value);
    file.size = qint64(quint64(input.TakeNumber(4)) << 32 | input.TakeNumber(4));

    // The look-up of the path before the write fails for the same texts.
    bool const added = files.Add(file);
    store.ExpectResult(added,
                       {file.clientPath,
                        file.name,
                        file.serverPath,
                        file.checkSum,
                        file.checkSumMD5,
                        file.ownerId,
                        file.serverFileId,
                        file.serverFileVersionId,
                        value});
    FileConfiguration const read = files.GetFileConfigurationById(file.id);
    Require(read.id == file.id, "a file is in the store exactly when it was added");
    if (!added)
        return;
    Require(Same(read.clientPath, file.clientPath), "client path");
    Require(Same(read.name, file.name), "name");
    Require(Same(read.serverPath, file.serverPath), "server path");
    Require(Same(read.checkSum, file.checkSum), "check sum");
    Require(Same(read.checkSumMD5, file.checkSumMD5), "MD5");
    Require(Same(read.ownerId, file.ownerId), "owner");
    Require(Same(read.serverFileId, file.serverFileId), "server file id");
    Require(Same(read.serverFileVersionId, file.serverFileVersionId), "server file version id");
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
