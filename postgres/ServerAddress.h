#pragma once

#include "database/store/Failure.h"

#include <QByteArray>
#include <QString>

#include <utility>
#include <vector>

namespace sync::database {

/// Where a profile is: the parameters of a connection, and the schema.
struct ServerAddress
{
    /// libpq's keywords with their values.
    std::vector<std::pair<QByteArray, QByteArray>> parameters;
    /// For errors and programs: host, database and profile, without the user and the password.
    QString name;
    QByteArray schema;
    /// The passwords in the URI.
    std::vector<QByteArray> secrets;
    /// Whether the profile may be opened where the server acknowledges commits that are not on its disk.
    bool acceptsAsyncCommit = false;

    /// Reads a URI. No error quotes the URI, since it may contain a password.
    static Failure Parse(QString const& uri, ServerAddress& address);

    /// The value of one of libpq's keywords; empty if the URI has none and there is no default.
    QByteArray Value(QByteArray const& keyword) const;
};

} // namespace sync::database
