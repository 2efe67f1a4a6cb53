#include "config/ProductConfiguration.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QMap>
#include <QMetaProperty>

#include <utility>

namespace product_configuration_test {
namespace {

using namespace tandry::test;
using sync::config::ProductConfiguration;
using Properties = QMap<QString, QString>;

// The map has no accessor, and no record that leaves the manager holds one. An explicit instantiation may name it.
Properties& PropertiesOf(ProductConfiguration& product);
template <auto Map>
struct MapOpener
{
    friend Properties& PropertiesOf(ProductConfiguration& product) { return product.*Map; }
};
template struct MapOpener<&ProductConfiguration::nameValueProperties>;

TEST(ProductConfiguration, DefaultRecordStandsForNoRow)
{
    ProductConfiguration const product;
    EXPECT_EQ(product.getId(), -1);
    EXPECT_TRUE(product.getName().isNull());
    EXPECT_TRUE(product.getConsumerKey().isNull());
    EXPECT_TRUE(product.getConsumerSecret().isNull());
    EXPECT_EQ(product.getServerId(), -1);
    EXPECT_EQ(product.parent(), nullptr);
}

TEST(ProductConfiguration, GetServerIdGivesTheRowIdWhateverServerWasSet)
{
    ProductConfiguration product;
    product.setServerId(5);
    EXPECT_EQ(product.getServerId(), -1);
    EXPECT_TRUE(product.setProperty("ServerId", 6));
    EXPECT_EQ(product.property("ServerId").toInt(), -1);
}

TEST(ProductConfiguration, PropertyIdIsReadOnly)
{
    ProductConfiguration product;
    EXPECT_FALSE(product.setProperty("Id", 5));
    EXPECT_EQ(product.property("Id").toInt(), -1);
}

TEST(ProductConfiguration, PropertiesAreReadAndWrittenByName)
{
    ProductConfiguration product;
    for (char const* name : {"Name", "ConsumerKey", "ConsumerSecret"}) {
        EXPECT_TRUE(product.setProperty(name, QString::fromUtf8(name)));
        EXPECT_EQ(product.property(name).toString(), QString::fromUtf8(name));
    }
    EXPECT_EQ(product.getName(), "Name"_q);
    EXPECT_EQ(product.getConsumerKey(), "ConsumerKey"_q);
    EXPECT_EQ(product.getConsumerSecret(), "ConsumerSecret"_q);
}

TEST(ProductConfiguration, CopyAndAssignmentCarryTheTextsAndNothingOfTheObject)
{
    ProductConfiguration source;
    source.setObjectName("source"_q);
    source.setProperty("dynamic", 1);
    source.setName("name"_q);
    source.setConsumerKey("key"_q);
    source.setConsumerSecret("secret"_q);

    ProductConfiguration const copy(source);
    ProductConfiguration assigned;
    assigned.setObjectName("assigned"_q);
    EXPECT_EQ(&(assigned = source), &assigned);
    for (ProductConfiguration const* product : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(product->getName(), "name"_q);
        EXPECT_EQ(product->getConsumerKey(), "key"_q);
        EXPECT_EQ(product->getConsumerSecret(), "secret"_q);
        EXPECT_EQ(product->parent(), nullptr);
        EXPECT_FALSE(product->property("dynamic").isValid());
    }
    EXPECT_TRUE(copy.objectName().isEmpty());
    EXPECT_EQ(assigned.objectName(), "assigned"_q);
}

TEST(ProductConfiguration, CopyStartsWithoutProperties)
{
    ProductConfiguration source;
    PropertiesOf(source) = {{"k"_q, "v"_q}};
    ProductConfiguration copy(source);
    EXPECT_TRUE(PropertiesOf(copy).isEmpty());
    EXPECT_EQ(PropertiesOf(source), (Properties{{"k"_q, "v"_q}}));
}

TEST(ProductConfiguration, AssignmentKeepsThePropertiesOfTheTarget)
{
    ProductConfiguration source;
    PropertiesOf(source) = {{"k"_q, "v"_q}};
    ProductConfiguration target;
    PropertiesOf(target) = {{"own"_q, "1"_q}};
    target = source;
    EXPECT_EQ(PropertiesOf(target), (Properties{{"own"_q, "1"_q}}));
}

TEST(ProductConfiguration, AssignmentToItselfChangesNothing)
{
    ProductConfiguration product;
    product.setName("name"_q);
    PropertiesOf(product) = {{"k"_q, "v"_q}};
    ProductConfiguration const& same = product;
    product = same;
    EXPECT_EQ(product.getName(), "name"_q);
    EXPECT_EQ(PropertiesOf(product), (Properties{{"k"_q, "v"_q}}));
}

} // namespace
} // namespace product_configuration_test
