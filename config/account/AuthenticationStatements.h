#pragma once

#include <QString>

/// The statements on `AuthenticationConfiguration`; even their spaces are fixed. `encryptedPassword` stays in all of
/// them and is always bound as NULL.
namespace sync::config::authentication_sql {

const QString Select =
    QStringLiteral("SELECT id, domain, domainId, userName, encryptedPassword, nameValueProperties, serverId "
                   "FROM AuthenticationConfiguration");

const QString GetById = Select + QStringLiteral(" WHERE id = :id");
const QString GetByDomainAndUser = Select + QStringLiteral(" WHERE domain = :domain AND userName = :userName");
const QString GetAll = Select;
const QString GetDistinct = QStringLiteral("SELECT DISTINCT domain, userName FROM AuthenticationConfiguration");

const QString Update =
    QStringLiteral("UPDATE AuthenticationConfiguration SET domain = :domain, domainId = :domainId, "
                   "userName = :userName, encryptedPassword = :encryptedPassword, "
                   "nameValueProperties = :nameValueProperties, serverId = :serverId WHERE id = :id");
const QString UpdatePassword =
    QStringLiteral("UPDATE AuthenticationConfiguration SET encryptedPassword = :encryptedPassword "
                   "WHERE domain = :domain AND userName = :userName");
const QString Add =
    QStringLiteral("INSERT INTO AuthenticationConfiguration "
                   "(domain, domainId, userName, encryptedPassword, nameValueProperties, serverId) VALUES "
                   "(:domain, :domainId, :userName, :encryptedPassword, :nameValueProperties, :serverId);");
const QString Remove = QStringLiteral("DELETE FROM AuthenticationConfiguration WHERE Id = :id;");

} // namespace sync::config::authentication_sql
