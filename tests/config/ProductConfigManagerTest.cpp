#include "config/ProductConfigManager.h"

#include "support/Conversation.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace product_config_manager_test {
namespace {

using namespace tandry::test;
using sync::config::ProductConfigManager;
using sync::config::ProductConfiguration;

template <class Result, class... Arguments>
using Operation = Result (ProductConfigManager::*)(Arguments...);
static_assert(std::is_same_v<decltype(&ProductConfigManager::GetProductConfigurationById), //
                             Operation<ProductConfiguration, int>>);
static_assert(std::is_same_v<decltype(&ProductConfigManager::GetProductConfigurationByServerIdAndConsumerKey),
                             Operation<ProductConfiguration, int, QString>>);
static_assert(std::is_same_v<decltype(&ProductConfigManager::GetAll), Operation<QVector<ProductConfiguration>>>);
static_assert(std::is_same_v<decltype(&ProductConfigManager::Update), Operation<bool, ProductConfiguration>>);
static_assert(std::is_same_v<decltype(&ProductConfigManager::Add), Operation<bool, ProductConfiguration&>>);
static_assert(std::is_same_v<decltype(&ProductConfigManager::Remove), Operation<bool, int>>);

char const* const SelectById = "SELECT id, name, consumerKey, consumerSecret, serverId, nameValueProperties "
                               "FROM ProductConfiguration WHERE id = :id";
char const* const SelectByServerAndKey = "SELECT id, name, consumerKey, consumerSecret, serverId, nameValueProperties "
                                         "FROM ProductConfiguration WHERE serverId = :serverId AND "
                                         "consumerKey = :consumerKey";
char const* const SelectAll = "SELECT id, name, consumerKey, consumerSecret, serverId, nameValueProperties "
                              "FROM ProductConfiguration";
char const* const UpdateRow =
    "UPDATE ProductConfiguration SET name = :name, consumerKey = :consumerKey, consumerSecret = :consumerSecret, "
    "serverId = :serverId, nameValueProperties = :nameValueProperties WHERE id = :id";
char const* const InsertRow =
    "INSERT INTO ProductConfiguration (name, consumerKey, consumerSecret, serverId, nameValueProperties) VALUES "
    "(:name, :consumerKey, :consumerSecret, :serverId, :nameValueProperties);";
char const* const DeleteRow = "DELETE FROM ProductConfiguration WHERE Id = :id;";

class ProductConfigManagerConversation : public testing::Test
{
protected:
    static ProductConfiguration FilledRecord()
    {
        ProductConfiguration product;
        product.setName("name"_q);
        product.setConsumerKey("key"_q);
        product.setConsumerSecret("secret"_q);
        product.setServerId(3);
        return product;
    }

    static Row StoredRow() { return {7, "name"_q, "key"_q, "secret"_q, 3, OneProperty("k", "v")}; }

    static void ExpectStoredRow(ProductConfiguration const& product)
    {
        EXPECT_EQ(product.getId(), 7);
        EXPECT_EQ(product.getName(), "name"_q);
        EXPECT_EQ(product.getConsumerKey(), "key"_q);
        EXPECT_EQ(product.getConsumerSecret(), "secret"_q);
        EXPECT_EQ(product.getServerId(), 7);
    }

    static void ExpectDefault(ProductConfiguration const& product)
    {
        EXPECT_EQ(product.getId(), -1);
        EXPECT_TRUE(product.getName().isNull());
        EXPECT_TRUE(product.getConsumerKey().isNull());
        EXPECT_TRUE(product.getConsumerSecret().isNull());
    }

    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    ProductConfigManager manager{store};
};

TEST_F(ProductConfigManagerConversation, ConstructionAndDestructionTouchNoStore)
{
    {
        ProductConfigManager const other(store);
        EXPECT_EQ(store.use_count(), 3);
    }
    EXPECT_EQ(store.use_count(), 2);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST_F(ProductConfigManagerConversation, GetProductConfigurationByIdReadsOneRow)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetProductConfigurationById(7));
    ExpectConversation(*store, {Read(SelectById, {{":id", 7}})});
}

TEST_F(ProductConfigManagerConversation, ServerIdOfAStoredRowIsReadAndShowsInTheNextWriteOnly)
{
    store->PlayRows({StoredRow()});
    ProductConfiguration const product = manager.GetProductConfigurationById(7);
    EXPECT_EQ(product.getServerId(), product.getId());
    store->Forget();
    EXPECT_TRUE(manager.Update(product));
    EXPECT_EQ(store->Executions().at(0).bindings.at(3), (Bound{":serverId", 3}));
}

TEST_F(ProductConfigManagerConversation, GetProductConfigurationByServerIdAndConsumerKeyBindsBoth)
{
    store->PlayRows({StoredRow(), {8}});
    ExpectStoredRow(manager.GetProductConfigurationByServerIdAndConsumerKey(3, " Key"_q));
    static_cast<void>(
        manager.GetProductConfigurationByServerIdAndConsumerKey(std::numeric_limits<int>::min(), QString()));
    ExpectConversation(
        *store,
        {Read(SelectByServerAndKey, {{":serverId", 3}, {":consumerKey", " Key"_q}}),
         Read(SelectByServerAndKey, {{":serverId", std::numeric_limits<int>::min()}, {":consumerKey", QString()}})});
}

TEST_F(ProductConfigManagerConversation, LookupsWithoutARowAnswerWithADefaultRecord)
{
    ExpectDefault(manager.GetProductConfigurationById(7));
    ExpectDefault(manager.GetProductConfigurationByServerIdAndConsumerKey(3, "key"_q));
}

TEST_F(ProductConfigManagerConversation, LookupsOnAFailingStoreAnswerWithADefaultRecord)
{
    store->FailAll();
    ExpectDefault(manager.GetProductConfigurationById(7));
    ExpectDefault(manager.GetProductConfigurationByServerIdAndConsumerKey(3, "key"_q));
    EXPECT_EQ(store->Executions().size(), 2U);
}

TEST_F(ProductConfigManagerConversation, NullColumnsReadAsZeroAndEmptyTexts)
{
    store->PlayRows({Row(6)});
    ProductConfiguration const product = manager.GetProductConfigurationById(7);
    EXPECT_EQ(product.getId(), 0);
    EXPECT_TRUE(product.getName().isEmpty());
    EXPECT_TRUE(product.getConsumerKey().isEmpty());
    EXPECT_TRUE(product.getConsumerSecret().isEmpty());
}

TEST_F(ProductConfigManagerConversation, GetAllReadsEachRowInTheStoresOrder)
{
    store->PlayRows({StoredRow(), {3, "b"_q, "c"_q, "d"_q, 9, QVariant()}});
    QVector<ProductConfiguration> const products = manager.GetAll();
    ASSERT_EQ(products.size(), 2);
    ExpectStoredRow(products[0]);
    EXPECT_EQ(products[1].getId(), 3);
    EXPECT_EQ(products[1].getConsumerSecret(), "d"_q);
    ExpectConversation(*store, {Read(SelectAll)});
}

TEST_F(ProductConfigManagerConversation, GetAllIsEmptyWithoutRowsAndOnAFailingStore)
{
    EXPECT_TRUE(manager.GetAll().isEmpty());
    store->FailAll();
    EXPECT_TRUE(manager.GetAll().isEmpty());
}

TEST_F(ProductConfigManagerConversation, AddBindsAllFieldsTheServerThatWasSetAndNoId)
{
    ProductConfiguration product = FilledRecord();
    store->PlayInsertId(12LL);
    EXPECT_TRUE(manager.Add(product));
    ExpectConversation(*store,
                       {Written(InsertRow,
                                {{":name", "name"_q},
                                 {":consumerKey", "key"_q},
                                 {":consumerSecret", "secret"_q},
                                 {":serverId", 3},
                                 {":nameValueProperties", NoProperties()}})});
    EXPECT_EQ(product.getId(), 12);
    EXPECT_EQ(product.getConsumerSecret(), "secret"_q);
}

TEST_F(ProductConfigManagerConversation, AddOfANewRecordBindsServerId0WhateverTheMemoryHeldBefore)
{
    alignas(ProductConfiguration) unsigned char memory[sizeof(ProductConfiguration)];
    std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xa5));
    auto* const product = new (memory) ProductConfiguration();
    EXPECT_TRUE(manager.Add(*product));
    product->~ProductConfiguration();
    ExpectConversation(*store,
                       {Written(InsertRow,
                                {{":name", QString()},
                                 {":consumerKey", QString()},
                                 {":consumerSecret", QString()},
                                 {":serverId", 0},
                                 {":nameValueProperties", NoProperties()}})});
}

TEST_F(ProductConfigManagerConversation, AddOnAFailingStoreAnswersFalseAndLeavesTheRecord)
{
    ProductConfiguration product;
    EXPECT_TRUE(manager.Add(product));
    int const id = product.getId();
    store->FailExec(2);
    EXPECT_FALSE(manager.Add(product));
    EXPECT_EQ(product.getId(), id);
}

TEST_F(ProductConfigManagerConversation, UpdateLeavesTheConsumerSecretUnboundAndTheCallersRecordAlone)
{
    ProductConfiguration product = FilledRecord();
    store->PlayInsertId(12);
    EXPECT_TRUE(manager.Add(product));
    store->Forget();
    EXPECT_TRUE(manager.Update(product));
    ExpectConversation(*store,
                       {Written(UpdateRow,
                                {{":id", 12},
                                 {":name", "name"_q},
                                 {":consumerKey", "key"_q},
                                 {":serverId", 3},
                                 {":nameValueProperties", NoProperties()}})});
    EXPECT_EQ(product.getConsumerSecret(), "secret"_q);
}

TEST_F(ProductConfigManagerConversation, UpdateWritesNoPropertiesWhateverTheRowHeld)
{
    store->PlayRows({StoredRow()});
    EXPECT_TRUE(manager.Update(manager.GetProductConfigurationById(7)));
    store->PlayRows({StoredRow()});
    EXPECT_TRUE(manager.Update(manager.GetAll().at(0)));
    for (std::size_t const update : {1U, 3U})
        EXPECT_EQ(store->Executions().at(update).bindings.at(4), (Bound{":nameValueProperties", NoProperties()}));
}

TEST_F(ProductConfigManagerConversation, RemoveLooksTheRowUpOutsideTheScopeAndThenDeletesIt)
{
    store->PlayRows({StoredRow()});
    EXPECT_TRUE(manager.Remove(7));
    ExpectConversation(*store, {Read(SelectById, {{":id", 7}}), Written(DeleteRow, {{":id", 7}})});
}

TEST_F(ProductConfigManagerConversation, RemoveOfAMissingRowMakesOneLookupAndOneDeleteAndAnswersTrue)
{
    store->SetRowsAffected(0);
    EXPECT_TRUE(manager.Remove(-1));
    ExpectConversation(*store, {Read(SelectById, {{":id", -1}}), Written(DeleteRow, {{":id", -1}})});
}

TEST_F(ProductConfigManagerConversation, RemoveDoesNotLookAtTheResultOfItsLookup)
{
    store->FailExec(1);
    EXPECT_TRUE(manager.Remove(7));
    EXPECT_EQ(store->Executions().size(), 2U);
}

TEST_F(ProductConfigManagerConversation, UpdateAndRemoveOnAFailingStatementAnswerFalse)
{
    store->FailExec(1);
    EXPECT_FALSE(manager.Update(ProductConfiguration()));
    store->FailExec(3);
    EXPECT_FALSE(manager.Remove(7));
}

class ProductConfigManagerWithOwnLookup : public ProductConfigManager
{
public:
    using ProductConfigManager::ProductConfigManager;

    ProductConfiguration GetProductConfigurationById(int id) override
    {
        ids.push_back(id);
        return {};
    }

    std::vector<int> ids;
};

TEST_F(ProductConfigManagerConversation, RemoveLooksUpThroughAnOverride)
{
    ProductConfigManagerWithOwnLookup own(store);
    EXPECT_TRUE(own.Remove(7));
    EXPECT_EQ(own.ids, std::vector<int>{7});
    ExpectConversation(*store, {Written(DeleteRow, {{":id", 7}})});
}

/// Reads and writes name-value properties in the plainest way, so that it shows which map a record held.
class ProductConfigManagerWithOwnDocuments : public ProductConfigManager
{
public:
    using ProductConfigManager::ProductConfigManager;

    QMap<QString, QString> ToNameValuePropertyMap(QString text) const override { return {{"read"_q, text}}; }
    QString ToNameValuePropertyString(QMap<QString, QString> properties) override
    {
        return "written "_q + properties["read"_q];
    }
};

TEST_F(ProductConfigManagerConversation, NoRecordThatACallerReceivesHoldsTheMapThatWasRead)
{
    ProductConfigManagerWithOwnDocuments own(store);
    store->PlayRows({StoredRow()});
    ProductConfiguration product = own.GetProductConfigurationById(7);
    // Add takes the caller's own record, so what it writes is what that record holds.
    EXPECT_TRUE(own.Add(product));
    EXPECT_EQ(store->Executions().back().bindings.at(4), (Bound{":nameValueProperties", "written "_q}));

    store->PlayRows({StoredRow()});
    QVector<ProductConfiguration> products = own.GetAll();
    EXPECT_TRUE(own.Add(products[0]));
    EXPECT_EQ(store->Executions().back().bindings.at(4), (Bound{":nameValueProperties", "written "_q}));
}

} // namespace
} // namespace product_config_manager_test
