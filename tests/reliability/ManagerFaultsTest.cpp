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
    /// The nth operation on files fails from here on. Reading, alone of all, needs neither room nor memory.
    static void Fail(FaultyFiles& files, int n, int code)
    {
        files.Fail(n,
                   code,
                   {code == SQLITE_IOERR ? FileOperation::Read : FileOperation::Open,
                    FileOperation::Open,
                    FileOperation::Write,
                    FileOperation::Truncate,
                    FileOperation::Sync,
                    FileOperation::Delete,
                    FileOperation::Lock,
                    FileOperation::MapMemory});
    }

    static constexpr int Codes[] = {SQLITE_IOERR, SQLITE_FULL, SQLITE_NOMEM};
    QString const probe = QStringLiteral("written when the fault had gone");
};

TANDRY_FOR_EACH_MANAGER(ManagerFaults);

TEST_P(ManagerFaults, NoWriteIsLostWithoutAWordAndTheFactoryWorksOn)
{
    StoreRows const before = RowsBefore();
    for (WritingOperation const& operation : Own(WritingOperations())) {
        StoreRows const after = RowsAfter(operation);
        FaultyFiles files;
        for (int const code : Codes) {
            int n = 1;
            for (bool hit = true; hit && !HasFatalFailure(); ++n) {
                SCOPED_TRACE(std::string(operation.name) + ", fault " + std::to_string(n) + " with code " +
                             std::to_string(code));
                PutStore();
                OpenStore();
                ASSERT_NE(store, nullptr) << refusal.toStdString();
                Outcome outcome;
                {
                    Managers managers(store);
                    Fail(files, n, code);
                    outcome.answer = operation.run(managers, *store);
                    hit = files.Recover();
                }
                outcome.hasError = store->LastError().has_value();
                outcome.wasTold = told > 0;
                store->ClearError();

                EXPECT_TRUE(AddServer(*store, probe));
                StoreRows const seen = RowsOf(*store);
                EXPECT_FALSE(store->LastError());
                store.reset();
                StoreRows found = RowsOnDisk(StorePath());
                EXPECT_TRUE(Same(seen, found, "seen by the factory"));
                int probes = 0;
                for (QString const& key : found.keys()) {
                    if (found[key].contains(probe))
                        probes += found.remove(key);
                }
                EXPECT_EQ(probes, 1);
                EXPECT_TRUE(Agrees(operation, outcome, before, after, found));
                EXPECT_TRUE(hit || (outcome.answer && !outcome.hasError && !outcome.wasTold));
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
        for (int const code : Codes) {
            int n = 1;
            for (bool hit = true; hit; ++n) {
                SCOPED_TRACE(std::string(operation.name) + ", fault " + std::to_string(n) + " with code " +
                             std::to_string(code));
                OpenStore();
                ASSERT_NE(store, nullptr) << refusal.toStdString();
                {
                    Managers managers(store);
                    Fail(files, n, code);
                    QString const answer = operation.run(managers);
                    hit = files.Recover();
                    EXPECT_TRUE(store->LastError() || answer == whole) << answer.toStdString();
                    store->ClearError();

                    managers.folders->ClearCaches();
                    EXPECT_EQ(operation.run(managers), whole) << "when the fault had gone";
                    EXPECT_FALSE(store->LastError());
                }
                EXPECT_TRUE(AddServer(*store, probe) &&
                            Execute(*store, "DELETE FROM ServerConfiguration WHERE id > 2"_q));
                store.reset();
            }
            if (code == SQLITE_IOERR) {
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
