#include "config/ProductConfigManager.h"

#include "support/Conversation.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace tandry::test;
using sync::config::ProductConfigManager;
using sync::config::ProductConfiguration;

class ProductsInAStore : public StoreFixture
{
protected:
    ProductConfiguration Added(QString const& key, int serverId = 3)
    {
        ProductConfiguration product;
        product.setName("name"_q);
        product.setConsumerKey(key);
        product.setConsumerSecret("secret"_q);
        product.setServerId(serverId);
        EXPECT_TRUE(Manager().Add(product));
        return product;
    }

    ProductConfigManager Manager() { return ProductConfigManager(store); }
    RawStore Raw() const { return RawStore(StorePath()); }
};

TEST_F(ProductsInAStore, AllFieldsComeBackAfterTheStoreWasReopened)
{
    int const id = Added("key"_q, 77).getId();
    ReopenStore();
    ProductConfiguration const product = Manager().GetProductConfigurationById(id);
    EXPECT_EQ(product.getId(), id);
    EXPECT_EQ(product.getName(), "name"_q);
    EXPECT_EQ(product.getConsumerKey(), "key"_q);
    EXPECT_EQ(product.getConsumerSecret(), "secret"_q);
    EXPECT_EQ(Raw().Value("SELECT serverId FROM ProductConfiguration"_q), QVariant(77LL));
}

TEST_F(ProductsInAStore, GetServerIdIsTheRowIdWhateverTheServerColumnHolds)
{
    Added("other"_q);
    int const id = Added("key"_q, 77).getId();
    ProductConfiguration const product = Manager().GetProductConfigurationById(id);
    EXPECT_EQ(product.getServerId(), product.getId());
    EXPECT_EQ(Manager().GetProductConfigurationByServerIdAndConsumerKey(77, "key"_q).getServerId(), id);
}

TEST_F(ProductsInAStore, ServerIdThatWasReadIsKeptByAnUpdate)
{
    int const id = Added("key"_q, 77).getId();
    EXPECT_TRUE(Manager().Update(Manager().GetProductConfigurationById(id)));
    EXPECT_EQ(Raw().Value("SELECT serverId FROM ProductConfiguration"_q), QVariant(77LL));
}

TEST_F(ProductsInAStore, UpdateMakesTheConsumerSecretNullInTheRowAndLeavesItInTheCallersRecord)
{
    ProductConfiguration const product = Added("key"_q);
    EXPECT_TRUE(Manager().Update(product));
    EXPECT_FALSE(Raw().Value("SELECT consumerSecret FROM ProductConfiguration"_q).isValid());
    EXPECT_TRUE(Manager().GetProductConfigurationById(product.getId()).getConsumerSecret().isEmpty());
    EXPECT_EQ(product.getConsumerSecret(), "secret"_q);
}

TEST_F(ProductsInAStore, UpdateEmptiesThePropertiesWhateverStoodThere)
{
    int const id = Added("key"_q).getId();
    Raw().Run("UPDATE ProductConfiguration SET nameValueProperties = '"_q + OneProperty("k", "v") + "'"_q);
    EXPECT_TRUE(Manager().Update(Manager().GetProductConfigurationById(id)));
    EXPECT_EQ(Raw().Value("SELECT nameValueProperties FROM ProductConfiguration"_q), QVariant(NoProperties()));
}

TEST_F(ProductsInAStore, KeyOfAnotherServerFindsNothing)
{
    int const id = Added("key"_q, 3).getId();
    Added("other"_q, 4);
    EXPECT_EQ(Manager().GetProductConfigurationByServerIdAndConsumerKey(3, "key"_q).getId(), id);
    EXPECT_EQ(Manager().GetProductConfigurationByServerIdAndConsumerKey(4, "key"_q).getId(), -1);
    EXPECT_EQ(Manager().GetProductConfigurationByServerIdAndConsumerKey(3, "Key"_q).getId(), -1);
}

TEST_F(ProductsInAStore, RemoveTakesOneRowAndLeavesFoldersAndFilesThatNameIt)
{
    int const id = Added("key"_q).getId();
    Added("other"_q);
    Raw().Run(QStringLiteral("INSERT INTO FolderConfiguration (productConfigurationId) VALUES (%1);"
                             "INSERT INTO FileConfiguration (productConfigurationId) VALUES (%1)")
                  .arg(id));
    EXPECT_TRUE(Manager().Remove(id));
    EXPECT_EQ(Manager().GetProductConfigurationById(id).getId(), -1);
    EXPECT_EQ(Raw().Count("ProductConfiguration"_q), 1);
    EXPECT_EQ(Raw().Value("SELECT productConfigurationId FROM FolderConfiguration"_q).toInt(), id);
    EXPECT_EQ(Raw().Value("SELECT productConfigurationId FROM FileConfiguration"_q).toInt(), id);
}

TEST_F(ProductsInAStore, WritesOfAMissingRowAnswerTrueAndChangeNothing)
{
    Added("key"_q);
    auto const before = Raw().Rows("SELECT * FROM ProductConfiguration"_q);
    EXPECT_TRUE(Manager().Update(ProductConfiguration()));
    for (int const id : {-1, 0, 999, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_TRUE(Manager().Remove(id));
    EXPECT_EQ(Raw().Rows("SELECT * FROM ProductConfiguration"_q), before);
}

TEST_F(ProductsInAStore, GetAllListsEachRowAndNothingInAnEmptyTable)
{
    EXPECT_TRUE(Manager().GetAll().isEmpty());
    int const first = Added("key"_q).getId();
    int const second = Added("other"_q).getId();
    QVector<ProductConfiguration> const products = Manager().GetAll();
    ASSERT_EQ(products.size(), 2);
    EXPECT_EQ(products[0].getId(), first);
    EXPECT_EQ(products[0].getConsumerSecret(), "secret"_q);
    EXPECT_EQ(products[1].getId(), second);
}

TEST_F(ProductsInAStore, NullColumnsReadAsEmptyTexts)
{
    Raw().Run("INSERT INTO ProductConfiguration (id) VALUES (7)"_q);
    ProductConfiguration const product = Manager().GetProductConfigurationById(7);
    EXPECT_EQ(product.getId(), 7);
    EXPECT_TRUE(product.getName().isEmpty());
    EXPECT_TRUE(product.getConsumerKey().isEmpty());
    EXPECT_TRUE(product.getConsumerSecret().isEmpty());
}

TEST_F(ProductsInAStore, FailingStoreShowsInTheAnswersAndInTheStoresError)
{
    ProductConfiguration product = Added("key"_q);
    int const id = product.getId();
    Raw().Run("ALTER TABLE ProductConfiguration RENAME TO Elsewhere"_q);
    EXPECT_EQ(Manager().GetProductConfigurationById(id).getId(), -1);
    EXPECT_TRUE(Manager().GetAll().isEmpty());
    EXPECT_FALSE(Manager().Update(product));
    EXPECT_FALSE(Manager().Add(product));
    EXPECT_FALSE(Manager().Remove(id));
    EXPECT_EQ(product.getId(), id);
    EXPECT_TRUE(store->LastError());
    store->ClearError();
}

} // namespace
