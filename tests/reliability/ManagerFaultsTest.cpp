#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"

#include <sqlite3.h>

#include <QRegularExpression>
#include <QSet>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;

/// Each operation of the engine on its files fails once, under each operation of the managers.
class ManagerFaults : public ManagerScriptFixture
{
protected:
    using Op = FileOperation;
    /// How operations on files fail, and which: reading needs no room and no memory, and locks take none either.
    struct Fault
    {
        char const* name;
        int code;
        std::vector<FileOperation> operations;
        bool staysForGood = false;
    };
    static Fault IoError() { return {"I/O error", SQLITE_IOERR, AllOperations}; }
    static Fault FullDisk()
    {
        return {"full disk", SQLITE_FULL, {Op::Open, Op::Write, Op::Truncate, Op::Sync, Op::MapMemory}};
    }
    static Fault NoMemory() { return {"no memory", SQLITE_NOMEM, AllButReading}; }
    static Fault NoMemoryForGood() { return {"no memory from there on", SQLITE_NOMEM, NoMemory().operations, true}; }

    void ExpectNoWriteLostInSilence(std::vector<Fault> const& faults);

    static void Fail(FaultyFiles& files, int n, Fault const& fault)
    {
        files.Fail(n, fault.code, fault.operations, fault.staysForGood);
    }

    static std::string Name(char const* operation, Fault const& fault, int n)
    {
        return std::string(operation) + ", fault " + std::to_string(n) + ": " + fault.name;
    }
};

TANDRY_FOR_EACH_MANAGER(ManagerFaults);

/// A write that was answered with true is there afterwards, or the factory has told of its loss. And the factory works
/// on.
void ManagerFaults::ExpectNoWriteLostInSilence(std::vector<Fault> const& faults)
{
    StoreRows const before = RowsBefore();
    for (WritingOperation const& operation : Own(WritingOperations())) {
        StoreRows const after = RowsAfter(operation);
        FaultyFiles files;
        for (Fault const& fault : faults) {
            int n = 1;
            for (bool hit = true; hit; ++n) {
                SCOPED_TRACE(Name(operation.name, fault, n));
                PutStore();
                OpenStore();
                ASSERT_NE(store, nullptr) << refusal.toStdString();
                StoreRows expected;
                {
                    Managers managers(store);
                    Fail(files, n, fault);
                    bool const answer = operation.run(managers, *store);
                    hit = files.Recover();
                    Outcome const outcome{answer, store->LastError().has_value(), told > 0};
                    EXPECT_TRUE(hit || (outcome.promised() && !outcome.hasError));
                    store->ClearError();

                    // The same factory does now what it could not do before; be it that it reads first, or not.
                    bool const doesAgain = !outcome.promised() && operation.failing == Failing::AllOrNothing;
                    if (!doesAgain || !fault.staysForGood) {
                        expected = RowsOf(*store);
                        EXPECT_TRUE(Agrees(operation, outcome, before, after, expected));
                    }
                    if (doesAgain) {
                        EXPECT_TRUE(operation.run(managers, *store));
                        expected = after;
                    }
                }
                Probe();
                StoreRows const seen = RowsOf(*store);
                EXPECT_EQ(seen.size(), expected.size() + 1) << "the probe";
                EXPECT_TRUE(Same(expected, WithoutProbe(seen), "when the fault had gone"));
                store.reset();
                EXPECT_TRUE(Same(seen, RowsOnDisk(StorePath()), "seen by the factory"));
            }
            EXPECT_TRUE(n > 2 || !operation.usesStore || fault.code == SQLITE_FULL)
                << "no fault was hit under " << operation.name;
        }
    }
}

TEST_P(ManagerFaults, NoWriteIsLostInSilenceByAnErrorOrAFullDisk)
{
    ExpectNoWriteLostInSilence({IoError(), FullDisk()});
}

TEST_P(ManagerFaults, NoWriteIsLostInSilenceByALackOfMemory)
{
    ExpectNoWriteLostInSilence({NoMemory(), NoMemoryForGood()});
}

TEST_P(ManagerFaults, FaultDuringTheCloseLosesNothing)
{
    FaultyFiles files;
    bool hit = true;
    for (int n = 1; hit; ++n) {
        SCOPED_TRACE(Name("the close", IoError(), n));
        PutStore();
        OpenStore();
        ASSERT_NE(store, nullptr) << refusal.toStdString();
        {
            Managers managers(store);
            for (WritingOperation const& operation : Own(WritingOperations()))
                EXPECT_TRUE(operation.run(managers, *store)) << operation.name;
        }
        StoreRows const written = RowsOf(*store);
        Fail(files, n, IoError());
        store.reset();
        hit = files.Recover();
        EXPECT_TRUE(Same(written, RowsOnDisk(StorePath()), "written"));
        EXPECT_TRUE(hit || n > 1 || Mode() == JournalMode::Rollback) << "no fault was hit";
    }
}

TEST_P(ManagerFaults, NoReadingTakesWhatItCouldNotReadForMissing)
{
    PutStore();
    FaultyFiles files;
    for (ReadingOperation const& operation : Own(ReadingOperations())) {
        OpenStore();
        ASSERT_NE(store, nullptr) << refusal.toStdString();
        QString const whole = [&] {
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
                ASSERT_NE(store, nullptr) << refusal.toStdString();
                {
                    Managers managers(store);
                    Fail(files, n, fault);
                    QString const answer = operation.run(managers);
                    hit = files.Recover();
                    EXPECT_TRUE(store->LastError() || answer == whole) << answer.toStdString();
                    store->ClearError();

                    managers.folders->ClearCaches();
                    EXPECT_EQ(operation.run(managers), whole) << "when the fault had gone";
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

TEST(ManagerScript, HoldsEveryOperationOfEveryInterface)
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
