#include "storesuite/Statements.h"
#include "support/QtPrinters.h"
#include "support/StatementList.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace tandry::storesuite;

// A store may support only the managers' statements, so the suite must use no others.
TEST(SuiteStatements, AreStatementsOfTheManagers)
{
    std::vector<QString> const listed = tandry::test::ListedStatements();
    for (QString const& statement : {statements::GetServers,
                                     statements::GetServerById,
                                     statements::GetServerByUrls,
                                     statements::GetServerByAccount,
                                     statements::AddServer,
                                     statements::UpdateServer,
                                     statements::RemoveServer,
                                     statements::AddAccount,
                                     statements::ClearPassword,
                                     statements::GetAccounts,
                                     statements::GetAccountNames,
                                     statements::GetProducts,
                                     statements::GetProductById,
                                     statements::AddProduct,
                                     statements::UpdateProduct,
                                     statements::GetFolders,
                                     statements::GetFolderById,
                                     statements::GetFolderByClientPath,
                                     statements::GetFoldersByParent,
                                     statements::GetRoots,
                                     statements::CountRoots,
                                     statements::CountOutOfSync,
                                     statements::AddFolder,
                                     statements::GetFiles.arg(statements::FileTables[0]),
                                     statements::GetFiles.arg(statements::FileTables[1]),
                                     statements::GetFiles.arg(statements::FileTables[2]),
                                     statements::AddFile.arg(statements::FileTables[0]),
                                     statements::AddFile.arg(statements::FileTables[1]),
                                     statements::AddFile.arg(statements::FileTables[2]),
                                     statements::EndSyncing,
                                     statements::GetDefaultSchedule,
                                     statements::GetScheduleById,
                                     statements::UpdateSchedule}) {
        EXPECT_NE(std::find(listed.begin(), listed.end(), statement), listed.end()) << statement.toStdString();
    }
}

} // namespace
