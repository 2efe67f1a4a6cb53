#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/Managers.h"
#include "config/ServerConfiguration.h"
#include "database/TransactionalScope.h"
#include "postgres/support/CuttingProxy.h"
#include "postgres/support/StoreFixture.h"
#include "support/FolderContents.h"

#include <string>

namespace round_trips_test {
namespace {

using namespace sync::config;
using namespace tandry::test;

/// Something that a client does, on records that nothing has changed before in the same round.
struct Operation
{
    char const* name;
    int statements;
    bool writes;
    void (*run)(Managers& managers, int round);

    /// A scope begins with the first statement that writes, in the same round trip, and is committed at its end.
    int roundTrips() const { return statements + (writes ? 1 : 0); }
};

constexpr int Rounds = 2;

FolderConfiguration Folder(int parentId, int rootId, QString const& path)
{
    FolderConfiguration folder;
    folder.setParentId(parentId);
    folder.setRootId(rootId);
    folder.setAuthenticationId(1);
    folder.setClientPath(path);
    return folder;
}

FileConfiguration File(int folderId, QString const& path)
{
    FileConfiguration file;
    file.folderConfigurationId = folderId;
    file.rootFolderId = 1;
    file.clientPath = path;
    return file;
}

QString Path(char const* beginning, int number)
{
    return QString::fromUtf8(beginning) + QString::number(number);
}

void AddFile(Managers& managers, QString const& path)
{
    FileConfiguration file = File(1, path);
    EXPECT_TRUE(managers.files->Add(file));
}

/// For each round a root, a folder below it, and a file; their ids are the round's number, that of the lower folders
/// comes behind the roots'.
void Fill(Managers& managers)
{
    for (int round = 1; round <= Rounds; ++round) {
        FolderConfiguration root = Folder(0, -1, Path("/tree", round));
        EXPECT_TRUE(managers.folders->Add(root));
        EXPECT_EQ(root.getId(), round);
        AddFile(managers, Path("/tree1/file", round));
    }
    for (int round = 1; round <= Rounds; ++round) {
        FolderConfiguration folder = Folder(round, round, Path("/tree/folder", round));
        EXPECT_TRUE(managers.folders->Add(folder));
        EXPECT_EQ(folder.getId(), Rounds + round);
    }
}

/// In this order: removals come last.
constexpr Operation Operations[] = {
    {"look-up of a file by path",
     1,
     false,
     [](Managers& m, int round) {
         EXPECT_EQ(m.files->GetFileConfigurationByClientPath(Path("/tree1/file", round)).id, round);
     }},
    {"look-up of a file by path and account",
     2,
     false,
     [](Managers& m, int round) {
         EXPECT_EQ(m.files->GetFileConfigurationByClientPathAndAuthenticationId(Path("/tree1/file", round), 1).id,
                   round);
     }},
    {"look-up of a folder by id",
     1,
     false,
     [](Managers& m, int round) { EXPECT_EQ(m.folders->GetFolderConfigurationById(round).getId(), round); }},
    {"look-up of a file's server",
     1,
     false,
     [](Managers& m, int round) { EXPECT_EQ(m.servers->GetServerConfigByFileId(round).getId(), -1); }},
    {"listing of a folder's files, however many",
     1,
     false,
     [](Managers& m, int) {
         EXPECT_EQ(m.files->GetFileConfigurationsByFolderId(1, sync::interf::FileConfigOrderByName).size(), Rounds);
     }},
    {"update of a file",
     1,
     true,
     [](Managers& m, int round) {
         FileConfiguration file = File(1, Path("/tree1/file", round));
         file.id = round;
         EXPECT_TRUE(m.files->Update(file));
     }},
    {"addition of a file", 2, true, [](Managers& m, int round) { AddFile(m, Path("/added", round)); }},
    {"addition of 100 files in one scope",
     200,
     true,
     [](Managers& m, int round) {
         sync::database::TransactionalScope const scope;
         for (int number = 0; number < 100; ++number)
             AddFile(m, Path("/many", round) + QString::number(number));
     }},
    {"addition of a folder",
     1,
     true,
     [](Managers& m, int round) {
         FolderConfiguration folder = Folder(1, 1, Path("/tree1/added", round));
         EXPECT_TRUE(m.folders->Add(folder));
     }},
    {"addition of a root folder",
     2,
     true,
     [](Managers& m, int round) {
         FolderConfiguration root = Folder(0, -1, Path("/added", round));
         EXPECT_TRUE(m.folders->Add(root));
     }},
    {"reset of the status of a folder's files",
     1,
     true,
     [](Managers& m, int) { EXPECT_TRUE(m.files->UpdateSyncStatusFromSyncingToNotSynced(1)); }},
    {"removal of a file",
     3,
     true,
     [](Managers& m, int round) { EXPECT_TRUE(m.files->RemoveFileConfigurationAndLinkedConfigurations(round)); }},
    {"removal of a folder", 2, true, [](Managers& m, int round) { EXPECT_TRUE(m.folders->Remove(Rounds + round)); }},
    {"removal of a root with all below it",
     5,
     true,
     [](Managers& m, int round) { EXPECT_TRUE(m.folders->CleanRootFolder(round)); }},
};

class RoundTrips : public StoreFixture
{};

TEST_F(RoundTrips, AreOneForEachStatementAndOneForAScope)
{
    CuttingProxy const proxy;
    QString error;
    store.reset();
    store = sync::database::PostgresDatabaseFactory::Open(proxy.Uri(profile()), &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    Managers managers(store);
    Fill(managers);
    for (Operation const& operation : Operations) {
        SCOPED_TRACE(operation.name);
        operation.run(managers, 1); // prepares the statements
        int const before = proxy.requests();
        operation.run(managers, 2);
        EXPECT_EQ(proxy.requests() - before, operation.roundTrips());
    }
}

/// The table in the documentation, with what each operation takes at least at three latencies.
TEST(RoundTripsInTheManual, AreThoseThatAreCounted)
{
    QString const page = QString::fromUtf8(ReadFile(QStringLiteral(TANDRY_POSTGRES_PAGE)));
    for (Operation const& operation : Operations) {
        QString row = QStringLiteral("| %1 | %2 |").arg(QString::fromUtf8(operation.name)).arg(operation.roundTrips());
        for (int const latency : {1, 10, 40})
            row += QStringLiteral(" %1 |").arg(operation.roundTrips() * latency);
        EXPECT_TRUE(page.contains(row + QLatin1Char('\n'))) << row.toStdString();
    }
}

} // namespace
} // namespace round_trips_test
