#pragma once

#include "database/StoreError.h"

#include <libpq-fe.h>

#include <QString>

namespace sync::database {

/// The SQLSTATEs that the store itself gives. A `StoreError` has them as numbers.
namespace ServerState {

constexpr char const* ConnectionLost = "08006";
constexpr char const* CannotConnect = "08001";
constexpr char const* Unknown = "08007";
constexpr char const* InvalidValue = "22000";
constexpr char const* WrongSchema = "3F000";
constexpr char const* Misuse = "25000";
constexpr char const* ReadOnly = "25006";
constexpr char const* RolledBack = "40000";
constexpr char const* Syntax = "42601";
constexpr char const* TooManyConnections = "53300";

} // namespace ServerState

/// Whether a server's message may be in an error. Once values are bound it may quote them.
enum class ServerMessage
{
    Hide,
    Show,
};

/// An error with the number and the kind of the SQLSTATE. Every error is made here.
StoreError MakeServerError(QByteArray const& state, QString const& text, QString const& statement = {});

/// The error of a result; that of a lost connection if it is not from the server. `name` is the store's and goes in
/// front.
StoreError
DescribeResult(PGresult const* result, QString const& name, ServerMessage message, QString const& statement = {});

} // namespace sync::database
