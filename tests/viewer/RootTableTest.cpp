#include "tools/viewer/RootTable.h"

#include "support/FolderRecords.h"
#include "support/ModelTester.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace {

using namespace tandry::test;
using tandry::findings::DiskEntry;
using tandry::findings::RootStatus;
using tandry::findings::StoreStatus;
using tandry::viewer::RootTable;

RootStatus Root(int id, qint64 files, qint64 outOfSync)
{
    RootStatus root;
    root.root = StoredFolder(id, Folder("/p/%1"_q.arg(id)));
    root.folders = 1;
    root.files = files;
    root.outOfSync = outOfSync;
    return root;
}

StoreStatus Status(std::vector<RootStatus> const& roots)
{
    StoreStatus status;
    status.roots = roots;
    return status;
}

TEST(ARootTable, SaysHowMuchIsOutOfSync)
{
    RootTable table;
    RootStatus there = Root(7, 3, 1);
    there.onDisk = DiskEntry::Kind::Folder;
    there.bytes = 8;
    table.SetStatus(Status({there, Root(9, 0, 0)}));
    ASSERT_EQ(table.rowCount(), 2);
    auto const text = [&](int row, RootTable::Column column) { return table.index(row, column).data().toString(); };
    EXPECT_EQ(text(0, RootTable::Path), "/p/7"_q);
    EXPECT_EQ(text(0, RootTable::OutOfSync), "1 of 4 out of sync"_q);
    EXPECT_EQ(text(0, RootTable::FolderCount), "1"_q);
    EXPECT_EQ(text(0, RootTable::FileCount), "3"_q);
    EXPECT_EQ(text(0, RootTable::Size), "8 bytes"_q);
    EXPECT_EQ(text(0, RootTable::OnDisk), "There"_q);
    EXPECT_EQ(text(1, RootTable::OutOfSync), "Nothing out of sync"_q);
    EXPECT_EQ(text(1, RootTable::OnDisk), "Not there"_q);
    EXPECT_EQ(table.index(0, RootTable::OutOfSync).data(RootTable::InSyncRole), 0.75);
    EXPECT_EQ(table.index(1, RootTable::OutOfSync).data(RootTable::InSyncRole), 1.0);
    EXPECT_EQ(table.RootId(table.index(1, 0)), 9);
    EXPECT_EQ(table.outOfSync(), 1);
}

TEST(ARootTable, KeepsItsRowsWhileTheRootsAreTheSame)
{
    RootTable table;
    ModelTester const tester(&table);
    QSignalSpy const reset(&table, &RootTable::modelReset);
    QSignalSpy const changed(&table, &RootTable::dataChanged);
    table.SetStatus(Status({Root(7, 3, 1)}));
    EXPECT_EQ(reset.count(), 1);
    table.SetStatus(Status({Root(7, 4, 0)}));
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(table.index(0, RootTable::FileCount).data(), "4"_q);
    table.SetStatus(Status({Root(7, 4, 0), Root(8, 1, 0)}));
    EXPECT_EQ(reset.count(), 2);
    EXPECT_EQ(table.rowCount(), 2);
}

} // namespace
