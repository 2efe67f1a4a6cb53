#pragma once

#include "interf/IQSqlQueryWrapper.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <type_traits>
#include <utility>

namespace sync::config {

/// A placeholder with the value that a statement's run gives it.
struct BoundValue
{
    QString const& placeholder;
    QVariant value;
};

/// A placeholder of the statements, bearing its column's name. Called with a value, it binds it: `bind::id(7)`.
///
/// An enumeration goes as its integer. What has no form in the store, a `bool` above all, doesn't compile.
class Placeholder
{
public:
    explicit Placeholder(QString name)
        : _name(std::move(name))
    {}

    BoundValue operator()(int value) const { return {_name, value}; }
    BoundValue operator()(long long value) const { return {_name, value}; }
    BoundValue operator()(QString const& value) const { return {_name, value}; }
    BoundValue operator()(QDateTime const& value) const { return {_name, value}; }
    BoundValue operator()(bool) const = delete;

    template <class Enumeration, std::enable_if_t<std::is_enum_v<Enumeration>, int> = 0>
    BoundValue operator()(Enumeration value) const
    {
        return {_name, static_cast<int>(value)};
    }

    /// Binds NULL.
    BoundValue operator()() const { return {_name, QVariant()}; }

private:
    QString _name;
};

/// Binds the values in this order.
template <class... Bound>
void BindAll(sync::interf::IQSqlQueryWrapper& query, Bound const&... values)
{
    (query.bindValue(values.placeholder, values.value), ...);
}

namespace bind {

inline Placeholder const id(QStringLiteral(":id"));
inline Placeholder const name(QStringLiteral(":name"));
inline Placeholder const nameValueProperties(QStringLiteral(":nameValueProperties"));
inline Placeholder const clientPath(QStringLiteral(":clientPath"));
inline Placeholder const serverPath(QStringLiteral(":serverPath"));
inline Placeholder const syncStatus(QStringLiteral(":syncStatus"));
inline Placeholder const syncOption(QStringLiteral(":syncOption"));
inline Placeholder const ownerId(QStringLiteral(":ownerId"));
inline Placeholder const privileges(QStringLiteral(":privileges"));
inline Placeholder const serverId(QStringLiteral(":serverId"));
inline Placeholder const authenticationId(QStringLiteral(":authenticationId"));
inline Placeholder const productConfigurationId(QStringLiteral(":productConfigurationId"));
inline Placeholder const lastOperationTime(QStringLiteral(":lastOperationTime"));
inline Placeholder const lastOperationType(QStringLiteral(":lastOperationType"));

inline Placeholder const alias(QStringLiteral(":alias"));
inline Placeholder const davUrl(QStringLiteral(":davUrl"));
inline Placeholder const webServiceUrl(QStringLiteral(":webServiceUrl"));
inline Placeholder const binaryDiffEncoder(QStringLiteral(":binaryDiffEncoder"));

inline Placeholder const domain(QStringLiteral(":domain"));
inline Placeholder const domainId(QStringLiteral(":domainId"));
inline Placeholder const userName(QStringLiteral(":userName"));
inline Placeholder const encryptedPassword(QStringLiteral(":encryptedPassword"));

inline Placeholder const consumerKey(QStringLiteral(":consumerKey"));
inline Placeholder const consumerSecret(QStringLiteral(":consumerSecret"));

inline Placeholder const remoteShortKey(QStringLiteral(":remoteShortKey"));
inline Placeholder const remoteLongKey(QStringLiteral(":remoteLongKey"));
inline Placeholder const parentId(QStringLiteral(":parentId"));
inline Placeholder const lastSyncTime(QStringLiteral(":lastSyncTime"));
inline Placeholder const folderOption(QStringLiteral(":folderOption"));
inline Placeholder const syncDriveType(QStringLiteral(":syncDriveType"));
inline Placeholder const rootId(QStringLiteral(":rootId"));
inline Placeholder const serverRoot(QStringLiteral(":serverRoot"));
inline Placeholder const serverFolderId(QStringLiteral(":serverFolderId"));

inline Placeholder const folderConfigurationId(QStringLiteral(":folderConfigurationId"));
inline Placeholder const checkSum(QStringLiteral(":checkSum"));
inline Placeholder const createdDateTime(QStringLiteral(":createdDateTime"));
inline Placeholder const lastModifiedDateTime(QStringLiteral(":lastModifiedDateTime"));
inline Placeholder const size(QStringLiteral(":size"));
inline Placeholder const rootFolderId(QStringLiteral(":rootFolderId"));
inline Placeholder const parentFileId(QStringLiteral(":parentFileId"));
inline Placeholder const fileType(QStringLiteral(":fileType"));
inline Placeholder const serverFileId(QStringLiteral(":serverFileId"));
inline Placeholder const serverFileVersionId(QStringLiteral(":serverFileVersionId"));
inline Placeholder const checkSumMD5(QStringLiteral(":checkSumMD5"));
inline Placeholder const fileLinks(QStringLiteral(":fileLinks"));
inline Placeholder const syncStatusNotSynced(QStringLiteral(":syncStatusNotSynced"));
inline Placeholder const syncStatusSyncing(QStringLiteral(":syncStatusSyncing"));

inline Placeholder const startTime(QStringLiteral(":startTime"));
inline Placeholder const expireTime(QStringLiteral(":expireTime"));
inline Placeholder const syncScheduleType(QStringLiteral(":syncScheduleType"));
inline Placeholder const syncInterval(QStringLiteral(":syncInterval"));

} // namespace bind
} // namespace sync::config
