#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"

#include <sqlite3.h>

namespace {

using namespace tandry::test;

/// The place of the store gets full, at each point in turn.
class ManagerFullDisk : public ManagerScriptFixture
{
protected:
    /// Between two limits. What goes to the disk goes in pages of four times as much.
    static constexpr qint64 Step = 1024;
    static constexpr qint64 Page = 4096;
    static constexpr qint64 Plenty = 1 << 20;
    static constexpr int ProbedProduct = 2;

    /// What the reading operations find.
    QStringList Answers()
    {
        Managers managers(store);
        QStringList answers;
        for (ReadingOperation const& operation : Own(ReadingOperations()))
            answers.append(operation.run(managers));
        return answers;
    }

    void ExpectTold()
    {
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_FULL);
        EXPECT_TRUE(store->LastError()->text.contains("no space is left in "_q + folder.path()))
            << store->LastError()->text.toStdString();
        store->ClearError();
    }

    FaultyFiles files;
};

TANDRY_FOR_EACH_MANAGER(ManagerFullDisk);

TEST_P(ManagerFullDisk, LeavesTheLastStateReadableAndIsWrittenAgainOnceThereIsRoom)
{
    StoreRows const before = RowsBefore();
    OpenStore();
    QStringList const answersBefore = Answers();
    for (WritingOperation const& operation : Own(WritingOperations())) {
        StoreRows const after = RowsAfter(operation);
        bool hit = true;
        qint64 room = 0;
        for (; hit; room += Step) {
            SCOPED_TRACE(std::string(operation.name) + ", room " + std::to_string(room));
            PutStore();
            OpenStore();
            ASSERT_NE(store, nullptr) << refusal.toStdString();
            StoreRows seen;
            {
                Managers managers(store);
                files.SetRoom(room);
                bool const answer = operation.run(managers, *store);
                Outcome const outcome{answer, store->LastError().has_value(), told > 0};
                if (!outcome.promised() || outcome.hasError)
                    ExpectTold();
                seen = RowsOf(*store);
                EXPECT_TRUE(Agrees(operation, outcome, before, after, seen));
                if (seen == before) {
                    EXPECT_EQ(Answers(), answersBefore);
                }
                EXPECT_FALSE(store->LastError()) << "reading needs no room";
                hit = files.Recover();
                EXPECT_TRUE(hit || (outcome.promised() && !outcome.hasError));

                files.SetRoom(Plenty);
                EXPECT_TRUE(managers.products->Remove(ProbedProduct));
                Probe();
                EXPECT_FALSE(files.Recover());
            }
            store.reset();
            seen.remove(QStringLiteral("ProductConfiguration %1").arg(ProbedProduct));
            StoreRows const found = RowsOnDisk(StorePath());
            EXPECT_EQ(found.size(), seen.size() + 1) << "the probe";
            EXPECT_TRUE(Same(seen, WithoutProbe(found), "seen while there was no room"));
        }
        EXPECT_TRUE(room > Step || after == before) << "the disk was never full under " << operation.name;
    }
}

TEST_P(ManagerFullDisk, KeepsWhatWasWrittenBeforeItFilledWhenTheStoreIsClosed)
{
    bool hit = true;
    qint64 room = 0;
    for (; hit; room += Page) {
        SCOPED_TRACE("room " + std::to_string(room));
        PutStore();
        OpenStore();
        ASSERT_NE(store, nullptr) << refusal.toStdString();
        files.SetRoom(room);
        StoreRows last = RowsOf(*store);
        {
            Managers managers(store);
            for (WritingOperation const& operation : Own(WritingOperations())) {
                bool const answer = operation.run(managers, *store);
                StoreRows const seen = RowsOf(*store);
                if (operation.failing == Failing::AllOrNothing && (!answer || told > 0)) {
                    EXPECT_TRUE(Same(last, seen, operation.name));
                }
                last = seen;
                told = 0;
                store->ClearError();
            }
        }
        store.reset(); // with no room for what the log holds either
        hit = files.Recover();
        EXPECT_TRUE(Same(last, RowsOnDisk(StorePath()), "seen last"));
    }
    EXPECT_GT(room, Page) << "the disk was never full";
}

} // namespace
