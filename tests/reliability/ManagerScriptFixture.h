#pragma once

#include "reliability/ManagerScript.h"
#include "reliability/ScriptStore.h"
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

/// Runs the operations of one manager's interface in one journal mode, each on a new copy of the script's store.
class ManagerScriptFixture : public testing::TestWithParam<std::tuple<sync::database::JournalMode, char const*>>
{
protected:
    ManagerScriptFixture()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("tandry.*=false")); // there are many errors
        static_cast<void>(ScriptStore(Mode()));                             // created before any fault
    }

    ~ManagerScriptFixture() override { QLoggingCategory::setFilterRules(QString()); }

    void TearDown() override
    {
        store.reset();
        EXPECT_EQ(CountOpenFiles(), _openFiles) << "a file is still open";
    }

    sync::database::JournalMode Mode() const { return std::get<0>(GetParam()); }
    QString StorePath() const { return folder.filePath(QStringLiteral("store.db")); }

    /// Returns the operations of this test's interface.
    template <class Operation>
    std::vector<Operation> OfThisInterface(std::vector<Operation> const& operations) const
    {
        std::vector<Operation> own;
        for (Operation const& operation : operations) {
            if (std::string(operation.name).rfind(std::string(std::get<1>(GetParam())) + "::", 0) == 0)
                own.push_back(operation);
        }
        return own;
    }

    /// Replaces all files in the folder by a new copy of the script's store.
    void ResetStore(QByteArray const& bytes)
    {
        store.reset();
        for (QString const& name : QDir(folder.path()).entryList(QDir::Files | QDir::Hidden))
            EXPECT_TRUE(QFile::remove(folder.filePath(name)));
        WriteFile(StorePath(), bytes);
    }
    void ResetStore() { ResetStore(ScriptStore(Mode())); }

    /// Opens the store. Sets `store` to null and `openError` to the reason if it is refused.
    void OpenStore()
    {
        sync::database::OpenOptions options;
        options.mode = sync::database::OpenMode::OpenExisting;
        options.busyTimeoutMsec = 0;
        openError.clear();
        commitFailures = 0;
        isOutcomeUnknown = false;
        store = sync::database::SqliteDatabaseFactory::Open(StorePath(), &openError, options);
        if (store != nullptr)
            QObject::connect(store.get(),
                             &sync::database::StoreFactory::CommitFailed,
                             [this](sync::database::StoreError const& error) {
                                 ++commitFailures;
                                 if (error.kind == sync::database::StoreErrorKind::OutcomeUnknown)
                                     isOutcomeUnknown = true;
                             });
    }

    /// Returns the rows after the operation has run on the script's store without a failure.
    RowTexts RowsAfter(WritingOperation const& operation)
    {
        ResetStore();
        OpenStore();
        Managers managers(store);
        EXPECT_TRUE(operation.run(managers, *store)) << operation.name;
        EXPECT_FALSE(store->LastError()) << operation.name;
        EXPECT_EQ(commitFailures, 0) << operation.name;
        store.reset();
        return RowsOnDisk(StorePath());
    }

    RowTexts RowsBefore()
    {
        ResetStore();
        return RowsOnDisk(StorePath());
    }

    using Outcome = OperationOutcome;

    /// Adds a row, to show that the store works.
    void Probe()
    {
        EXPECT_TRUE(AddServer(*store, QStringLiteral("a probe")));
        EXPECT_FALSE(store->LastError()) << store->LastError()->text.toStdString();
    }
    static RowTexts WithoutProbe(RowTexts rows)
    {
        for (QString const& key : rows.keys()) {
            if (rows[key].contains(QStringLiteral("'a probe'")))
                rows.remove(key);
        }
        return rows;
    }

    /// Returns the number of files that this process has open.
    static int CountOpenFiles()
    {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
    }

    TemporarySettings settings;
    QTemporaryDir folder;
    std::shared_ptr<sync::database::SqliteDatabaseFactory> store;
    QString openError;
    int commitFailures = 0;
    bool isOutcomeUnknown = false;

private:
    int const _openFiles = CountOpenFiles();
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
