#include "tools/viewer/FolderTable.h"

#include "ViewerFixture.h"
#include "models/FolderTreeModel.h"
#include "support/ModelTester.h"
#include "support/Queries.h"

#include <QSignalSpy>

namespace {

using namespace tandry::test;
using sync::models::FolderTreeModel;
using tandry::viewer::FolderTable;

class AFolderTable : public ViewerFixture
{
protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        folders = std::make_unique<FolderTreeModel>(store);
        table = std::make_unique<FolderTable>(*folders);
        table->fetchMore({});
        table->fetchMore(table->index(0, 0));
    }

    std::unique_ptr<FolderTreeModel> folders;
    std::unique_ptr<FolderTable> table;
};

TEST_F(AFolderTable, ShowsNamesAndStatuses)
{
    EXPECT_EQ(table->headerData(0, Qt::Horizontal), "Folder"_q);
    EXPECT_EQ(table->headerData(1, Qt::Horizontal), "Status"_q);
    EXPECT_EQ(TextsOf(*table, FolderTable::Name), (QStringList{"docs"_q, "empty"_q}));
    EXPECT_EQ(TextsOf(*table, FolderTable::Status), (QStringList{"Placed"_q, "Placed"_q}));
    QModelIndex const index = table->index(0, FolderTable::Status, table->index(0, 0));
    EXPECT_EQ(index.data(), "Out of sync"_q);
    EXPECT_EQ(index.siblingAtColumn(0).data(), "letters"_q);
    EXPECT_EQ(index.parent(), table->index(0, 0));
}

TEST_F(AFolderTable, KnowsFoldersAndRoots)
{
    QModelIndex const index = table->IndexOf(letters);
    EXPECT_EQ(index, table->index(0, 0, table->index(0, 0)));
    EXPECT_EQ(table->FolderId(index), letters);
    EXPECT_EQ(table->FolderId(index.siblingAtColumn(1)), letters);
    EXPECT_EQ(table->RootId(index), docs);
    EXPECT_EQ(table->RootId(index.siblingAtColumn(1)), docs);
    EXPECT_EQ(table->FolderId({}), 0);
    EXPECT_EQ(table->RootId({}), 0);
}

TEST_F(AFolderTable, TellsOfAChangedStatusInBothColumns)
{
    QSignalSpy const changed(table.get(), &FolderTable::dataChanged);
    ASSERT_TRUE(Execute(*store, "UPDATE FolderConfiguration SET syncStatus = 1 WHERE id = :id"_q, {{":id", letters}}));
    ASSERT_TRUE(folders->Refresh());
    QModelIndex const index = table->IndexOf(letters);
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed.at(0).at(0).toModelIndex(), index);
    EXPECT_EQ(changed.at(1).at(0).toModelIndex(), index.siblingAtColumn(1));
}

TEST_F(AFolderTable, IsAModelUnderChanges)
{
    ModelTester const tester(table.get());
    int const added = AddFolder("/p/docs/added"_q, docs, 1);
    ASSERT_TRUE(folders->Refresh());
    EXPECT_EQ(table->rowCount(table->IndexOf(docs)), 2);
    ASSERT_TRUE(Execute(*store, "DELETE FROM FolderConfiguration WHERE id = :id"_q, {{":id", added}}));
    ASSERT_TRUE(folders->Refresh());
    EXPECT_EQ(table->rowCount(table->IndexOf(docs)), 1);
    EXPECT_EQ(table->rowCount(table->IndexOf(docs).siblingAtColumn(1)), 0);
}

} // namespace
