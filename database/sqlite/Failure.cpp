#include "database/sqlite/Failure.h"

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
    case SQLITE_AUTH:
        return QStringLiteral("the store, its log or its folder can't be opened");
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

} // namespace

StoreError MakeError(QString const& path, int code, QString const& words, QString const& statement)
{
    return {code, path + QStringLiteral(": ") + words, statement};
}

StoreError DescribeError(sqlite3* handle, int code, QString const& path, QString const& statement, bool engineWords)
{
    QString const engine =
        QString::fromUtf8(engineWords && handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(code));
    int const errorNumber = handle != nullptr && ComesFromTheSystem(code) ? sqlite3_system_errno(handle) : 0;
    QString words = PlainWords(code, path) + QStringLiteral(" (") + engine;
    if (errorNumber != 0)
        words += QStringLiteral("; ") + SystemReason(errorNumber);
    return MakeError(path, code, words + QLatin1Char(')'), statement);
}

StoreError DescribeSystemError(QString const& path, QString const& words, int errorNumber)
{
    int const code = errorNumber == ENOSPC || errorNumber == EDQUOT ? SQLITE_FULL : SQLITE_CANTOPEN;
    return MakeError(path, code, words + QStringLiteral(" (") + SystemReason(errorNumber) + QLatin1Char(')'));
}

Failure NoConnection()
{
    return StoreError{SQLITE_MISUSE, QStringLiteral("the thread is ending and has closed its stores"), {}};
}

QString SystemReason(int errorNumber)
{
    return qt_error_string(errorNumber);
}

} // namespace sync::database
