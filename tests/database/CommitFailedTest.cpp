#include "database/TransactionalScope.h"
#include "support/FaultyFiles.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QObject>

#include <stdexcept>
#include <vector>

namespace {

using namespace tandry::test;
using sync::database::StoreError;
using sync::database::StoreFactory;
using sync::database::TransactionalScope;

/// Slots of `CommitFailed` that do what a slot had better not do.
class CommitFailedSlot : public EachJournalMode
{
protected:
    void SetUp() override
    {
        EachJournalMode::SetUp();
        ReopenStore(); // through the faulty files
        // With a log that begins later, the disk would fail under the slot's statements already.
        ASSERT_TRUE(AddServer(*store, "before"_q));
    }

    void TearDown() override
    {
        store->ClearError();
        store.reset();
    }

    /// A scope whose commit fails, with all later ones.
    void LoseScopeOnAFailingDisk()
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "lost"_q));
        files.Fail(1, SQLITE_IOERR, {FileOperation::Sync}, true);
    }

    void ExpectThatTheStoreWorksOn()
    {
        files.Recover();
        store->ClearError();
        ASSERT_TRUE(AddServer(*store, "after"_q));
        ReopenStore();
        EXPECT_EQ(Column(*store, "SELECT alias FROM ServerConfiguration"_q),
                  (std::vector<QVariant>{"before"_q, "after"_q}));
    }

    FaultyFiles files;
};

TANDRY_IN_EACH_JOURNAL_MODE(CommitFailedSlot);

TEST_P(CommitFailedSlot, ThatWritesOnADiskThatKeepsFailingIsCalledOnceMoreForAllThatItLost)
{
    std::vector<StoreError> told;
    int depth = 0;
    QObject::connect(store.get(), &StoreFactory::CommitFailed, store.get(), [&](StoreError const& error) {
        told.push_back(error);
        EXPECT_EQ(++depth, 1) << "no call inside another";
        for (int write = 0; write < 3; ++write) {
            TransactionalScope const scope;
            EXPECT_TRUE(AddServer(*store, "from the slot"_q));
        }
        --depth;
    });
    LoseScopeOnAFailingDisk();
    ASSERT_EQ(told.size(), 2u);
    EXPECT_TRUE(told.at(1).text.contains("2 further"_q)) << told.at(1).text.toStdString();
    EXPECT_TRUE(store->LastError());
    ExpectThatTheStoreWorksOn();
}

TEST_P(CommitFailedSlot, ThatWritesLearnsFromCommitAndFromTheErrorThatItWasLost)
{
    int calls = 0;
    QObject::connect(store.get(), &StoreFactory::CommitFailed, store.get(), [&] {
        ++calls;
        store->ClearError();
        TransactionalScope scope;
        EXPECT_TRUE(AddServer(*store, "from the slot"_q));
        EXPECT_FALSE(scope.commit());
        EXPECT_TRUE(store->LastError());
    });
    LoseScopeOnAFailingDisk();
    EXPECT_EQ(calls, 2);
    ExpectThatTheStoreWorksOn();
}

TEST_P(CommitFailedSlot, ThatWritesIsCalledAgainForALaterScope)
{
    int calls = 0;
    QObject::connect(store.get(), &StoreFactory::CommitFailed, store.get(), [&] {
        ++calls;
        TransactionalScope const scope;
        EXPECT_TRUE(AddServer(*store, "from the slot"_q));
    });
    LoseScopeOnAFailingDisk();
    LoseScopeOnAFailingDisk();
    EXPECT_EQ(calls, 4);
    ExpectThatTheStoreWorksOn();
}

TEST_P(CommitFailedSlot, ThatThrowsEndsNothing)
{
    int calls = 0;
    QObject::connect(store.get(), &StoreFactory::CommitFailed, store.get(), [&] {
        ++calls;
        throw std::runtime_error("a slot's own");
    });
    LoseScopeOnAFailingDisk();
    LoseScopeOnAFailingDisk();
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(store->LastError());
    ExpectThatTheStoreWorksOn();
}

TEST_P(CommitFailedSlot, ThatThrowsDuringAStatementEndsNothing)
{
    int calls = 0;
    QObject::connect(store.get(), &StoreFactory::CommitFailed, store.get(), [&] {
        ++calls;
        throw 1;
    });
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "lost"_q));
        files.Fail(1, SQLITE_IOERR, {FileOperation::Read, FileOperation::Write}, true);
        // More than the cache holds, so that the statement meets the fault.
        EXPECT_FALSE(Execute(*store,
                             "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200000) "
                             "INSERT INTO ServerConfiguration (alias) SELECT hex(zeroblob(200)) FROM n"_q));
    }
    EXPECT_EQ(calls, 1);
    ExpectThatTheStoreWorksOn();
}

} // namespace
