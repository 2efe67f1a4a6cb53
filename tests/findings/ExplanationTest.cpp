#include "tools/findings/Explanation.h"

#include "database/SqliteDatabaseFactory.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <utility>

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::interf::IQSqlDatabaseWrapper;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;
using tandry::findings::Explain;
using tandry::findings::Explanation;
using tandry::findings::ExplanationRequest;

namespace {

/// A query that notes its statement.
class NotingQuery : public IQSqlQueryWrapper
{
public:
    NotingQuery(std::shared_ptr<IQSqlQueryWrapper> query, QStringList& statements)
        : _query(std::move(query))
        , _statements(statements)
    {}

    bool prepare(QString const& statement) override
    {
        if (!_statements.contains(statement))
            _statements.append(statement);
        return _query->prepare(statement);
    }
    QVariant value(int column) override { return _query->value(column); }
    bool next() override { return _query->next(); }
    bool isValid() override { return _query->isValid(); }
    void bindValue(QString const& placeholder, QVariant const& value) override
    {
        _query->bindValue(placeholder, value);
    }
    bool exec() override { return _query->exec(); }
    QString lastError() override { return _query->lastError(); }
    void finish() override { _query->finish(); }
    QVariant lastInsertId() override { return _query->lastInsertId(); }
    int numRowsAffected() override { return _query->numRowsAffected(); }

private:
    std::shared_ptr<IQSqlQueryWrapper> const _query;
    QStringList& _statements;
};

/// A store that notes all statements.
class NotingStore : public IDatabaseFactory
{
public:
    explicit NotingStore(std::shared_ptr<IDatabaseFactory> store)
        : _store(std::move(store))
    {}

    std::shared_ptr<IQSqlDatabaseWrapper> CreateDatabase() override { return _store->CreateDatabase(); }
    std::shared_ptr<IQSqlQueryWrapper> CreateQuery() override
    {
        return std::make_shared<NotingQuery>(_store->CreateQuery(), statements);
    }

    QStringList statements;

private:
    std::shared_ptr<IDatabaseFactory> const _store;
};

} // namespace

TEST(ExplanationTest, NoStatementReadsAWholeLargeTable)
{
    QTemporaryDir const folder;
    QString const path = folder.filePath("store.db"_q);
    auto const noting = std::make_shared<NotingStore>(SqliteDatabaseFactory::Open(path));
    // The ids make the tables large.
    RawStore(path).Run(
        "INSERT INTO ServerConfiguration (id) VALUES (1);"
        "INSERT INTO AuthenticationConfiguration (id, serverId) VALUES (1, 1);"
        "INSERT INTO ProductConfiguration (id, serverId) VALUES (1, 1);"
        "INSERT INTO FolderConfiguration (id, clientPath, serverPath, authenticationId, parentId, rootId) VALUES "
        "(1, '/r', '/s', 1, 0, 1), (2, '/r/f', '/s/f', 1, 1, 1), (60000, '/r/g', '/s/g', 1, 1, 1);"
        "INSERT INTO FileConfiguration (id, clientPath, serverPath, name, folderConfigurationId, rootFolderId, "
        "fileType, productConfigurationId, fileLinks) VALUES (7, '/r/f/a', '/s/f/a', 'a', 2, 1, 0, 1, "
        "'<F FileDate=\"\"><L FileId=\"7\" Path=\"p\" RefId=\"\" ServerFileId=\"\"/></F>'), "
        "(60000, '/r/f/A', '/s/f/A', 'A', 2, 1, 0, 1, '');"
        "INSERT INTO GeneratedFileConfiguration (id, clientPath, parentFileId, fileType) VALUES (60000, '/g', 7, 1);"
        "INSERT INTO BaseFileConfiguration (id, clientPath, rootFolderId, parentFileId, fileType) VALUES "
        "(60000, '/b', 1, 7, 2);"_q);

    using By = ExplanationRequest::By;
    for (auto const& [by, text, id] : {std::tuple(By::ClientPath, "/r/f/a", 0),
                                       std::tuple(By::ClientPath, "/r/f", 0),
                                       std::tuple(By::ClientPath, "/r/no/such", 0),
                                       std::tuple(By::ServerPath, "/s/f/a", 0),
                                       std::tuple(By::ServerPath, "/s/f", 0),
                                       std::tuple(By::FolderId, "", 2),
                                       std::tuple(By::FileId, "", 7),
                                       std::tuple(By::GeneratedFileId, "", 60000),
                                       std::tuple(By::BaseFileId, "", 60000)}) {
        ExplanationRequest request;
        request.by = by;
        request.path = QString::fromUtf8(text);
        request.id = id;
        ASSERT_TRUE(Explain(noting, request)) << text << id;
    }

    EXPECT_GT(noting->statements.size(), 15);
    RawStore raw(path);
    for (QString const& statement : qAsConst(noting->statements)) {
        for (QVector<QVariant> const& row : raw.Rows("EXPLAIN QUERY PLAN "_q + statement))
            EXPECT_FALSE(row.last().toString().startsWith("SCAN"_q))
                << statement.toStdString() << ": " << row.last().toString().toStdString();
    }
}
