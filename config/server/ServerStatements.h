#pragma once

#include <QString>

/// The statements on `ServerConfiguration`; even their spaces are fixed.
namespace sync::config::server_sql {

const QString Select = QStringLiteral("SELECT id, alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder "
                                      "FROM ServerConfiguration");
const QString SelectByAccount =
    QStringLiteral("SELECT SC.id, SC.alias, SC.davUrl, SC.webServiceUrl, SC.nameValueProperties, SC.binaryDiffEncoder "
                   "FROM ServerConfiguration AS SC JOIN AuthenticationConfiguration AS AC ON SC.id = AC.ServerID");

const QString GetById = Select + QStringLiteral(" WHERE id = :id;");
const QString GetByServers = Select + QStringLiteral(" WHERE davUrl = :davUrl AND webServiceUrl = :webServiceUrl;");
const QString GetAll = Select + QStringLiteral(";");
const QString GetByAuthenticationId = SelectByAccount + QStringLiteral(" WHERE AC.id = :id;");
const QString GetByFolderId =
    SelectByAccount +
    QStringLiteral(" JOIN FolderConfiguration AS FC ON FC.authenticationId = AC.id WHERE FC.id = :id;");
const QString GetByFileId =
    SelectByAccount +
    QStringLiteral(" JOIN FolderConfiguration AS FC ON FC.authenticationId = AC.id JOIN FileConfiguration AS FIC "
                   "ON FIC.folderConfigurationId = FC.id WHERE FIC.id = :id;");

const QString Update =
    QStringLiteral("UPDATE ServerConfiguration SET alias = :alias, davUrl = :davUrl, webServiceUrl = :webServiceUrl, "
                   "nameValueProperties = :nameValueProperties, binaryDiffEncoder = :binaryDiffEncoder "
                   "WHERE id = :id;");
const QString Add = QStringLiteral("INSERT INTO ServerConfiguration "
                                   "(alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder) VALUES "
                                   "(:alias, :davUrl, :webServiceUrl, :nameValueProperties, :binaryDiffEncoder);");
const QString Remove = QStringLiteral("DELETE FROM ServerConfiguration WHERE Id = :id;");

} // namespace sync::config::server_sql
