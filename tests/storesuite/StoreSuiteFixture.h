#pragma once

#include "Statements.h"
#include "StoreUnderTest.h"
#include <tandry/interf/IDatabaseFactory.h>
#include <tandry/interf/IQSqlDatabaseWrapper.h>
#include <tandry/interf/IQSqlQueryWrapper.h>

#include <gtest/gtest.h>

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tandry::storesuite {

using sync::interf::IQSqlDatabaseWrapper;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

/// Placeholders and values, in the order in which they are bound.
using Bindings = std::vector<std::pair<QString, QVariant>>;

/// The fixture of all cases: a new store and a factory for it.
class StoreSuite : public testing::TestWithParam<StoreMaker>
{
protected:
    void SetUp() override
    {
        store = GetParam().make();
        ASSERT_NE(store, nullptr);
        factory = store->Open();
        ASSERT_NE(factory, nullptr);
    }

    /// Returns a query with its statement prepared and its values bound.
    static std::shared_ptr<IQSqlQueryWrapper>
    Query(IDatabaseFactory& over, QString const& statement, Bindings const& bindings = {})
    {
        std::shared_ptr<IQSqlQueryWrapper> query = over.CreateQuery();
        static_cast<void>(query->prepare(statement));
        Bind(*query, bindings);
        return query;
    }

    std::shared_ptr<IQSqlQueryWrapper> Query(QString const& statement, Bindings const& bindings = {})
    {
        return Query(*factory, statement, bindings);
    }

    static void Bind(IQSqlQueryWrapper& query, Bindings const& bindings)
    {
        for (auto const& [placeholder, value] : bindings)
            query.bindValue(placeholder, value);
    }

    bool Exec(QString const& statement, Bindings const& bindings = {}) { return Query(statement, bindings)->exec(); }

    /// Returns one column of all rows, or nothing if the statement fails.
    static std::optional<std::vector<QVariant>>
    ColumnIn(IDatabaseFactory& over, int column, QString const& statement, Bindings const& bindings = {})
    {
        auto const query = Query(over, statement, bindings);
        if (!query->exec())
            return std::nullopt;
        std::vector<QVariant> values;
        while (query->next())
            values.push_back(query->value(column));
        return values;
    }

    /// Returns one column of all rows. Fails the test if the statement fails.
    std::vector<QVariant> Column(int column, QString const& statement, Bindings const& bindings = {})
    {
        auto const values = ColumnIn(*factory, column, statement, bindings);
        EXPECT_TRUE(values) << statement.toStdString();
        return values.value_or(std::vector<QVariant>());
    }

    /// Returns one column of the only row. Fails the test if there is not exactly one row.
    QVariant Value(int column, QString const& statement, Bindings const& bindings = {})
    {
        std::vector<QVariant> const values = Column(column, statement, bindings);
        EXPECT_EQ(values.size(), 1U) << statement.toStdString();
        return values.empty() ? QVariant() : values.front();
    }

    /// Inserts a row and returns its id. Fails the test if the id is not positive: in records, 0 and -1 have a meaning.
    int Insert(QString const& statement, Bindings const& bindings)
    {
        auto const query = Query(statement, bindings);
        EXPECT_TRUE(query->exec()) << statement.toStdString();
        int const id = query->lastInsertId().toInt();
        EXPECT_GT(id, 0);
        return id;
    }

    static Bindings Server(QString const& alias)
    {
        return {{QStringLiteral(":alias"), alias},
                {QStringLiteral(":davUrl"), QStringLiteral("dav")},
                {QStringLiteral(":webServiceUrl"), QStringLiteral("web")},
                {QStringLiteral(":nameValueProperties"), QStringLiteral("<NameValueXml/>")},
                {QStringLiteral(":binaryDiffEncoder"), QStringLiteral("encoder")}};
    }

    int AddServer(QString const& alias) { return Insert(statements::AddServer, Server(alias)); }

    /// Returns a statement that no store can run; managers run it for an unknown file type.
    static QString BadStatement() { return statements::GetFiles.arg(QString()); }

    /// Returns the servers' aliases as a factory reads them, sorted; nothing if it cannot read.
    static std::optional<QStringList> AliasesIn(IDatabaseFactory& over)
    {
        auto const values = ColumnIn(over, 1, statements::GetServers);
        if (!values)
            return std::nullopt;
        QStringList aliases;
        for (QVariant const& value : *values)
            aliases.append(value.toString());
        aliases.sort();
        return aliases;
    }

    QStringList Aliases()
    {
        auto const aliases = AliasesIn(*factory);
        EXPECT_TRUE(aliases);
        return aliases.value_or(QStringList());
    }

    /// Returns the servers' aliases as another program reads them now; nothing if it is blocked.
    std::optional<QStringList> AliasesElsewhere()
    {
        auto const other = store->Open();
        return other == nullptr ? std::nullopt : AliasesIn(*other);
    }

    /// Returns the servers' aliases after the factory has been destroyed and the store opened again.
    QStringList DurableAliases()
    {
        factory.reset();
        factory = store->Open();
        EXPECT_NE(factory, nullptr);
        return factory == nullptr ? QStringList() : Aliases();
    }

    std::unique_ptr<StoreUnderTest> store;
    std::shared_ptr<IDatabaseFactory> factory;
};

} // namespace tandry::storesuite
