#include "database/sqlite/ErrorTexts.h"

#include <sqlite3.h>

#include <QFileInfo>

#include <cerrno>

namespace sync::database {

namespace {

QString PlainWords(int code, QString const& path)
{
    switch (code) {
    case SQLITE_BUSY_SNAPSHOT:
        return QStringLiteral("another thread or program changed the store while this thread still reads rows from it");
    case SQLITE_READONLY_DBMOVED:
        return QStringLiteral("the file was removed or replaced while the store was open");
    default:
        break;
    }
    switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return QStringLiteral("the store is locked by another thread or program");
    case SQLITE_FULL:
        return QStringLiteral("no space is left in %1").arg(QFileInfo(path).absolutePath());
    case SQLITE_READONLY:
        return QStringLiteral("the store can't be written");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return QStringLiteral("the store is damaged");
    case SQLITE_IOERR:
        return QStringLiteral("reading or writing failed");
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
        return QStringLiteral("the store, its log or its folder can't be opened");
    case SQLITE_AUTH:
        return QStringLiteral("a statement may not begin or end transactions, attach files or change settings");
    case SQLITE_NOMEM:
        return QStringLiteral("memory ran out");
    case SQLITE_TOOBIG:
        return QStringLiteral("a value or a statement is too long");
    default:
        return QStringLiteral("the statement failed");
    }
}

bool ComesFromTheSystem(int code)
{
    int const primary = code & 0xff;
    return primary == SQLITE_IOERR || primary == SQLITE_CANTOPEN || primary == SQLITE_FULL || primary == SQLITE_PERM;
}

StoreErrorKind KindOf(int code)
{
    if (code == SQLITE_READONLY_DBMOVED)
        return StoreErrorKind::Moved;
    if (code == SQLITE_READONLY_RECOVERY)
        return StoreErrorKind::NotClosed;
    switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return StoreErrorKind::Locked;
    case SQLITE_FULL:
        return StoreErrorKind::Full;
    case SQLITE_READONLY:
        return StoreErrorKind::ReadOnly;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return StoreErrorKind::Damaged;
    case SQLITE_ERROR: // a statement that does not compile
    case SQLITE_ABORT: // a transaction that a failure rolled back
    case SQLITE_TOOBIG:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_MISUSE:
    case SQLITE_AUTH:
    case SQLITE_RANGE:
    case SQLITE_SCHEMA: // a store of another version
        return StoreErrorKind::Refused;
    default:
        return StoreErrorKind::Other;
    }
}

} // namespace

StoreError MakeError(int code, QString const& text, QString const& statement)
{
    return {code, text, statement, KindOf(code)};
}

StoreError MakeError(QString const& path, int code, QString const& words, QString const& statement)
{
    return MakeError(code, path + QStringLiteral(": ") + words, statement);
}

StoreError DescribeError(sqlite3* handle, int code, QString const& path, QString const& statement, bool withMessage)
{
    QString const message =
        QString::fromUtf8(withMessage && handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(code));
    int const errorNumber = handle != nullptr && ComesFromTheSystem(code) ? sqlite3_system_errno(handle) : 0;
    QString words = PlainWords(code, path) + QStringLiteral(" (") + message;
    if (errorNumber != 0)
        words += QStringLiteral("; ") + qt_error_string(errorNumber);
    return MakeError(path, code, words + QLatin1Char(')'), statement);
}

StoreError DescribeSystemError(QString const& path, QString const& words, int errorNumber)
{
    int const code = errorNumber == ENOSPC || errorNumber == EDQUOT ? SQLITE_FULL : SQLITE_CANTOPEN;
    return MakeError(path, code, words + QStringLiteral(" (") + qt_error_string(errorNumber) + QLatin1Char(')'));
}

} // namespace sync::database
