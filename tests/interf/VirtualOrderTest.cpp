#include "config/DatabaseConfigurationManager.h"
#include "config/FileConfigManager.h"
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

#include <cstddef>
#include <cstring>
#include <vector>

/// Clients are built against the order of the virtual operations, so none may move and none come between. Where
/// pointers to virtual operations hold their place in the virtual table, as they do with GCC and Clang, it is read from
/// there.
namespace {

using namespace sync::interf;
using sync::config::DatabaseConfigurationManager;

#if defined(__GNUC__)

template <class Operation>
std::ptrdiff_t PlaceOf(Operation operation)
{
    struct
    {
        std::ptrdiff_t offset; // in bytes; its lowest bit, or that of the adjustment, marks a virtual operation
        std::ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof representation == sizeof operation);
    std::memcpy(&representation, &operation, sizeof operation);
    EXPECT_EQ((representation.offset | representation.adjustment) & 1, 1) << "not virtual";
    return (representation.offset & ~std::ptrdiff_t(1)) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

class FirstBehindQObject : public QObject
{
public:
    virtual void First() {}
};

/// Places counted from behind those that QObject has.
template <class... Operation>
std::vector<std::ptrdiff_t> PlacesOf(Operation... operations)
{
    std::ptrdiff_t const first = PlaceOf(&FirstBehindQObject::First);
    return {PlaceOf(operations) - first...};
}

std::vector<std::ptrdiff_t> FirstPlaces(std::ptrdiff_t count)
{
    std::vector<std::ptrdiff_t> places;
    for (std::ptrdiff_t place = 0; place < count; ++place)
        places.push_back(place);
    return places;
}

TEST(VirtualOrder, OfTheDatabaseFactory)
{
    EXPECT_EQ(PlacesOf(&factory::IDatabaseFactory::CreateDatabase, &factory::IDatabaseFactory::CreateQuery),
              FirstPlaces(2));
}

TEST(VirtualOrder, OfTheDatabaseHasTwoOperationsAheadOfTheBracket)
{
    EXPECT_EQ(PlacesOf(&IQSqlDatabaseWrapper::isOpen,
                       &IQSqlDatabaseWrapper::lastError,
                       &IQSqlDatabaseWrapper::transaction,
                       &IQSqlDatabaseWrapper::commit,
                       &IQSqlDatabaseWrapper::rollback),
              FirstPlaces(5));
}

TEST(VirtualOrder, OfTheQueryHasTwoOperationsBehindExec)
{
    EXPECT_EQ(PlacesOf(&IQSqlQueryWrapper::value,
                       &IQSqlQueryWrapper::next,
                       &IQSqlQueryWrapper::isValid,
                       &IQSqlQueryWrapper::prepare,
                       &IQSqlQueryWrapper::bindValue,
                       &IQSqlQueryWrapper::exec,
                       &IQSqlQueryWrapper::lastError,
                       &IQSqlQueryWrapper::finish,
                       &IQSqlQueryWrapper::lastInsertId,
                       &IQSqlQueryWrapper::numRowsAffected),
              FirstPlaces(10));
}

TEST(VirtualOrder, OfTheRefreshObject)
{
    EXPECT_EQ(PlacesOf(&IRefreshNativeFileViewer::Refresh), FirstPlaces(1));
}

TEST(VirtualOrder, OfTheServers)
{
    EXPECT_EQ(PlacesOf(&IServerConfigManager::GetServerConfigById,
                       &IServerConfigManager::GetServerConfigByServers,
                       &IServerConfigManager::GetAll,
                       &IServerConfigManager::Update,
                       &IServerConfigManager::Add,
                       &IServerConfigManager::Remove,
                       &IServerConfigManager::GetServerConfigByAuthenticationId,
                       &IServerConfigManager::GetServerConfigByFolderId,
                       &IServerConfigManager::GetServerConfigByFileId,
                       &IServerConfigManager::GetDefaultServerConfig),
              FirstPlaces(10));
}

TEST(VirtualOrder, OfTheAccounts)
{
    EXPECT_EQ(PlacesOf(&IAuthenticationConfigManager::GetAuthenticationConfigurationByDomainAndUser,
                       &IAuthenticationConfigManager::GetAuthenticationConfigurationById,
                       &IAuthenticationConfigManager::GetAll,
                       &IAuthenticationConfigManager::Update,
                       &IAuthenticationConfigManager::Add,
                       &IAuthenticationConfigManager::Remove,
                       &IAuthenticationConfigManager::GetDistinctAuthenticationConfigurations,
                       &IAuthenticationConfigManager::UpdatePassword),
              FirstPlaces(8));
}

TEST(VirtualOrder, OfTheProducts)
{
    EXPECT_EQ(PlacesOf(&IProductConfigManager::GetProductConfigurationById,
                       &IProductConfigManager::GetProductConfigurationByServerIdAndConsumerKey,
                       &IProductConfigManager::GetAll,
                       &IProductConfigManager::Update,
                       &IProductConfigManager::Add,
                       &IProductConfigManager::Remove),
              FirstPlaces(6));
}

TEST(VirtualOrder, OfTheSchedules)
{
    EXPECT_EQ(PlacesOf(&IScheduleEntryManager::GetScheduleEntryById,
                       &IScheduleEntryManager::GetDefaultScheduleEntry,
                       &IScheduleEntryManager::Update,
                       &IScheduleEntryManager::Remove),
              FirstPlaces(4));
}

TEST(VirtualOrder, OfTheFolders)
{
    EXPECT_EQ(PlacesOf(&IFolderConfigManager::GetFolderConfigurationById,
                       &IFolderConfigManager::GetFolderConfigurationByServerId,
                       &IFolderConfigManager::GetFolderConfigurationByClientPath,
                       &IFolderConfigManager::GetFolderConfigurationByClientPathAndAuthenticationId,
                       &IFolderConfigManager::GetFolderConfigurationsByAuthenticationId,
                       &IFolderConfigManager::GetFolderConfigurationsByRootId,
                       &IFolderConfigManager::GetFolderConfigurationsOfNonExistingRootFolders,
                       &IFolderConfigManager::GetAll,
                       &IFolderConfigManager::Update,
                       &IFolderConfigManager::Add,
                       &IFolderConfigManager::AddFolderAndParent,
                       &IFolderConfigManager::Remove,
                       &IFolderConfigManager::RemoveFolderAndChildren,
                       &IFolderConfigManager::IsInExistingClientFolder,
                       &IFolderConfigManager::AncestorOrDescendantOfServerFolderExists,
                       &IFolderConfigManager::GetAllRootFolders,
                       &IFolderConfigManager::GetFolderConfigurationByParentId,
                       &IFolderConfigManager::IsInExistingAuthentication,
                       &IFolderConfigManager::IsAnyFolderConfigOutOfSync,
                       &IFolderConfigManager::GetRootFolderConfigurationCount,
                       &IFolderConfigManager::ClearCaches,
                       &IFolderConfigManager::CleanRootFolder,
                       qOverload<QString&>(&IFolderConfigManager::RefreshNativeFileViewer),
                       qOverload<>(&IFolderConfigManager::RefreshNativeFileViewer)),
              FirstPlaces(24));
}

TEST(VirtualOrder, OfTheFiles)
{
    using sync::config::FileConfigurationType;
    EXPECT_EQ(PlacesOf(&IFileConfigManager::GetFileConfigurationById,
                       &IFileConfigManager::GetFileConfigurationByServerId,
                       &IFileConfigManager::GetBaseFileConfigurationById,
                       &IFileConfigManager::GetGeneratedFileConfigurationById,
                       &IFileConfigManager::GetFileConfigurationByClientPath,
                       &IFileConfigManager::GetAllFileConfigurationsByClientPath,
                       &IFileConfigManager::GetFileConfigurationsOfNonExistingRootFolders,
                       &IFileConfigManager::GetGeneratedFileConfigurationByClientPath,
                       &IFileConfigManager::GetFileConfigurationByClientPathAndAuthenticationId,
                       &IFileConfigManager::GetFileConfigurationByServerPathAndAuthenticationId,
                       &IFileConfigManager::GetFileConfigurationsByFolderId,
                       qOverload<int, FileConfigurationType>(&IFileConfigManager::GetFileConfigurationsByRootFolderId),
                       qOverload<int, FileConfigOrderByEnum>(&IFileConfigManager::GetFileConfigurationsByRootFolderId),
                       &IFileConfigManager::GetFileConfigurationsWithSyncOption,
                       &IFileConfigManager::GetGeneratedFileConfigurationsByRootFolderId,
                       &IFileConfigManager::GetFileConfigurationsByFolderIdAndSyncStatus,
                       &IFileConfigManager::GetGeneratedFileConfigurationsByParentFileId,
                       qOverload<FileConfigurationType>(&IFileConfigManager::GetAll),
                       qOverload<>(&IFileConfigManager::GetAll),
                       &IFileConfigManager::Update,
                       &IFileConfigManager::Add,
                       &IFileConfigManager::RemoveFileConfigurationAndLinkedConfigurations,
                       &IFileConfigManager::RemoveBaseFileConfiguration,
                       &IFileConfigManager::RemoveGeneratedFileConfiguration,
                       &IFileConfigManager::RemoveByFolderConfigurationId,
                       &IFileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderId,
                       &IFileConfigManager::RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus,
                       &IFileConfigManager::UpdateSyncStatusFromSyncingToNotSynced,
                       &IFileConfigManager::GetBaseFileConfigurationByParentFileId,
                       &IFileConfigManager::GetFileConfiguration,
                       &IFileConfigManager::transaction,
                       &IFileConfigManager::commit,
                       &IFileConfigManager::rollback),
              FirstPlaces(33));
}

TEST(VirtualOrder, OfTheManagersBaseIsDestructorThenReadingThenWriting)
{
    std::ptrdiff_t const destructors = 2; // that of an object and that of one on the heap
    EXPECT_EQ(PlaceOf(&DatabaseConfigurationManager::ToNameValuePropertyMap), destructors);
    EXPECT_EQ(PlaceOf(&DatabaseConfigurationManager::ToNameValuePropertyString), destructors + 1);
}

TEST(VirtualOrder, OfTheFileManagersOwnOperationIsDirectlyBehindThoseOfItsBase)
{
    using sync::config::FileConfigManager;
    EXPECT_EQ(PlaceOf(&FileConfigManager::RemoveByRootFolderId),
              PlaceOf(&DatabaseConfigurationManager::ToNameValuePropertyString) + 1);
}

#endif

} // namespace
