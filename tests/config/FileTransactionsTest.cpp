#include "database/TransactionalScope.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/FileStoreFixture.h"

#include <algorithm>
#include <thread>

#include <malloc.h>

namespace {

using namespace sync::config;
using namespace tandry::test;
using sync::database::TransactionalScope;
using testing::IsEmpty;
using testing::SizeIs;

class FileTransactions : public FileStoreFixture
{
protected:
    void AddFiles(int count, int rootId)
    {
        for (int i = 0; i < count; ++i)
            AddFile("/%1/%2"_q.arg(rootId).arg(i), rootId, rootId);
    }

    /// Rows that others see: what is committed.
    qlonglong Committed(char const* table = "FileConfiguration")
    {
        return RawStore(StorePath()).Count(QString::fromUtf8(table));
    }
};

TEST_F(FileTransactions, ManyAddsAreOneUnitThatOthersSeeAtTheCommit)
{
    ASSERT_TRUE(files->transaction());
    AddFiles(500, 1);
    EXPECT_THAT(files->GetAll(), SizeIs(500));
    EXPECT_EQ(Committed(), 0);
    EXPECT_TRUE(files->commit());
    EXPECT_EQ(Committed(), 500);
    Reopen();
    EXPECT_THAT(files->GetAll(), SizeIs(500));
}

TEST_F(FileTransactions, RollbackTakesEverythingBackAndLeavesWhatWasThere)
{
    FileConfiguration kept = AddFile("/kept"_q, 1, 1);
    ASSERT_TRUE(files->transaction());
    AddFiles(50, 1);
    kept.name = "changed"_q;
    EXPECT_TRUE(files->Update(kept));
    EXPECT_TRUE(files->RemoveByRootFolderId(1));
    EXPECT_THAT(files->GetAll(), IsEmpty());
    EXPECT_TRUE(files->rollback());
    ASSERT_THAT(files->GetAll(), SizeIs(1));
    EXPECT_EQ(files->GetFileConfigurationById(kept.id).name, "kept"_q);
    Reopen();
    EXPECT_THAT(files->GetAll(), SizeIs(1));
}

TEST_F(FileTransactions, RollbackTakesTheRowsAndFoldersOfLinksBack)
{
    FolderConfiguration const root = AddRoot(rootPath);
    MakeFile("root/a/target"_q);
    ASSERT_TRUE(files->transaction());
    FileConfiguration file;
    file.clientPath = rootPath + "/linking"_q;
    file.rootFolderId = root.getId();
    FileLink link;
    link.path = "a/target"_q;
    file.fileLinks = {link};
    EXPECT_TRUE(files->Add(file));
    EXPECT_THAT(files->GetAll(), SizeIs(2));
    EXPECT_TRUE(files->rollback());
    EXPECT_EQ(Committed(), 0);
    EXPECT_EQ(Committed("FolderConfiguration"), 1);
}

TEST_F(FileTransactions, ScopesOfTheClientInsideATransactionEndNothing)
{
    ASSERT_TRUE(files->transaction());
    {
        TransactionalScope outer;
        AddFiles(1, 1);
        {
            TransactionalScope const inner;
            AddFiles(1, 2);
        }
        EXPECT_TRUE(outer.commit());
        EXPECT_EQ(Committed(), 0);
    }
    EXPECT_EQ(Committed(), 0);
    AddFiles(1, 3);
    EXPECT_TRUE(files->rollback());
    EXPECT_THAT(files->GetAll(), IsEmpty());
    EXPECT_EQ(Committed(), 0);
}

TEST_F(FileTransactions, CleaningARootInsideNeitherEndsNorFailsTheTransaction)
{
    for (bool const kept : {true, false}) {
        int const root = AddRoot(rootPath).getId();
        AddFile("/in root"_q, root, root);
        ASSERT_TRUE(files->transaction());
        AddFile("/before"_q, 77, 77);
        EXPECT_TRUE(folders->CleanRootFolder(root));
        EXPECT_EQ(files->GetFileConfigurationByClientPath("/in root"_q).id, -1);
        EXPECT_EQ(Committed("FolderConfiguration"), 1); // not yet for others
        EXPECT_FALSE(files->transaction());             // the transaction is still open
        store->ClearError();
        AddFile("/after"_q, 77, 77);
        if (kept) {
            EXPECT_TRUE(files->commit());
            EXPECT_EQ(Committed("FolderConfiguration"), 0);
            EXPECT_EQ(Committed(), 2);
            EXPECT_TRUE(files->RemoveByRootFolderId(77));
        }
        else {
            EXPECT_TRUE(files->rollback());
            EXPECT_EQ(Committed("FolderConfiguration"), 1);
            EXPECT_EQ(Committed(), 1);
            EXPECT_GT(files->GetFileConfigurationByClientPath("/in root"_q).id, 0);
        }
    }
}

TEST_F(FileTransactions, AFailedOperationInsideUndoesNothingAndEndsNothing)
{
    ASSERT_TRUE(files->transaction());
    AddFiles(2, 1);
    FileConfiguration file;
    file.clientPath = "/file"_q;
    file.name = QString(QChar(0xD800)); // no text
    EXPECT_FALSE(files->Add(file));
    store->ClearError();
    AddFiles(1, 2);
    EXPECT_TRUE(files->commit());
    EXPECT_EQ(Committed(), 3);
}

TEST_F(FileTransactions, WithoutAnOpenTransactionNothingCanBeCommittedOrRolledBack)
{
    EXPECT_FALSE(files->commit());
    EXPECT_FALSE(files->rollback());
    ASSERT_TRUE(files->transaction());
    EXPECT_TRUE(files->commit());
    EXPECT_FALSE(files->commit());
    EXPECT_FALSE(files->rollback());
    store->ClearError();
}

TEST_F(FileTransactions, AnotherThreadNeitherSeesNorEndsTheTransaction)
{
    ASSERT_TRUE(files->transaction());
    AddFiles(3, 1);
    std::thread([this] {
        EXPECT_THAT(files->GetAll(), IsEmpty());
        EXPECT_FALSE(files->commit());
        EXPECT_FALSE(files->rollback());
    }).join();
    AddFiles(1, 2);
    EXPECT_TRUE(files->commit());
    EXPECT_EQ(Committed(), 4);
}

TEST_F(FileTransactions, OnTwoThreadsOneRollsBackAndTheOtherCommits)
{
    ASSERT_TRUE(files->transaction());
    AddFiles(20, 1);
    std::thread other([this] { // waits for the lock while the first transaction is open
        ASSERT_TRUE(files->transaction());
        AddFiles(30, 2);
        EXPECT_THAT(files->GetAll(), SizeIs(30));
        EXPECT_TRUE(files->commit());
    });
    AddFiles(10, 3);
    EXPECT_THAT(files->GetAll(), SizeIs(30));
    EXPECT_TRUE(files->rollback());
    other.join();
    EXPECT_EQ(Committed(), 30);
    EXPECT_THAT(files->GetFileConfigurationsByRootFolderId(2, FileConfigurationTypeFile), SizeIs(30));
}

TEST_F(FileTransactions, ATransactionThatItsThreadLeavesOpenIsRolledBack)
{
    std::thread([this] {
        ASSERT_TRUE(files->transaction());
        AddFiles(3, 1);
    }).join();
    EXPECT_THAT(files->GetAll(), IsEmpty());
    AddFiles(1, 2); // no lock was left behind
    EXPECT_EQ(Committed(), 1);
}

TEST_F(FileTransactions, OneManagerServesThreadsThatReadAndWriteAtOnce)
{
    constexpr int Threads = 4;
    constexpr int Files = 25;
    std::vector<std::thread> threads;
    for (int i = 1; i <= Threads; ++i)
        threads.emplace_back([this, i] {
            for (int file = 0; file < Files; ++file) {
                FileConfiguration const added = AddFile("/%1/%2"_q.arg(i).arg(file), i, i);
                EXPECT_EQ(files->GetFileConfigurationById(added.id).clientPath, added.clientPath);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Committed(), Threads * Files);
    for (int i = 1; i <= Threads; ++i)
        EXPECT_THAT(files->GetFileConfigurationsByRootFolderId(i, FileConfigurationTypeFile), SizeIs(Files));
}

// Memory.

/// Bytes that the process has taken from its heap.
std::size_t HeapInUse()
{
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

TEST_F(FileTransactions, AListingTakesNoMemoryForTheRowsThatItHasWalked)
{
    if (!StoreIsFile)
        GTEST_SKIP() << "the server sends all rows at once";
    constexpr int Rows = 20'000;
    constexpr int RowBytes = 2'000;
    std::size_t const before = HeapInUse();
    {
        auto const ballast = std::make_unique<char[]>(1'000'000);
        ballast[0] = 'x';
        if (HeapInUse() < before + 1'000'000)
            GTEST_SKIP() << "the heap can't be measured here";
    }

    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
             "INSERT INTO FileConfiguration (rootFolderId, checkSum) SELECT 1, printf('%.*c', %2, 'x') FROM n"_q
                 .arg(Rows)
                 .arg(RowBytes));

    auto const query = store->CreateQuery();
    ASSERT_TRUE(query->prepare("SELECT id, checkSum FROM FileConfiguration WHERE rootFolderId = :rootFolderId"_q));
    query->bindValue(":rootFolderId"_q, 1);
    ASSERT_TRUE(query->exec());
    std::size_t most = HeapInUse();
    std::size_t const atFirst = most;
    int rows = 0;
    while (query->next()) {
        EXPECT_EQ(query->value(1).toString().size(), RowBytes);
        if (++rows % 100 == 0)
            most = std::max(most, HeapInUse());
    }
    EXPECT_EQ(rows, Rows);
    // SQLite's page cache fills up to a fixed size; the rows together have forty megabytes.
    EXPECT_LT(most - atFirst, std::size_t{Rows} * RowBytes / 2);
}

} // namespace
