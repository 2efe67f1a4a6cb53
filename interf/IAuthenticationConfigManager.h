#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class AuthenticationConfiguration;
}

namespace sync::interf {

/// Stores the accounts. No operation writes a password to the store or reads one from it.
///
/// Records are copies that belong to the caller. A lookup returns the default record (`id` -1) both if nothing matches
/// and if the store fails; a listing that fails returns the rows read until then, usually none. The store's factory
/// tells a miss from a failure. Operations run on the caller's thread; several threads may share a manager if the store
/// allows it. Each operation runs one statement; a write is a `sync::database::TransactionalScope` of its own.
class TANDRY_INTERFACES_EXPORT IAuthenticationConfigManager : public QObject
{
    Q_OBJECT

public:
    IAuthenticationConfigManager();
    ~IAuthenticationConfigManager() override;

    /// Returns the first account with exactly this domain and user name, on any server. A null text matches no row; an
    /// empty text matches empty columns only, not NULL.
    virtual sync::config::AuthenticationConfiguration
    GetAuthenticationConfigurationByDomainAndUser(QString domain, QString userName) const = 0;

    /// Returns the account with this id.
    virtual sync::config::AuthenticationConfiguration
    GetAuthenticationConfigurationById(int authenticationConfigurationId) const = 0;

    /// Returns all accounts, in no particular order.
    virtual QVector<sync::config::AuthenticationConfiguration> GetAll() const = 0;

    /// Writes all columns of the record's row, the password column as NULL. Returns false if the store fails, and true
    /// if there is no such row.
    virtual bool Update(sync::config::AuthenticationConfiguration authenticationConfiguration) = 0;

    /// Inserts a row without a password and sets the record's id. Returns false and leaves the record unchanged if the
    /// store fails. Does not check for duplicates. If the insertion is rolled back, a later row gets the same id.
    virtual bool Add(sync::config::AuthenticationConfiguration& authenticationConfiguration) = 0;

    /// Removes one row; folders that refer to the account stay. Returns false if the store fails, and true if there is
    /// no such row.
    virtual bool Remove(int authenticationConfigurationId) = 0;

    /// Returns one record for each distinct pair of domain and user name; its other members keep their defaults.
    virtual QVector<sync::config::AuthenticationConfiguration> GetDistinctAuthenticationConfigurations() = 0;

    /// Sets the password column to NULL for every account with exactly this domain and user name. Returns the number of
    /// these accounts, or -1 if the store fails. Ignores `newPassword`: the store holds no passwords.
    virtual int UpdatePassword(QString domain, QString userName, QString newPassword) = 0;
};

} // namespace sync::interf
