#pragma once

#include <QString>
#include <QVariant>

#include <type_traits>
#include <utility>

namespace sync::config {

/// A placeholder and the value to bind to it.
struct BoundValue
{
    QString const& placeholder;
    QVariant value;
};

/// A placeholder of a statement, named after its column. The call `bind::id(7)` pairs it with a value.
///
/// Enumerations become integers. Types that stores do not have, such as `bool`, do not compile.
class Placeholder
{
public:
    explicit Placeholder(QString name)
        : _name(std::move(name))
    {}

    BoundValue operator()(int value) const { return {_name, value}; }
    BoundValue operator()(long long value) const { return {_name, value}; }
    BoundValue operator()(QString const& value) const { return {_name, value}; }
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

/// The placeholders of lookups and removals. Those of whole records come from the list of columns.
namespace bind {

inline Placeholder const id(QStringLiteral(":id"));
inline Placeholder const clientPath(QStringLiteral(":clientPath"));
inline Placeholder const serverPath(QStringLiteral(":serverPath"));
inline Placeholder const authenticationId(QStringLiteral(":authenticationId"));

inline Placeholder const davUrl(QStringLiteral(":davUrl"));
inline Placeholder const webServiceUrl(QStringLiteral(":webServiceUrl"));

inline Placeholder const domain(QStringLiteral(":domain"));
inline Placeholder const userName(QStringLiteral(":userName"));
inline Placeholder const encryptedPassword(QStringLiteral(":encryptedPassword"));

inline Placeholder const serverId(QStringLiteral(":serverId"));
inline Placeholder const consumerKey(QStringLiteral(":consumerKey"));

inline Placeholder const parentId(QStringLiteral(":parentId"));
inline Placeholder const rootId(QStringLiteral(":rootId"));
inline Placeholder const serverFolderId(QStringLiteral(":serverFolderId"));

inline Placeholder const folderConfigurationId(QStringLiteral(":folderConfigurationId"));
inline Placeholder const rootFolderId(QStringLiteral(":rootFolderId"));
inline Placeholder const parentFileId(QStringLiteral(":parentFileId"));
inline Placeholder const serverFileId(QStringLiteral(":serverFileId"));
inline Placeholder const syncStatus(QStringLiteral(":syncStatus"));
inline Placeholder const syncStatusNotSynced(QStringLiteral(":syncStatusNotSynced"));
inline Placeholder const syncStatusSyncing(QStringLiteral(":syncStatusSyncing"));

} // namespace bind
} // namespace sync::config
