#include "config/AuthenticationConfiguration.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QMetaProperty>

#include <new>
#include <utility>

namespace {

using namespace tandry::test;
using sync::config::AuthenticationConfiguration;

AuthenticationConfiguration FilledRecord()
{
    AuthenticationConfiguration account;
    account.setId(7);
    account.setDomain("domain"_q);
    account.setDomainId("domain-id"_q);
    account.setUserName("user"_q);
    account.setPassword("password"_q);
    account.setServerId(3);
    return account;
}

void ExpectFilled(AuthenticationConfiguration const& account)
{
    EXPECT_EQ(account.getId(), 7);
    EXPECT_EQ(account.getDomain(), "domain"_q);
    EXPECT_EQ(account.getDomainId(), "domain-id"_q);
    EXPECT_EQ(account.getUserName(), "user"_q);
    EXPECT_EQ(account.getPassword(), "password"_q);
    EXPECT_EQ(account.getServerId(), 3);
}

TEST(AuthenticationConfiguration, DefaultRecordStandsForNoRowAndNoServer)
{
    AuthenticationConfiguration const account;
    EXPECT_EQ(account.getId(), -1);
    EXPECT_TRUE(account.getDomain().isNull());
    EXPECT_TRUE(account.getDomainId().isNull());
    EXPECT_TRUE(account.getUserName().isNull());
    EXPECT_TRUE(account.getPassword().isNull());
    EXPECT_EQ(account.getServerId(), 0);
    EXPECT_EQ(account.parent(), nullptr);
}

TEST(AuthenticationConfiguration, DefaultServerIdIsZeroWhateverTheMemoryHeldBefore)
{
    alignas(AuthenticationConfiguration) unsigned char memory[sizeof(AuthenticationConfiguration)];
    std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xa5));
    auto* const account = new (memory) AuthenticationConfiguration();
    EXPECT_EQ(account->getServerId(), 0);
    account->~AuthenticationConfiguration();
}

TEST(AuthenticationConfiguration, SettersKeepWhatTheyAreGiven)
{
    ExpectFilled(FilledRecord());
}

TEST(AuthenticationConfiguration, CopyAndAssignmentCarryAllFieldsAndNothingOfTheObject)
{
    AuthenticationConfiguration source = FilledRecord();
    source.setObjectName("source"_q);
    source.setProperty("dynamic", 1);

    AuthenticationConfiguration const copy(source);
    AuthenticationConfiguration assigned;
    assigned.setObjectName("assigned"_q);
    EXPECT_EQ(&(assigned = source), &assigned);
    for (AuthenticationConfiguration const* account : {&copy, &std::as_const(assigned)}) {
        ExpectFilled(*account);
        EXPECT_EQ(account->parent(), nullptr);
        EXPECT_FALSE(account->property("dynamic").isValid());
    }
    EXPECT_TRUE(copy.objectName().isEmpty());
    EXPECT_EQ(assigned.objectName(), "assigned"_q);
}

TEST(AuthenticationConfiguration, PropertyIdIsWritable)
{
    AuthenticationConfiguration account;
    EXPECT_TRUE(account.setProperty("Id", 5));
    EXPECT_EQ(account.getId(), 5);
}

TEST(AuthenticationConfiguration, PropertiesAreReadAndWrittenByName)
{
    AuthenticationConfiguration account;
    for (char const* name : {"Domain", "DomainId", "UserName", "Password"}) {
        EXPECT_TRUE(account.setProperty(name, QString::fromUtf8(name)));
        EXPECT_EQ(account.property(name).toString(), QString::fromUtf8(name));
    }
    EXPECT_TRUE(account.setProperty("ServerId", 3));
    EXPECT_EQ(account.property("ServerId").toInt(), 3);
    EXPECT_EQ(account.getDomain(), "Domain"_q);
    EXPECT_EQ(account.getDomainId(), "DomainId"_q);
    EXPECT_EQ(account.getUserName(), "UserName"_q);
    EXPECT_EQ(account.getPassword(), "Password"_q);
    EXPECT_EQ(account.getServerId(), 3);
}

class DerivedAccount : public AuthenticationConfiguration
{
public:
    using AuthenticationConfiguration::_CopyMembers;
};

TEST(AuthenticationConfiguration, DerivedRecordMayCopyTheMembers)
{
    DerivedAccount account;
    account._CopyMembers(FilledRecord());
    ExpectFilled(account);
}

} // namespace
