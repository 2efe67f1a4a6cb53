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

/// Clients are compiled against the order of the virtual functions, so none may be moved or inserted. GCC and Clang
/// store a virtual function's index in the pointer to it; the tests read it from there.
namespace {

using namespace sync::interf;
using sync::config::DatabaseConfigurationManager;

#if defined(__GNUC__)

template <class Operation>
std::ptrdiff_t IndexOf(Operation operation)
{
    struct
    {
        std::ptrdiff_t offset; // in bytes; the lowest bit of this or of `adjustment` marks a virtual function
        std::ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof representation == sizeof operation);
    std::memcpy(&representation, &operation, sizeof operation);
    EXPECT_EQ((representation.offset | representation.adjustment) & 1, 1) << "not virtual";
    return (representation.offset & ~std::ptrdiff_t(1)) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

class QObjectWithOneVirtual : public QObject
{
public:
    virtual void Virtual() {}
};

/// Indices in the virtual table, counted from the first behind QObject's own.
template <class... Operation>
std::vector<std::ptrdiff_t> IndicesOf(Operation... operations)
{
    std::ptrdiff_t const first = IndexOf(&QObjectWithOneVirtual::Virtual);
    return {IndexOf(operations) - first...};
}

std::vector<std::ptrdiff_t> FirstIndices(std::ptrdiff_t count)
{
    std::vector<std::ptrdiff_t> indices;
    for (std::ptrdiff_t index = 0; index < count; ++index)
        indices.push_back(index);
    return indices;
}

TEST(VirtualOrder, DatabaseFactoryKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&factory::IDatabaseFactory::CreateDatabase, &factory::IDatabaseFactory::CreateQuery),
              FirstIndices(2));
}

TEST(VirtualOrder, DatabaseKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IQSqlDatabaseWrapper::isOpen,
                        &IQSqlDatabaseWrapper::lastError,
                        &IQSqlDatabaseWrapper::transaction,
                        &IQSqlDatabaseWrapper::commit,
                        &IQSqlDatabaseWrapper::rollback),
              FirstIndices(5));
}

TEST(VirtualOrder, QueryKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IQSqlQueryWrapper::value,
                        &IQSqlQueryWrapper::next,
                        &IQSqlQueryWrapper::isValid,
                        &IQSqlQueryWrapper::prepare,
                        &IQSqlQueryWrapper::bindValue,
                        &IQSqlQueryWrapper::exec,
                        &IQSqlQueryWrapper::lastError,
                        &IQSqlQueryWrapper::finish,
                        &IQSqlQueryWrapper::lastInsertId,
                        &IQSqlQueryWrapper::numRowsAffected),
              FirstIndices(10));
}

TEST(VirtualOrder, RefreshObjectKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IRefreshNativeFileViewer::Refresh), FirstIndices(1));
}

TEST(VirtualOrder, ServerManagerKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IServerConfigManager::GetServerConfigById,
                        &IServerConfigManager::GetServerConfigByServers,
                        &IServerConfigManager::GetAll,
                        &IServerConfigManager::Update,
                        &IServerConfigManager::Add,
                        &IServerConfigManager::Remove,
                        &IServerConfigManager::GetServerConfigByAuthenticationId,
                        &IServerConfigManager::GetServerConfigByFolderId,
                        &IServerConfigManager::GetServerConfigByFileId,
                        &IServerConfigManager::GetDefaultServerConfig),
              FirstIndices(10));
}

TEST(VirtualOrder, AuthenticationManagerKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IAuthenticationConfigManager::GetAuthenticationConfigurationByDomainAndUser,
                        &IAuthenticationConfigManager::GetAuthenticationConfigurationById,
                        &IAuthenticationConfigManager::GetAll,
                        &IAuthenticationConfigManager::Update,
                        &IAuthenticationConfigManager::Add,
                        &IAuthenticationConfigManager::Remove,
                        &IAuthenticationConfigManager::GetDistinctAuthenticationConfigurations,
                        &IAuthenticationConfigManager::UpdatePassword),
              FirstIndices(8));
}

TEST(VirtualOrder, ProductManagerKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IProductConfigManager::GetProductConfigurationById,
                        &IProductConfigManager::GetProductConfigurationByServerIdAndConsumerKey,
                        &IProductConfigManager::GetAll,
                        &IProductConfigManager::Update,
                        &IProductConfigManager::Add,
                        &IProductConfigManager::Remove),
              FirstIndices(6));
}

TEST(VirtualOrder, ScheduleManagerKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IScheduleEntryManager::GetScheduleEntryById,
                        &IScheduleEntryManager::GetDefaultScheduleEntry,
                        &IScheduleEntryManager::Update,
                        &IScheduleEntryManager::Remove),
              FirstIndices(4));
}

TEST(VirtualOrder, FolderManagerKeepsItsOrder)
{
    EXPECT_EQ(IndicesOf(&IFolderConfigManager::GetFolderConfigurationById,
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
              FirstIndices(24));
}

TEST(VirtualOrder, FileManagerKeepsItsOrder)
{
    using sync::config::FileConfigurationType;
    EXPECT_EQ(IndicesOf(&IFileConfigManager::GetFileConfigurationById,
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
              FirstIndices(33));
}

TEST(VirtualOrder, ManagersBaseKeepsItsOrder)
{
    std::ptrdiff_t const destructors = 2; // the complete-object and the deleting destructor
    EXPECT_EQ(IndexOf(&DatabaseConfigurationManager::ToNameValuePropertyMap), destructors);
    EXPECT_EQ(IndexOf(&DatabaseConfigurationManager::ToNameValuePropertyString), destructors + 1);
}

TEST(VirtualOrder, FileManagersOwnFunctionFollowsThoseOfItsBase)
{
    using sync::config::FileConfigManager;
    EXPECT_EQ(IndexOf(&FileConfigManager::RemoveByRootFolderId),
              IndexOf(&DatabaseConfigurationManager::ToNameValuePropertyString) + 1);
}

#endif

} // namespace
