#pragma once

#include <QString>

/// The statements on `ProductConfiguration`; even their spaces are fixed.
namespace sync::config::product_sql {

const QString Select = QStringLiteral("SELECT id, name, consumerKey, consumerSecret, serverId, nameValueProperties");

const QString GetById = Select + QStringLiteral(" FROM ProductConfiguration WHERE id = :id");
const QString GetByServerIdAndConsumerKey =
    Select + QStringLiteral(" FROM ProductConfiguration WHERE serverId = :serverId AND consumerKey = :consumerKey");
const QString GetAll = Select + QStringLiteral(" FROM ProductConfiguration");

const QString Update = QStringLiteral("UPDATE ProductConfiguration SET name = :name, consumerKey = :consumerKey, "
                                      "consumerSecret = :consumerSecret, serverId = :serverId, "
                                      "nameValueProperties = :nameValueProperties WHERE id = :id");
const QString Add = QStringLiteral("INSERT INTO ProductConfiguration "
                                   "(name, consumerKey, consumerSecret, serverId, nameValueProperties) VALUES "
                                   "(:name, :consumerKey, :consumerSecret, :serverId, :nameValueProperties);");
const QString Remove = QStringLiteral("DELETE FROM ProductConfiguration WHERE Id = :id;");

} // namespace sync::config::product_sql
