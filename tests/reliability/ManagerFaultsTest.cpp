#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"

#include <sqlite3.h>

#include <QRegularExpression>
#include <QSet>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;

/// Runs each operation of the managers and makes each of SQLite's file operations below it fail once.
class ManagerFaults : public ManagerScriptFixture
{
protected:
    using Op = FileOperation;
    /// An error code and the file operations that return it. Reading needs no disk space or memory, and locking no
    /// space.
    struct Fault
    {
        char const* name;
        int code;
        std::vector<FileOperation> operations;
        bool isPermanent = false;
    };
    static Fault IoError() { return {"I/O error", SQLITE_IOERR, AllOperations}; }
    static Fault FullDisk()
    {
        return {"full disk", SQLITE_FULL, {Op::Open, Op::Write, Op::Truncate, Op::Sync, Op::MapMemory}};
    }
    static Fault NoMemory() { return {"no memory", SQLITE_NOMEM, AllThatNeedResources}; }
    static Fault NoMoreMemory() { return {"no more memory", SQLITE_NOMEM, NoMemory().operations, true}; }

    void ExpectNoSilentLoss(std::vector<Fault> const& faults);

    static void Fail(FaultyFiles& files, int n, Fault const& fault)
    {
        files.Fail(n, fault.code, fault.operations, fault.isPermanent);
    }

    static std::string Name(char const* operation, Fault const& fault, int n)
    {
        return std::string(operation) + ", fault " + std::to_string(n) + ": " + fault.name;
    }
};

TANDRY_FOR_EACH_MANAGER(ManagerFaults);

/// Expects that a write that returned true is in the store afterwards, unless the factory has emitted `CommitFailed`,
/// and that the factory works again after the fault.
void ManagerFaults::ExpectNoSilentLoss(std::vector<Fault> const& faults)
{
    RowTexts const before = RowsBefore();
    for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
        RowTexts const after = RowsAfter(operation);
        FaultyFiles files;
        for (Fault const& fault : faults) {
            int n = 1;
            for (bool hit = true; hit; ++n) {
                SCOPED_TRACE(Name(operation.name, fault, n));
                ResetStore();
                OpenStore();
                ASSERT_NE(store, nullptr) << openError.toStdString();
                RowTexts expected;
                {
                    Managers managers(store);
                    Fail(files, n, fault);
                    bool const answer = operation.run(managers, *store);
                    hit = files.Recover();
                    Outcome const outcome{answer, store->LastError().has_value(), commitFailures > 0, isOutcomeUnknown};
                    EXPECT_TRUE(hit || (outcome.succeeded() && !outcome.hasError));
                    store->ClearError();

                    // Now the same factory succeeds, with and without reading first.
                    bool runsAgain = !outcome.succeeded() && operation.failing == Failing::AllOrNothing;
                    if (!runsAgain || !fault.isPermanent || outcome.isUnknown) {
                        expected = RowsOf(*store);
                        EXPECT_TRUE(MatchesOutcome(operation, outcome, before, after, expected));
                    }
                    if (outcome.isUnknown && Same(after, expected, "kept"))
                        runsAgain = false;
                    if (runsAgain) {
                        EXPECT_TRUE(operation.run(managers, *store));
                        expected = after;
                    }
                }
                Probe();
                RowTexts const seen = RowsOf(*store);
                EXPECT_EQ(seen.size(), expected.size() + 1) << "the probe";
                EXPECT_TRUE(Same(expected, WithoutProbe(seen), "after the fault"));
                store.reset();
                EXPECT_TRUE(Same(seen, RowsOnDisk(StorePath()), "seen by the factory"));
            }
            EXPECT_TRUE(n > 2 || !operation.usesStore || fault.code == SQLITE_FULL)
                << "no fault was hit under " << operation.name;
        }
    }
}

TEST_P(ManagerFaults, IoErrorOrFullDiskLosesNoWriteSilently)
{
    ExpectNoSilentLoss({IoError(), FullDisk()});
}

TEST_P(ManagerFaults, LackOfMemoryLosesNoWriteSilently)
{
    ExpectNoSilentLoss({NoMemory(), NoMoreMemory()});
}

TEST_P(ManagerFaults, FaultDuringCloseLosesNothing)
{
    FaultyFiles files;
    bool hit = true;
    for (int n = 1; hit; ++n) {
        SCOPED_TRACE(Name("the close", IoError(), n));
        ResetStore();
        OpenStore();
        ASSERT_NE(store, nullptr) << openError.toStdString();
        {
            Managers managers(store);
            for (WritingOperation const& operation : OfThisInterface(WritingOperations()))
                EXPECT_TRUE(operation.run(managers, *store)) << operation.name;
        }
        RowTexts const written = RowsOf(*store);
        Fail(files, n, IoError());
        store.reset();
        hit = files.Recover();
        EXPECT_TRUE(Same(written, RowsOnDisk(StorePath()), "written"));
        EXPECT_TRUE(hit || n > 1 || Mode() == JournalMode::Rollback) << "no fault was hit";
    }
}

TEST_P(ManagerFaults, FailedReadIsNotMistakenForAMiss)
{
    ResetStore();
    FaultyFiles files;
    for (ReadingOperation const& operation : OfThisInterface(ReadingOperations())) {
        OpenStore();
        ASSERT_NE(store, nullptr) << openError.toStdString();
        QString const expected = [&] {
            Managers managers(store);
            return operation.run(managers);
        }();
        EXPECT_FALSE(store->LastError()) << operation.name;
        store.reset();
        for (Fault const& fault : {IoError(), NoMemory()}) {
            int n = 1;
            for (bool hit = true; hit; ++n) {
                SCOPED_TRACE(Name(operation.name, fault, n));
                OpenStore();
                ASSERT_NE(store, nullptr) << openError.toStdString();
                {
                    Managers managers(store);
                    Fail(files, n, fault);
                    QString const answer = operation.run(managers);
                    hit = files.Recover();
                    EXPECT_TRUE(store->LastError() || answer == expected) << answer.toStdString();
                    store->ClearError();

                    managers.folders->ClearCaches();
                    EXPECT_EQ(operation.run(managers), expected) << "after the fault";
                    EXPECT_FALSE(store->LastError());
                }
                store.reset();
            }
            if (fault.code == SQLITE_IOERR) {
                EXPECT_EQ(n > 2, operation.usesStore) << "no fault was hit under " << operation.name;
            }
        }
    }
    EXPECT_TRUE(Same(RowsBefore(), RowsOnDisk(StorePath()), "read only"));
}

TEST(ManagerScript, CoversEveryOperationOfEveryInterface)
{
    QSet<QString> inScript;
    auto const add = [&](char const* name) {
        inScript.insert(QString::fromUtf8(name).section(QLatin1Char(','), 0, 0));
    };
    for (ReadingOperation const& operation : ReadingOperations())
        add(operation.name);
    for (WritingOperation const& operation : WritingOperations())
        add(operation.name);

    QSet<QString> inInterfaces;
    QDir const headers(QStringLiteral(TANDRY_SOURCES "/interf"));
    QRegularExpression const declaration(QStringLiteral("virtual [^;]*?(\\w+)\\([^;]*= 0;"));
    for (QString const& name : headers.entryList({QStringLiteral("I*Manager.h")})) {
        QString const text = QString::fromUtf8(ReadFile(headers.filePath(name)));
        for (auto found = declaration.globalMatch(text); found.hasNext();)
            inInterfaces.insert(name.chopped(2) + "::"_q + found.next().captured(1));
    }
    EXPECT_GT(inInterfaces.size(), 60);
    EXPECT_EQ(inInterfaces - inScript, QSet<QString>());
    EXPECT_EQ(inScript - inInterfaces, QSet<QString>());
}

} // namespace
