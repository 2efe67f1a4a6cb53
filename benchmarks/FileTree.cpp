#include "benchmarks/FileTree.h"

#include "benchmarks/Failure.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"

#include <algorithm>

namespace sync::benchmarks {

using sync::database::SqliteDatabaseFactory;

namespace {

constexpr int FilesOfFolder = 1000;

} // namespace

std::shared_ptr<SqliteDatabaseFactory> Open(QString const& path)
{
    QString error;
    std::shared_ptr<SqliteDatabaseFactory> store = SqliteDatabaseFactory::Open(path, &error);
    if (store == nullptr)
        Fail(error);
    return store;
}

void Run(SqliteDatabaseFactory& store,
         QString const& statement,
         std::initializer_list<std::pair<char const*, int>> values)
{
    auto const query = store.CreateQuery();
    Require(query->prepare(statement), "a statement was refused");
    for (auto const& [placeholder, value] : values)
        query->bindValue(QString::fromLatin1(placeholder), value);
    if (!query->exec())
        Fail(query->lastError());
}

void Fill(QString const& path, int files)
{
    std::shared_ptr<SqliteDatabaseFactory> const store = Open(path);
    auto const transaction = store->CreateDatabase();
    Require(transaction->transaction(), "the store cannot be filled");
    Run(*store,
        QStringLiteral("INSERT INTO FolderConfiguration (name, clientPath, serverPath, parentId, rootId, syncStatus) "
                       "VALUES ('Documents', '/home/ada/Documents', '/Documents', 0, 1, 3)"),
        {});
    Run(*store,
        QStringLiteral(
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < :count) "
            "INSERT INTO FolderConfiguration (name, clientPath, serverPath, parentId, rootId, syncStatus) "
            "SELECT 'Project ' || i, '/home/ada/Documents/Project ' || i, '/Documents/Project ' || i, 1, 1, 3 "
            "FROM n"),
        {{":count", std::max(1, files / FilesOfFolder)}});
    Run(*store,
        QStringLiteral(
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < :count) "
            "INSERT INTO FileConfiguration (folderConfigurationId, name, clientPath, serverPath, checkSum, "
            "createdDateTime, "
            "lastModifiedDateTime, syncStatus, lastOperationType, size, rootFolderId, syncOption, parentFileId, "
            "fileType, "
            "privileges, productConfigurationId, serverFileId, serverFileVersionId, checkSumMD5) "
            "SELECT 2 + i / 1000, name, '/home/ada/Documents/Project ' || (i / 1000) || '/' || name, "
            "'/Documents/Project ' || (i / 1000) || '/' || name, printf('%064d', i), 1700000000000 + i, "
            "1700000000000 + i * 7919 % 1000003, 1 + i % 97 / 48, 0, i * 7919 % 1000003, 1, 0, -1, 0, 31, -1, "
            "'file-' || i, 'version-' || i, printf('%032d', i) "
            "FROM (SELECT i, 'Letter ' || (i * 7919 % 1000003) || ' to the printer.odt' AS name FROM n)"),
        {{":count", files}});
    Require(transaction->commit(), "the store cannot be filled");
}

} // namespace sync::benchmarks
