#include "database/SqliteDatabaseFactory.h"
#include "database/TransactionalScope.h"
#include "support/ChildProcess.h"
#include "support/Queries.h"

#include <sqlite3.h>

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

int Add(QString const& path, int count, bool crashes)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = SqliteDatabaseFactory::Open(path);
    if (store == nullptr)
        return 1;
    for (int row = 0; row < count; ++row) {
        TransactionalScope const scope;
        if (!tandry::test::AddServer(*store, QStringLiteral("another's")))
            return 1;
    }
    if (crashes)
        tandry::test::Crash();
    return 0;
}

/// A factory that outlives the main thread's own data, and a program that ends in the middle of an operation.
[[noreturn]] void AddAndExit(QString const& path)
{
    static std::shared_ptr<SqliteDatabaseFactory> const store = SqliteDatabaseFactory::Open(path);
    TransactionalScope const scope;
    std::exit(store != nullptr && tandry::test::AddServer(*store, QStringLiteral("another's")) ? 0 : 1);
}

int Run(QString const& path, QString const& statement)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = SqliteDatabaseFactory::Open(path);
    return store != nullptr && tandry::test::Execute(*store, statement) ? 0 : 1;
}

int RunWithSqlite(QString const& path, char const* statements, int count = 1)
{
    sqlite3* handle = nullptr;
    int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &handle, SQLITE_OPEN_READWRITE, nullptr);
    for (int time = 0; code == SQLITE_OK && time < count; ++time)
        code = sqlite3_exec(handle, statements, nullptr, nullptr, nullptr);
    sqlite3_close(handle);
    return code == SQLITE_OK ? 0 : 1;
}

int Lock(QString const& path)
{
    sqlite3* handle = nullptr;
    int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &handle, SQLITE_OPEN_READWRITE, nullptr);
    if (code == SQLITE_OK)
        code = sqlite3_exec(handle, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    if (code == SQLITE_OK) {
        std::puts("locked");
        std::fflush(stdout);
        std::getchar(); // ends when the test closes the pipe
    }
    sqlite3_close(handle);
    return code == SQLITE_OK ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QStringList const arguments = application.arguments();
    QString const path = arguments.value(1);
    QString const command = arguments.value(2);
    if (command == QStringLiteral("add") || command == QStringLiteral("add-and-crash"))
        return Add(path, arguments.value(3).toInt(), command != QStringLiteral("add"));
    if (command == QStringLiteral("add-and-exit"))
        AddAndExit(path);
    if (command == QStringLiteral("run"))
        return Run(path, arguments.value(3));
    if (command == QStringLiteral("lock"))
        return Lock(path);
    if (command == QStringLiteral("take-over"))
        return RunWithSqlite(path, "PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; CREATE TABLE a (b); COMMIT");
    if (command == QStringLiteral("add-with-sqlite"))
        return RunWithSqlite(
            path, "INSERT INTO ServerConfiguration (alias) VALUES ('another''s')", arguments.value(3).toInt());
    return 2;
}
