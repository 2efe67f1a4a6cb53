#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>
#include <QVector>

namespace sync::config {
class AuthenticationConfiguration;
}

namespace sync::interf {

/// Keeps the accounts. No operation writes a password to the store or reads one from it.
///
/// A lookup answers with a default record (`id` -1) when nothing matches or the store fails.
class TANDRY_INTERFACES_EXPORT IAuthenticationConfigManager : public QObject
{
    Q_OBJECT

public:
    IAuthenticationConfigManager();
    ~IAuthenticationConfigManager() override;

    /// The first account of this name, whichever server it belongs to.
    virtual sync::config::AuthenticationConfiguration
    GetAuthenticationConfigurationByDomainAndUser(QString domain, QString userName) const = 0;

    virtual sync::config::AuthenticationConfiguration
    GetAuthenticationConfigurationById(int authenticationConfigurationId) const = 0;

    /// All accounts in the store's order; empty when the store fails.
    virtual QVector<sync::config::AuthenticationConfiguration> GetAll() const = 0;

    /// Writes the record's row and clears its password column. False when the store fails; a missing row is no
    /// failure.
    virtual bool Update(sync::config::AuthenticationConfiguration authenticationConfiguration) = 0;

    /// Inserts a row, without a password, and writes its id into the record. False, and the record untouched, when the
    /// store fails.
    virtual bool Add(sync::config::AuthenticationConfiguration& authenticationConfiguration) = 0;

    /// Removes one row; folders that name the account stay. False when the store fails; a missing row is no failure.
    virtual bool Remove(int authenticationConfigurationId) = 0;

    /// One record for each pair of domain and user name, with nothing else filled; empty when the store fails.
    virtual QVector<sync::config::AuthenticationConfiguration> GetDistinctAuthenticationConfigurations() = 0;

    /// Clears the password column of every row of this name and returns how many there were, -1 when the store fails.
    /// The new password is not looked at.
    virtual int UpdatePassword(QString domain, QString userName, QString newPassword) = 0;
};

} // namespace sync::interf
