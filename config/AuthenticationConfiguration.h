#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QMap>
#include <QObject>
#include <QString>

namespace sync::config {

/// An account on a server: one row of the table `AuthenticationConfiguration`, and a password that is never stored.
///
/// A value: a copy has all members, including the password, but no state of the QObject. The name-value properties have
/// no accessors, but a column in `RecordColumns.h`. A record must not be assigned to itself, since that empties them.
class TANDRY_CONFIGURATION_EXPORT AuthenticationConfiguration : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int Id READ getId WRITE setId)
    Q_PROPERTY(QString Domain READ getDomain WRITE setDomain)
    Q_PROPERTY(QString DomainId READ getDomainId WRITE setDomainId)
    Q_PROPERTY(QString UserName READ getUserName WRITE setUserName)
    Q_PROPERTY(QString Password READ getPassword WRITE setPassword)
    Q_PROPERTY(int ServerId READ getServerId WRITE setServerId)

public:
    AuthenticationConfiguration();
    AuthenticationConfiguration(AuthenticationConfiguration const& other);
    AuthenticationConfiguration& operator=(AuthenticationConfiguration const& other);
    ~AuthenticationConfiguration() override;

    /// The row's id; -1 for a record without a row.
    int getId() const;
    /// The domain that the server knows the user by; null and empty are kept apart.
    QString getDomain() const;
    /// The server's id of the domain, in the client's own terms.
    QString getDomainId() const;
    /// The user's name on the server.
    QString getUserName() const;
    /// In memory only: null in every record that a manager returns.
    QString getPassword() const;
    /// The id of the account's server; 0 in a new record.
    int getServerId() const;

    void setId(int value);
    void setDomain(QString value);
    void setDomainId(QString value);
    void setUserName(QString value);
    void setPassword(QString value);
    void setServerId(int value);

protected:
    /// Copies all members of the other record.
    void _CopyMembers(AuthenticationConfiguration const& other);

private:
    friend class AuthenticationConfigManager;
    template <class Record>
    friend struct TableColumns;

    int id = -1;
    QString domain;
    QString domainId;
    QString userName;
    QString password;
    int serverId = 0;
    QMap<QString, QString> nameValueProperties;
};

} // namespace sync::config

TANDRY_DECLARE_METATYPE(sync::config::AuthenticationConfiguration)
