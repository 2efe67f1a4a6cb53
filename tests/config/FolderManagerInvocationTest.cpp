#include "support/FolderManagerFixture.h"

#include <QMetaObject>

#include <type_traits>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::SizeIs;

static_assert(std::is_base_of_v<sync::interf::IFolderConfigManager, FolderConfigManager>);
static_assert(std::is_base_of_v<DatabaseConfigurationManager, FolderConfigManager>);
static_assert(!std::is_default_constructible_v<FolderConfigManager>);
static_assert(!std::is_copy_constructible_v<FolderConfigManager>);

/// Calls by name go to the logged manager's overrides.
class FolderInvocationTest : public FolderEventsTest
{
protected:
    template <class... Arguments>
    bool Invoke(char const* method, Arguments... arguments)
    {
        return QMetaObject::invokeMethod(&logged, method, Qt::DirectConnection, arguments...);
    }

    void ExpectFirstEvent(char const* event) { EXPECT_EQ(events.Take().at(0), QString::fromUtf8(event)); }
};

using Record = sync::config::FolderConfiguration;

TEST_F(FolderInvocationTest, GetFolderConfigurationById)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Record found;
    EXPECT_TRUE(
        Invoke("GetFolderConfigurationById", Q_RETURN_ARG(sync::config::FolderConfiguration, found), Q_ARG(int, 7)));
    EXPECT_EQ(found.getId(), 7);
    ExpectFirstEvent("GetFolderConfigurationById 7 @0");
}

TEST_F(FolderInvocationTest, GetFolderConfigurationByClientPath)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Record found;
    EXPECT_TRUE(Invoke("GetFolderConfigurationByClientPath",
                       Q_RETURN_ARG(sync::config::FolderConfiguration, found),
                       Q_ARG(QString, "/r"_q)));
    EXPECT_EQ(found.getId(), 7);
    ExpectFirstEvent("GetFolderConfigurationByClientPath /r @0");
}

TEST_F(FolderInvocationTest, GetFolderConfigurationByClientPathAndAuthenticationId)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Record found;
    EXPECT_TRUE(Invoke("GetFolderConfigurationByClientPathAndAuthenticationId",
                       Q_RETURN_ARG(sync::config::FolderConfiguration, found),
                       Q_ARG(QString, "/r"_q),
                       Q_ARG(int, 3)));
    EXPECT_EQ(found.getId(), 7);
    ExpectFirstEvent("GetFolderConfigurationByClientPathAndAuthenticationId /r @0");
}

TEST_F(FolderInvocationTest, GetAll)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Folders found;
    EXPECT_TRUE(Invoke("GetAll", Q_RETURN_ARG(QVector<sync::config::FolderConfiguration>, found)));
    EXPECT_THAT(found, SizeIs(1));
    ExpectFirstEvent("GetAll @0");
}

TEST_F(FolderInvocationTest, Update)
{
    Record const folder = Folder("/r"_q);
    bool done = false;
    EXPECT_TRUE(Invoke("Update", Q_RETURN_ARG(bool, done), Q_ARG(sync::config::FolderConfiguration, folder)));
    EXPECT_TRUE(done);
    ExpectFirstEvent("Update /r @0");
}

TEST_F(FolderInvocationTest, AddWritesTheIdIntoTheCallersRecord)
{
    Record folder = Folder("/r/a"_q, 5, 7);
    bool done = false;
    EXPECT_TRUE(Invoke("Add", Q_RETURN_ARG(bool, done), Q_ARG(sync::config::FolderConfiguration&, folder)));
    EXPECT_TRUE(done);
    EXPECT_EQ(folder.getId(), 1);
    ExpectFirstEvent("Add /r/a @0");
}

TEST_F(FolderInvocationTest, AddFolderAndParentByItsUnqualifiedType)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Record found;
    EXPECT_TRUE(Invoke("AddFolderAndParent",
                       Q_RETURN_ARG(FolderConfiguration, found),
                       Q_ARG(QString, "/r"_q),
                       Q_ARG(FolderConfiguration, Record())));
    EXPECT_EQ(found.getId(), 7);
    ExpectFirstEvent("AddFolderAndParent /r @0");
}

TEST_F(FolderInvocationTest, AddFolderAndParentIsNotFoundByTheQualifiedType)
{
    Record found;
    EXPECT_FALSE(Invoke("AddFolderAndParent",
                        Q_RETURN_ARG(FolderConfiguration, found),
                        Q_ARG(QString, "/r"_q),
                        Q_ARG(sync::config::FolderConfiguration, Record())));
    EXPECT_TRUE(events.Take().empty());
}

TEST_F(FolderInvocationTest, Remove)
{
    bool done = false;
    EXPECT_TRUE(Invoke("Remove", Q_RETURN_ARG(bool, done), Q_ARG(int, 7)));
    EXPECT_TRUE(done);
    ExpectFirstEvent("Remove 7 @0");
}

TEST_F(FolderInvocationTest, RemoveFolderAndChildren)
{
    bool done = false;
    EXPECT_TRUE(Invoke("RemoveFolderAndChildren", Q_RETURN_ARG(bool, done), Q_ARG(int, 7)));
    EXPECT_TRUE(done);
    ExpectFirstEvent("RemoveFolderAndChildren 7 @0");
}

TEST_F(FolderInvocationTest, AncestorOrDescendantOfServerFolderExistsGivesTheRootsPathBack)
{
    Record root = Folder("/r"_q);
    root.setServerPath("/T"_q);
    root.setAuthenticationId(3);
    PlayFolders({{7, root}});
    bool overlaps = false;
    QString matching;
    EXPECT_TRUE(Invoke("AncestorOrDescendantOfServerFolderExists",
                       Q_RETURN_ARG(bool, overlaps),
                       Q_ARG(QString, "/t/a"_q),
                       Q_ARG(int, 3),
                       Q_ARG(QString&, matching)));
    EXPECT_TRUE(overlaps);
    EXPECT_EQ(matching, "/T"_q);
    ExpectFirstEvent("AncestorOrDescendantOfServerFolderExists /t/a @0");
}

TEST_F(FolderInvocationTest, GetAllRootFolders)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Folders found;
    EXPECT_TRUE(Invoke("GetAllRootFolders", Q_RETURN_ARG(QVector<sync::config::FolderConfiguration>, found)));
    EXPECT_THAT(found, SizeIs(1));
    ExpectFirstEvent("GetAllRootFolders @0");
}

TEST_F(FolderInvocationTest, GetFolderConfigurationByParentId)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Folders found;
    EXPECT_TRUE(Invoke("GetFolderConfigurationByParentId",
                       Q_RETURN_ARG(QVector<sync::config::FolderConfiguration>, found),
                       Q_ARG(int, 5)));
    EXPECT_THAT(found, SizeIs(1));
    ExpectFirstEvent("GetFolderConfigurationByParentId 5 @0");
}

TEST_F(FolderInvocationTest, GetFolderConfigurationsByRootId)
{
    PlayFolders({{7, Folder("/r"_q)}});
    Folders found;
    EXPECT_TRUE(Invoke("GetFolderConfigurationsByRootId",
                       Q_RETURN_ARG(QVector<sync::config::FolderConfiguration>, found),
                       Q_ARG(int, 5)));
    EXPECT_THAT(found, SizeIs(1));
    ExpectFirstEvent("GetFolderConfigurationsByRootId 5 @0");
}

TEST_F(FolderInvocationTest, IsInExistingAuthentication)
{
    store->PlayRows({{1}});
    bool is = false;
    EXPECT_TRUE(Invoke("IsInExistingAuthentication", Q_RETURN_ARG(bool, is), Q_ARG(int, 3)));
    EXPECT_TRUE(is);
    ExpectFirstEvent("IsInExistingAuthentication 3 @0");
}

TEST_F(FolderInvocationTest, IsAnyFolderConfigOutOfSync)
{
    store->PlayRows({{1}});
    bool is = false;
    EXPECT_TRUE(Invoke("IsAnyFolderConfigOutOfSync", Q_RETURN_ARG(bool, is)));
    EXPECT_TRUE(is);
    ExpectFirstEvent("IsAnyFolderConfigOutOfSync @0");
}

TEST_F(FolderInvocationTest, GetRootFolderConfigurationCount)
{
    store->PlayRows({{3}});
    int count = 0;
    EXPECT_TRUE(Invoke("GetRootFolderConfigurationCount", Q_RETURN_ARG(int, count)));
    EXPECT_EQ(count, 3);
    ExpectFirstEvent("GetRootFolderConfigurationCount @0");
}

TEST_F(FolderInvocationTest, ClearCaches)
{
    EXPECT_TRUE(Invoke("ClearCaches"));
    ExpectFirstEvent("ClearCaches @0");
}

TEST_F(FolderInvocationTest, CleanRootFolder)
{
    bool done = false;
    EXPECT_TRUE(Invoke("CleanRootFolder", Q_RETURN_ARG(bool, done), Q_ARG(int, 7)));
    EXPECT_TRUE(done);
    ExpectFirstEvent("CleanRootFolder 7 @0");
}

TEST_F(FolderInvocationTest, RefreshNativeFileViewer)
{
    EXPECT_TRUE(Invoke("RefreshNativeFileViewer"));
    ExpectFirstEvent("RefreshNativeFileViewer @0");
}

TEST_F(FolderInvocationTest, RefreshNativeFileViewerOfOnePath)
{
    QString path = "/r"_q;
    EXPECT_TRUE(Invoke("RefreshNativeFileViewer", Q_ARG(QString&, path)));
    ExpectFirstEvent("RefreshNativeFileViewer /r @0");
}

} // namespace
