#include "postgres/ServerErrors.h"

namespace sync::database {

namespace {

StoreErrorKind KindOf(QByteArray const& state)
{
    if (state == "55P03" || state == "40001" || state == "40P01" || state == ServerState::TooManyConnections)
        return StoreErrorKind::Locked;
    if (state == "53100")
        return StoreErrorKind::Full;
    if (state == ServerState::ReadOnly)
        return StoreErrorKind::ReadOnly;
    if (state == ServerState::Unknown)
        return StoreErrorKind::OutcomeUnknown;
    if (state.startsWith("XX0") || state == ServerState::WrongSchema)
        return StoreErrorKind::Damaged;
    if (state.startsWith("08") || state == "57P01" || state == "57P02" || state == "57P03")
        return StoreErrorKind::ConnectionLost;
    for (char const* refused : {"0A", "21", "22", "23", "25", "26", "40", "42", "54"}) {
        if (state.startsWith(refused))
            return StoreErrorKind::Refused;
    }
    return StoreErrorKind::Other;
}

QString PlainWords(QByteArray const& state, StoreErrorKind kind)
{
    if (state == ServerState::TooManyConnections)
        return QStringLiteral("the server has no connection left");
    if (state == "42501")
        return QStringLiteral("the role has no right to do this");
    if (state == "57014")
        return QStringLiteral("the statement took longer than statement_timeout allows, or was cancelled");
    if (state.startsWith("54"))
        return QStringLiteral("a value or a statement is too long");
    if (state.startsWith("22"))
        return QStringLiteral("a value does not fit its column");
    if (state.startsWith("23"))
        return QStringLiteral("a constraint failed");
    switch (kind) {
    case StoreErrorKind::Locked:
        return QStringLiteral("the store is locked by another thread or program");
    case StoreErrorKind::Full:
        return QStringLiteral("the server's disk is full");
    case StoreErrorKind::ReadOnly:
        return QStringLiteral("the store can't be written");
    case StoreErrorKind::Damaged:
        return QStringLiteral("the store is damaged");
    case StoreErrorKind::ConnectionLost:
        return QStringLiteral("the connection to the server was lost");
    default:
        return QStringLiteral("the statement failed");
    }
}

QString Field(PGresult const* result, int field)
{
    return QString::fromUtf8(PQresultErrorField(result, field));
}

} // namespace

StoreError MakeServerError(QByteArray const& state, QString const& text, QString const& statement)
{
    return {state.toInt(nullptr, 36), text, statement, KindOf(state)};
}

StoreError DescribeResult(PGresult const* result, QString const& name, ServerMessage message, QString const& statement)
{
    QByteArray state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    if (state.isEmpty()) // not from the server
        state = ServerState::ConnectionLost;
    QString words = PlainWords(state, KindOf(state)) + QStringLiteral(" (");
    QString const primary = Field(result, PG_DIAG_MESSAGE_PRIMARY);
    // The names of a constraint's objects quote no value.
    QString const constraint = Field(result, PG_DIAG_CONSTRAINT_NAME);
    if (message == ServerMessage::Show && !primary.isEmpty())
        words += primary;
    else if (!constraint.isEmpty())
        words += Field(result, PG_DIAG_TABLE_NAME) + QLatin1Char('.') + constraint;
    else
        words += QStringLiteral("SQLSTATE ") + QString::fromLatin1(state);
    return MakeServerError(state, name + QStringLiteral(": ") + words + QLatin1Char(')'), statement);
}

} // namespace sync::database
