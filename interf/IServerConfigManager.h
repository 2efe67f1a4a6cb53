#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>

#include <vector>

namespace sync::config {
class ServerConfiguration;
}

namespace sync::interf {

/// Keeps the servers and finds the one behind an account, a folder or a file.
///
/// A lookup answers with a default record (`id` -1) when nothing matches or the store fails.
class TANDRY_INTERFACES_EXPORT IServerConfigManager : public QObject
{
    Q_OBJECT

public:
    IServerConfigManager();
    ~IServerConfigManager() override;

    virtual sync::config::ServerConfiguration GetServerConfigById(long long id) = 0;

    /// The first server with this pair of URLs, each compared without one trailing slash.
    virtual sync::config::ServerConfiguration GetServerConfigByServers(QString davUrl, QString webServiceUrl) = 0;

    /// All servers in the store's order; empty when the store fails.
    virtual std::vector<sync::config::ServerConfiguration> GetAll() = 0;

    /// Writes the record's fields as they stand. False when the store fails; a missing row is no failure.
    virtual bool Update(sync::config::ServerConfiguration serverConfiguration) = 0;

    /// Inserts a row, each URL without one trailing slash and the alias derived where it is empty, and writes the new
    /// id into the record, which keeps its URLs and alias. False, and the record untouched, when the store fails.
    virtual bool Add(sync::config::ServerConfiguration& serverConfiguration) = 0;

    /// Removes one row; accounts and products that name the server stay. False when the store fails; a missing row is
    /// no failure.
    virtual bool Remove(int serverConfigurationId) = 0;

    virtual sync::config::ServerConfiguration GetServerConfigByAuthenticationId(long long authenticationId) = 0;
    virtual sync::config::ServerConfiguration GetServerConfigByFolderId(long long folderId) = 0;
    virtual sync::config::ServerConfiguration GetServerConfigByFileId(long long fileId) = 0;

    /// The server that the user's settings name, or else the one with id 1.
    virtual sync::config::ServerConfiguration GetDefaultServerConfig() = 0;
};

} // namespace sync::interf
