#include "interf/FileConfigOrderByEnum.h"
#include "interf/IAuthenticationConfigManager.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IFileConfigManager.h"
#include "interf/IFolderConfigManager.h"
#include "interf/IProductConfigManager.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "interf/IRefreshNativeFileViewer.h"
#include "interf/IScheduleEntryManager.h"
#include "interf/IServerConfigManager.h"

#include <gtest/gtest.h>

#include <QMetaObject>

#include <type_traits>

namespace {

using namespace sync::interf;

template <class Interface>
class AnInterface : public testing::Test
{};

using Interfaces = testing::Types<factory::IDatabaseFactory,
                                  IQSqlDatabaseWrapper,
                                  IQSqlQueryWrapper,
                                  IRefreshNativeFileViewer,
                                  IAuthenticationConfigManager,
                                  IFileConfigManager,
                                  IFolderConfigManager,
                                  IProductConfigManager,
                                  IScheduleEntryManager,
                                  IServerConfigManager>;
TYPED_TEST_SUITE(AnInterface, Interfaces);

TYPED_TEST(AnInterface, IsAnAbstractQObject)
{
    EXPECT_TRUE(std::is_abstract_v<TypeParam>);
    EXPECT_TRUE((std::is_base_of_v<QObject, TypeParam>));
}

TYPED_TEST(AnInterface, HasItsOwnMetaObjectWithoutDeclarations)
{
    QMetaObject const& meta = TypeParam::staticMetaObject;
    EXPECT_NE(&meta, &QObject::staticMetaObject);
    EXPECT_EQ(meta.superClass(), &QObject::staticMetaObject);
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    EXPECT_EQ(meta.enumeratorCount(), meta.enumeratorOffset());
}

class Database : public IQSqlDatabaseWrapper
{
public:
    bool transaction() override { return false; }
    bool commit() override { return false; }
    bool rollback() override { return false; }
};

TEST(DefaultImplementations, DatabaseIsOpenAndHasNoError)
{
    Database database;
    EXPECT_TRUE(database.isOpen());
    EXPECT_TRUE(database.lastError().isNull());
}

class Query : public IQSqlQueryWrapper
{
public:
    QVariant value(int) override { return 1; }
    bool next() override { return true; }
    bool isValid() override { return true; }
    bool prepare(QString const&) override { return true; }
    void bindValue(QString const&, QVariant const&) override {}
    bool exec() override { return true; }
    QVariant lastInsertId() override { return 2; }
    int numRowsAffected() override { return 3; }
};

TEST(DefaultImplementations, QueryHasNoErrorAndFinishDoesNothing)
{
    Query query;
    EXPECT_TRUE(query.lastError().isNull());
    query.finish();
    EXPECT_TRUE(query.isValid());
}

static_assert(std::is_same_v<decltype(&IQSqlQueryWrapper::prepare), bool (IQSqlQueryWrapper::*)(QString const&)>);
static_assert(std::is_same_v<decltype(&IQSqlQueryWrapper::lastError), QString (IQSqlQueryWrapper::*)()>);

TEST(FileConfigOrderByEnum, ValuesAreThoseThatClientsStore)
{
    static_assert(std::is_same_v<std::underlying_type_t<FileConfigOrderByEnum>, int>);
    EXPECT_EQ(FileConfigOrderById, 0);
    EXPECT_EQ(FileConfigOrderByIdDesc, 1);
    EXPECT_EQ(FileConfigOrderByName, 2);
    EXPECT_EQ(FileConfigOrderByNameDesc, 3);
    EXPECT_EQ(FileConfigOrderByFolderConfigurationId, 4);
    EXPECT_EQ(FileConfigOrderByFolderConfigurationIdDesc, 5);
    EXPECT_EQ(FileConfigOrderByClientPath, 6);
    EXPECT_EQ(FileConfigOrderByClientPathDesc, 7);
    EXPECT_EQ(FileConfigOrderByServerPath, 8);
    EXPECT_EQ(FileConfigOrderByServerPathDesc, 9);
    EXPECT_EQ(FileConfigOrderByCheckSum, 10);
    EXPECT_EQ(FileConfigOrderByCheckSumDesc, 11);
    EXPECT_EQ(FileConfigOrderByCreatedDateTime, 12);
    EXPECT_EQ(FileConfigOrderByCreatedDateTimeDesc, 13);
    EXPECT_EQ(FileConfigOrderByLastModifiedDateTime, 14);
    EXPECT_EQ(FileConfigOrderByLastModifiedDateTimeDesc, 15);
    EXPECT_EQ(FileConfigOrderBySyncStatus, 16);
    EXPECT_EQ(FileConfigOrderBySyncStatusDesc, 17);
    EXPECT_EQ(FileConfigOrderByLastOperationType, 18);
    EXPECT_EQ(FileConfigOrderByLastOperationTypeDesc, 19);
    EXPECT_EQ(FileConfigOrderBySize, 20);
    EXPECT_EQ(FileConfigOrderBySizeDesc, 21);
}

} // namespace
