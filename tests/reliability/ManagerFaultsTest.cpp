#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"
#include "support/Queries.h"

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
    /// How an operation on files fails.
    struct Fault
    {
        char const* name;
        int code;
        bool staysForGood;
    };
    static constexpr Fault Faults[] = {{"I/O error", SQLITE_IOERR, false},
                                       {"full disk", SQLITE_FULL, false},
                                       {"no memory", SQLITE_NOMEM, false},
                                       {"no memory from there on", SQLITE_NOMEM, true}};

    /// The nth operation on files fails from here on. Reading, alone of all, needs neither room nor memory.
    static void Fail(FaultyFiles& files, int n, Fault const& fault)
    {
        files.Fail(n,
                   fault.code,
                   {fault.code == SQLITE_IOERR ? FileOperation::Read : FileOperation::Open,
                    FileOperation::Open,
                    FileOperation::Write,
                    FileOperation::Truncate,
                    FileOperation::Sync,
                    FileOperation::Delete,
                    FileOperation::Lock,
                    FileOperation::MapMemory},
                   fault.staysForGood);
    }

    static std::string Name(char const* operation, Fault const& fault, int n)
    {
        return std::string(operation) + ", fault " + std::to_string(n) + ": " + fault.name;
    }

    /// One write more on the store, and all its rows as it sees them.
    StoreRows RowsWithProbe()
    {
        EXPECT_TRUE(AddServer(*store, QStringLiteral("a probe")));
        StoreRows const rows = RowsOf(*store);
        EXPECT_FALSE(store->LastError()) << store->LastError()->text.toStdString();
        return rows;
    }
};

TANDRY_FOR_EACH_MANAGER(ManagerFaults);

TEST_P(ManagerFaults, NoWriteIsLostWithoutAWordAndTheFactoryWorksOn)
{
    StoreRows const before = RowsBefore();
    for (WritingOperation const& operation : Own(WritingOperations())) {
        StoreRows const after = RowsAfter(operation);
        FaultyFiles files;
        for (Fault const& fault : Faults) {
            int n = 1;
            for (bool hit = true; hit; ++n) {
                SCOPED_TRACE(Name(operation.name, fault, n));
                PutStore();
                OpenStore();
                ASSERT_NE(store, nullptr) << refusal.toStdString();
                {
                    Managers managers(store);
                    Fail(files, n, fault);
                    bool const answer = operation.run(managers, *store);
                    hit = files.Recover();
                    Outcome const outcome{answer, store->LastError().has_value(), told > 0};
                    EXPECT_TRUE(hit || (outcome.promised() && !outcome.hasError));
                    store->ClearError();
                    EXPECT_TRUE(Agrees(operation, outcome, before, after, RowsOf(*store)));

                    // The same factory does now what it could not do before.
                    if (!outcome.promised() && operation.failing == Failing::AllOrNothing) {
                        EXPECT_TRUE(operation.run(managers, *store));
                        EXPECT_TRUE(Same(after, RowsOf(*store), "done again"));
                    }
                }
                StoreRows const seen = RowsWithProbe();
                store.reset();
                EXPECT_TRUE(Same(seen, RowsOnDisk(StorePath()), "seen by the factory"));
            }
            EXPECT_EQ(n > 2, operation.usesStore) << "no fault was hit under " << operation.name;
        }
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
        for (Fault const& fault : Faults) {
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
