#pragma once

#include "reliability/ManagerScript.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"
#include "support/TemporarySettings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QObject>
#include <QTemporaryDir>

#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace tandry::test {

/// Runs the operations of one manager's interface, each on a copy of the script's store, in one journal mode.
class ManagerScriptFixture : public testing::TestWithParam<std::tuple<sync::database::JournalMode, char const*>>
{
protected:
    ManagerScriptFixture()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("tandry.*=false")); // errors are many
        static_cast<void>(ScriptStore(Mode()));                             // made ahead of any fault
    }

    ~ManagerScriptFixture() override { QLoggingCategory::setFilterRules(QString()); }

    void TearDown() override
    {
        store.reset();
        EXPECT_EQ(OpenFiles(), _openFiles) << "a file was left open";
    }

    sync::database::JournalMode Mode() const { return std::get<0>(GetParam()); }
    QString StorePath() const { return folder.filePath(QStringLiteral("store.db")); }

    /// Those of the operations that belong to this case's interface.
    template <class Operation>
    std::vector<Operation> Own(std::vector<Operation> const& operations) const
    {
        std::vector<Operation> own;
        for (Operation const& operation : operations) {
            if (std::string(operation.name).rfind(std::string(std::get<1>(GetParam())) + "::", 0) == 0)
                own.push_back(operation);
        }
        return own;
    }

    /// A new copy of the script's store in place of whatever is there.
    void PutStore(QByteArray const& bytes)
    {
        store.reset();
        for (QString const& name : QDir(folder.path()).entryList(QDir::Files | QDir::Hidden))
            EXPECT_TRUE(QFile::remove(folder.filePath(name)));
        WriteFile(StorePath(), bytes);
    }
    void PutStore() { PutStore(ScriptStore(Mode())); }

    /// Opens what is there; null if it is refused, with the reason in `refusal`.
    void OpenStore()
    {
        sync::database::OpenOptions options;
        options.mode = sync::database::OpenMode::OpenExisting;
        options.busyTimeoutMsec = 0;
        refusal.clear();
        told = 0;
        store = sync::database::SqliteDatabaseFactory::Open(StorePath(), &refusal, options);
        if (store != nullptr)
            QObject::connect(store.get(), &sync::database::SqliteDatabaseFactory::CommitFailed, [this] { ++told; });
    }

    /// What the operation makes of the script's store where nothing fails.
    StoreRows RowsAfter(WritingOperation const& operation)
    {
        PutStore();
        OpenStore();
        Managers managers(store);
        EXPECT_TRUE(operation.run(managers, *store)) << operation.name;
        EXPECT_FALSE(store->LastError()) << operation.name;
        EXPECT_EQ(told, 0) << operation.name;
        store.reset();
        return RowsOnDisk(StorePath());
    }

    StoreRows RowsBefore()
    {
        PutStore();
        return RowsOnDisk(StorePath());
    }

    /// What an operation that met with a failure said, and what is there.
    struct Outcome
    {
        bool answer = false;
        bool hasError = false;
        bool wasTold = false;

        bool promised() const { return answer && !wasTold; }
    };

    /// Holds what is in the store against the answer of an operation.
    static testing::AssertionResult Agrees(WritingOperation const& operation,
                                           Outcome const& outcome,
                                           StoreRows const& before,
                                           StoreRows const& after,
                                           StoreRows const& found)
    {
        if (!outcome.answer && !outcome.hasError)
            return testing::AssertionFailure() << "false without an error";
        if (operation.failing == Failing::AllOrNothing || (outcome.promised() && !outcome.hasError))
            return Same(outcome.promised() ? after : before, found, outcome.promised() ? "promised" : "not done");

        // What was done before the failure stays: each row is as before or as after.
        for (QString const& key : before.keys() + after.keys() + found.keys()) {
            bool const mayBeAnother = operation.failing == Failing::PartsAndMore && !before.contains(key);
            bool const isAsBefore = found.contains(key) == before.contains(key) && found[key] == before[key];
            bool const isAsAfter = found.contains(key) == after.contains(key) && found[key] == after[key];
            if (!isAsBefore && !isAsAfter && !mayBeAnother)
                return testing::AssertionFailure()
                       << key.toStdString() << " is neither as before nor as after: " << found[key].toStdString();
        }
        return testing::AssertionSuccess();
    }

    static testing::AssertionResult Same(StoreRows const& expected, StoreRows const& found, char const* what)
    {
        for (QString const& key : expected.keys() + found.keys()) {
            QString const wanted = expected.value(key, QStringLiteral("no row"));
            QString const is = found.value(key, QStringLiteral("no row"));
            if (is != wanted)
                return testing::AssertionFailure() << what << ": " << key.toStdString() << " is " << is.toStdString()
                                                   << " instead of " << wanted.toStdString();
        }
        return testing::AssertionSuccess();
    }

    /// Writes one row more to the store.
    void Probe()
    {
        EXPECT_TRUE(AddServer(*store, QStringLiteral("a probe")));
        EXPECT_FALSE(store->LastError()) << store->LastError()->text.toStdString();
    }
    static StoreRows WithoutProbe(StoreRows rows)
    {
        for (QString const& key : rows.keys()) {
            if (rows[key].contains(QStringLiteral("'a probe'")))
                rows.remove(key);
        }
        return rows;
    }

    /// How many files this process has open.
    static int OpenFiles()
    {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
    }

    TemporarySettings settings;
    QTemporaryDir folder;
    std::shared_ptr<sync::database::SqliteDatabaseFactory> store;
    QString refusal;
    int told = 0;

private:
    int const _openFiles = OpenFiles();
};

inline std::string NameOfScriptCase(testing::TestParamInfo<ManagerScriptFixture::ParamType> const& info)
{
    std::string const interface = std::get<1>(info.param);
    return interface.substr(1) + NameOfJournalMode({std::get<0>(info.param), 0});
}

} // namespace tandry::test

/// Runs a suite derived from `ManagerScriptFixture` for each manager's interface in both modes.
#define TANDRY_FOR_EACH_MANAGER(Suite)                                                                                 \
    INSTANTIATE_TEST_SUITE_P(For,                                                                                      \
                             Suite,                                                                                    \
                             testing::Combine(testing::Values(sync::database::JournalMode::WriteAheadLog,              \
                                                              sync::database::JournalMode::Rollback),                  \
                                              testing::Values("IFolderConfigManager",                                  \
                                                              "IFileConfigManager",                                    \
                                                              "IServerConfigManager",                                  \
                                                              "IAuthenticationConfigManager",                          \
                                                              "IProductConfigManager",                                 \
                                                              "IScheduleEntryManager")),                               \
                             tandry::test::NameOfScriptCase)
