#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>

#include <vector>

namespace sync::config {
class ServerConfiguration;
}

namespace sync::interf {

/// Stores the servers and finds the server of an account, a folder or a file.
///
/// Records are copies that belong to the caller. A lookup returns the default record (`id` -1) both if nothing matches
/// and if the store fails; a listing that fails returns the rows read until then, usually none. The store's factory
/// tells a miss from a failure. Operations run on the caller's thread; several threads may share a manager if the store
/// allows it. Each operation runs one statement; a write is a `sync::database::TransactionalScope` of its own.
class TANDRY_INTERFACES_EXPORT IServerConfigManager : public QObject
{
    Q_OBJECT

public:
    IServerConfigManager();
    ~IServerConfigManager() override;

    /// Returns the server with this id.
    virtual sync::config::ServerConfiguration GetServerConfigById(long long id) = 0;

    /// Returns the first server with exactly these two URLs, after one trailing slash has been cut from each argument.
    /// Stored URLs are compared as they are: `Add` cuts the slash, `Update` does not. A null URL matches no row.
    virtual sync::config::ServerConfiguration GetServerConfigByServers(QString davUrl, QString webServiceUrl) = 0;

    /// Returns all servers, in no particular order.
    virtual std::vector<sync::config::ServerConfiguration> GetAll() = 0;

    /// Writes the record's members unchanged: no slash is cut and no alias derived. Returns false if the store fails,
    /// and true if there is no such row.
    virtual bool Update(sync::config::ServerConfiguration serverConfiguration) = 0;

    /// Inserts a row and sets the record's id. The row gets each URL without one trailing slash and, if the alias is
    /// empty, the one that `ServerConfiguration::getAlias` derives from the web service URL, user information included;
    /// the record keeps its URLs and alias. Returns false and leaves the record unchanged if the store fails. Does not
    /// check for duplicates. If the insertion is rolled back, a later row gets the same id.
    virtual bool Add(sync::config::ServerConfiguration& serverConfiguration) = 0;

    /// Removes one row; accounts and products that refer to the server stay. Returns false if the store fails, and true
    /// if there is no such row.
    virtual bool Remove(int serverConfigurationId) = 0;

    /// Returns the server of this account.
    virtual sync::config::ServerConfiguration GetServerConfigByAuthenticationId(long long authenticationId) = 0;

    /// Returns the server of this folder's account.
    virtual sync::config::ServerConfiguration GetServerConfigByFolderId(long long folderId) = 0;

    /// Returns the server of the account of this file's folder. The id is one of the table `FileConfiguration`, not of
    /// a generated or base file.
    virtual sync::config::ServerConfiguration GetServerConfigByFileId(long long fileId) = 0;

    /// Returns the server whose id the user's settings hold, or server 1 if they hold none.
    virtual sync::config::ServerConfiguration GetDefaultServerConfig() = 0;
};

} // namespace sync::interf
