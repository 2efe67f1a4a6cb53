#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/ChildProcess.h"
#include "support/CommitFailures.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"
#include "support/UnflushedWrites.h"

#include <sqlite3.h>

#include <QObject>

#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::database::TransactionalScope;

/// How a client writes.
enum class Way
{
    Statement,
    Scope,
    ClientTransaction,
};

constexpr Way Ways[] = {Way::Statement, Way::Scope, Way::ClientTransaction};

char const* NameOf(Way way)
{
    switch (way) {
    case Way::Statement:
        return "a statement by itself";
    case Way::Scope:
        return "a scope";
    case Way::ClientTransaction:
        return "a client transaction";
    }
    return "";
}

enum class Told
{
    Kept,
    Gone,
    Unknown,
};

/// The result that a client got for rows that it wrote in one transaction, and the rows that it saw later.
struct Outcome
{
    Told told = Told::Kept;
    int answered = 0; // rows
    bool hit = false;
    /// The number of rows that were there once a later write had returned true; -1 without such a write.
    int seenLater = -1;
};

/// A commit meets a fault. Once the client knows the outcome, the program is killed or the power goes, and the store is
/// opened again.
class CommitOutcome : public EachJournalMode
{
protected:
    enum class End
    {
        Kill,
        PowerCut,
    };

    struct Plan
    {
        int n = 1;
        bool forGood = false;
        End end = End::Kill;
        std::vector<FileOperation> operations = AllOperations;
        /// Called once the client knows the outcome and the fault has gone.
        std::function<void(SqliteDatabaseFactory&, Way, Outcome&)> afterwards;
        std::function<void()> watcher;
    };

    void SetUp() override
    {
        EachJournalMode::SetUp();
#if defined(__SANITIZE_ADDRESS__)
        GTEST_SKIP() << "thousands of forks take too long under the address sanitizer";
#endif
        ASSERT_TRUE(AddServer(*store, "before"_q));
        store.reset();
        _made = ReadFile(StorePath());
    }

    static int CountNew(SqliteDatabaseFactory& factory)
    {
        return Single(factory, "SELECT count(*) FROM ServerConfiguration WHERE alias = 'new'"_q).toInt();
    }

    static void NoteFailure(SqliteDatabaseFactory const& factory, Outcome& outcome)
    {
        std::optional<StoreError> const error = factory.LastError();
        outcome.told = error && error->kind == StoreErrorKind::OutcomeUnknown ? Told::Unknown : Told::Gone;
    }

    /// Writes two rows in one transaction.
    static Outcome Write(SqliteDatabaseFactory& factory, Way way)
    {
        Outcome outcome;
        auto const add = [&] { outcome.answered += AddServer(factory, "new"_q) ? 1 : 0; };
        switch (way) {
        case Way::Statement:
            if (Execute(factory, "INSERT INTO ServerConfiguration (alias) VALUES ('new'), ('new')"_q))
                outcome.answered = 2;
            else
                NoteFailure(factory, outcome);
            break;
        case Way::Scope: {
            auto const connection =
                QObject::connect(&factory, &SqliteDatabaseFactory::CommitFailed, [&](StoreError const& error) {
                    outcome.told = error.kind == StoreErrorKind::OutcomeUnknown ? Told::Unknown : Told::Gone;
                });
            {
                TransactionalScope const scope;
                add();
                add();
            }
            QObject::disconnect(connection);
            break;
        }
        case Way::ClientTransaction: {
            auto const database = factory.CreateDatabase();
            if (!database->transaction())
                break;
            add();
            add();
            if (!database->commit())
                NoteFailure(factory, outcome);
            break;
        }
        }
        return outcome;
    }

    /// Has a program write, with a fault at the nth operation of the transaction, and end without closing the store.
    Outcome WriteInProgram(Way way, Plan const& plan)
    {
        for (char const* suffix : {"-wal", "-shm", "-journal"})
            QFile::remove(StorePath() + QLatin1String(suffix));
        WriteFile(StorePath(), _made);
        Outcome outcome;
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> const told(std::tmpfile(), &std::fclose);
        auto const seed = static_cast<unsigned>(_random());
        int const status = InChildProcess([&] {
            UnflushedWrites writes;
            _files.Tell(&writes);
            auto const factory = SqliteDatabaseFactory::Open(StorePath());
            if (factory == nullptr || !AddServer(*factory, "first"_q))
                return 1;
            _files.Fail(plan.n, plan.watcher ? SQLITE_OK : SQLITE_IOERR, plan.operations, plan.forGood);
            if (plan.watcher)
                _files.WatchFailure(plan.watcher);
            Outcome written = Write(*factory, way);
            written.hit = _files.Recover();
            if (plan.afterwards)
                plan.afterwards(*factory, way, written);
            std::fwrite(&written, sizeof written, 1, told.get());
            std::fflush(told.get());
            _files.Tell(nullptr);
            if (plan.end == End::PowerCut) {
                std::mt19937 random(seed);
                writes.CutPower(random);
            }
            ::_exit(0); // with the store open, as a kill would
        });
        EXPECT_EQ(status, 0);
        std::rewind(told.get());
        EXPECT_EQ(std::fread(&outcome, sizeof outcome, 1, told.get()), 1u);
        return outcome;
    }

    int RowsOfNextProgram()
    {
        OpenStore();
        if (store == nullptr)
            return -1;
        EXPECT_EQ(Single(*store, "PRAGMA integrity_check"_q).toString(), "ok"_q);
        int const rows = CountNew(*store);
        EXPECT_GE(CountServers(*store) - rows, 2) << "written before";
        store.reset();
        return rows;
    }

    /// Goes over all operations of the transaction, as many times as asked for, until none is hit any more.
    void ForEachFault(Plan plan, int repetitions, std::function<void(Outcome const& outcome, int rows)> const& check)
    {
        for (Way const way : Ways) {
            bool hit = true;
            for (plan.n = 1; hit; ++plan.n) {
                for (int repetition = 0; repetition < repetitions; ++repetition) {
                    SCOPED_TRACE(std::string(NameOf(way)) + ", operation " + std::to_string(plan.n) + ", seed " +
                                 std::to_string(_seed));
                    Outcome const outcome = WriteInProgram(way, plan);
                    check(outcome, RowsOfNextProgram());
                    hit = outcome.hit;
                }
            }
            EXPECT_GT(plan.n, 8) << "operations";
        }
    }

    static void ExpectTrue(Outcome const& outcome, int rows)
    {
        if (outcome.told == Told::Kept) {
            EXPECT_EQ(rows, outcome.answered) << "told that they are kept";
        }
        if (outcome.told == Told::Gone) {
            EXPECT_EQ(rows, 0) << "told that they are gone";
        }
        EXPECT_TRUE(rows == 0 || rows == 2 || rows == outcome.answered) << rows << ": a transaction is whole";
    }

    /// The client tries again what it was told gone.
    static void WriteAgain(SqliteDatabaseFactory& factory, Way way, Outcome& outcome)
    {
        if (outcome.told == Told::Gone || outcome.answered == 0)
            outcome = {Write(factory, way).told, 2, outcome.hit, -1};
    }

    /// The client does what the documents advise when the outcome is unknown: once a write has succeeded, it looks.
    static void LookAfterALaterWrite(SqliteDatabaseFactory& factory, Way, Outcome& outcome)
    {
        if (AddServer(factory, "later"_q))
            outcome.seenLater = CountNew(factory);
    }

    FaultyFiles _files; // flushes nothing
    QByteArray _made;
    unsigned const _seed = std::random_device()();
    std::mt19937 _random{_seed};
};

TANDRY_IN_EACH_JOURNAL_MODE(CommitOutcome);

TEST_P(CommitOutcome, IsKnownAndTrueWhateverFailsOnce)
{
    for (End const end : {End::Kill, End::PowerCut}) {
        Plan plan;
        plan.end = end;
        ForEachFault(plan, end == End::Kill ? 1 : 2, [](Outcome const& outcome, int rows) {
            ExpectTrue(outcome, rows);
            EXPECT_NE(outcome.told, Told::Unknown) << "the fault has gone when the outcome is looked at";
        });
    }
}

TEST_P(CommitOutcome, IsTrueOrCalledUnknownWhateverFailsForGood)
{
    int unknown = 0;
    int told = 0;
    for (End const end : {End::Kill, End::PowerCut}) {
        Plan plan;
        plan.forGood = true;
        plan.end = end;
        ForEachFault(plan, end == End::Kill ? 1 : 2, [&](Outcome const& outcome, int rows) {
            ExpectTrue(outcome, rows);
            ++told;
            unknown += outcome.told == Told::Unknown ? 1 : 0;
        });
    }
    EXPECT_GT(unknown, 0);
    EXPECT_LT(unknown, told / 4) << "an answer where there can be one";
}

TEST_P(CommitOutcome, OfAWriteThatWasToldGoneAndIsRepeatedIsThereOnce)
{
    Plan plan;
    plan.afterwards = WriteAgain;
    ForEachFault(plan, 1, [](Outcome const& outcome, int rows) {
        EXPECT_EQ(outcome.told, Told::Kept);
        EXPECT_EQ(rows, outcome.answered);
    });
}

TEST_P(CommitOutcome, ThatIsUnknownIsSettledByTheNextWriteThatSucceeds)
{
    int unknown = 0;
    for (End const end : {End::Kill, End::PowerCut}) {
        Plan plan;
        plan.forGood = true;
        plan.end = end;
        plan.afterwards = LookAfterALaterWrite;
        ForEachFault(plan, end == End::Kill ? 1 : 2, [&](Outcome const& outcome, int rows) {
            EXPECT_EQ(outcome.seenLater, rows);
            unknown += outcome.told == Told::Unknown ? 1 : 0;
        });
    }
    EXPECT_GT(unknown, 0);
}

TEST_P(CommitOutcome, ThatIsUnknownIsToldWithAdvice)
{
    store = SqliteDatabaseFactory::Open(StorePath());
    ASSERT_NE(store, nullptr);
    CommitFailures const told(*store);
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "new"_q));
        _files.Fail(1, SQLITE_IOERR, {UsesLog() ? FileOperation::Sync : FileOperation::FlushFolder}, true);
    }
    ASSERT_TRUE(_files.Recover());
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told.front().kind, StoreErrorKind::OutcomeUnknown);
    EXPECT_TRUE(told.front().text.contains("not known"_q)) << told.front().text.toStdString();
    EXPECT_TRUE(told.front().text.contains("write has succeeded"_q)) << told.front().text.toStdString();
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->kind, StoreErrorKind::OutcomeUnknown);
    store->ClearError();
    store.reset();
}

class CommitOutcomeWithJournal : public CommitOutcome
{};

TANDRY_WITH_JOURNAL_ONLY(CommitOutcomeWithJournal);

TEST_P(CommitOutcomeWithJournal, IsTrueWhenAnotherProgramDeletesTheJournalFirst)
{
    Plan plan;
    plan.operations = {FileOperation::Delete};
    plan.watcher = [this] { QFile::remove(StorePath() + "-journal"_q); };
    for (Way const way : Ways) {
        Outcome const outcome = WriteInProgram(way, plan);
        EXPECT_TRUE(outcome.hit);
        EXPECT_EQ(outcome.told, Told::Kept);
        ExpectTrue(outcome, RowsOfNextProgram());
    }
}

} // namespace
