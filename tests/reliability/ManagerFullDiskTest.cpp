#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"

#include <sqlite3.h>

namespace {

using namespace tandry::test;

/// Runs the operations with every amount of free disk space from none on.
class ManagerFullDisk : public ManagerScriptFixture
{
protected:
    /// The difference between two amounts. SQLite writes pages of four times this size.
    static constexpr qint64 Step = 1024;
    static constexpr qint64 Page = 4096;
    static constexpr qint64 Plenty = 1 << 20;
    static constexpr int ProbedProduct = 2;

    /// Returns the results of the reading operations.
    QStringList Answers()
    {
        Managers managers(store);
        QStringList answers;
        for (ReadingOperation const& operation : OfThisInterface(ReadingOperations()))
            answers.append(operation.run(managers));
        return answers;
    }

    void ExpectFullDiskError()
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

TEST_P(ManagerFullDisk, KeepsTheLastStateReadableAndAcceptsWritesOnceThereIsSpace)
{
    RowTexts const before = RowsBefore();
    OpenStore();
    QStringList const answersBefore = Answers();
    for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
        RowTexts const after = RowsAfter(operation);
        bool hit = true;
        qint64 room = 0;
        for (; hit; room += Step) {
            SCOPED_TRACE(std::string(operation.name) + ", room " + std::to_string(room));
            ResetStore();
            OpenStore();
            ASSERT_NE(store, nullptr) << openError.toStdString();
            RowTexts seen;
            {
                Managers managers(store);
                files.SetRoom(room);
                bool const answer = operation.run(managers, *store);
                Outcome const outcome{answer, store->LastError().has_value(), commitFailures > 0, isOutcomeUnknown};
                if (!outcome.succeeded() || outcome.hasError)
                    ExpectFullDiskError();
                seen = RowsOf(*store);
                EXPECT_TRUE(MatchesOutcome(operation, outcome, before, after, seen));
                if (seen == before) {
                    EXPECT_EQ(Answers(), answersBefore);
                }
                EXPECT_FALSE(store->LastError()) << "reading needs no space";
                hit = files.Recover();
                EXPECT_TRUE(hit || (outcome.succeeded() && !outcome.hasError));

                files.SetRoom(Plenty);
                EXPECT_TRUE(managers.products->Remove(ProbedProduct));
                Probe();
                EXPECT_FALSE(files.Recover());
            }
            store.reset();
            seen.remove(QStringLiteral("ProductConfiguration %1").arg(ProbedProduct));
            RowTexts const found = RowsOnDisk(StorePath());
            EXPECT_EQ(found.size(), seen.size() + 1) << "the probe";
            EXPECT_TRUE(Same(seen, WithoutProbe(found), "seen on the full disk"));
        }
        EXPECT_TRUE(room > Step || after == before) << "the disk was never full under " << operation.name;
    }
}

TEST_P(ManagerFullDisk, KeepsEarlierWritesWhenTheStoreIsClosed)
{
    bool hit = true;
    qint64 room = 0;
    for (; hit; room += Page) {
        SCOPED_TRACE("room " + std::to_string(room));
        ResetStore();
        OpenStore();
        ASSERT_NE(store, nullptr) << openError.toStdString();
        files.SetRoom(room);
        RowTexts last = RowsOf(*store);
        {
            Managers managers(store);
            for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
                bool const answer = operation.run(managers, *store);
                RowTexts const seen = RowsOf(*store);
                if (operation.failing == Failing::AllOrNothing && (!answer || commitFailures > 0)) {
                    EXPECT_TRUE(Same(last, seen, operation.name));
                }
                last = seen;
                commitFailures = 0;
                store->ClearError();
            }
        }
        store.reset(); // without space to checkpoint the log
        hit = files.Recover();
        EXPECT_TRUE(Same(last, RowsOnDisk(StorePath()), "seen last"));
    }
    EXPECT_GT(room, Page) << "the disk was never full";
}

} // namespace
