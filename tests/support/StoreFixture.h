#pragma once

#include "database/SqliteDatabaseFactory.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>
#include <string>

namespace tandry::test {

/// A test with a store in a temporary folder. The store is opened before the test; the test fails if `LastError` is set
/// at its end.
class StoreFixture : public testing::Test
{
protected:
    /// Differences of the stores on which the managers' tests run.
    static constexpr bool StoreIsFile = true;
    static constexpr bool StoreKeepsNullCharacters = true;
    static constexpr bool StoreGivesRolledBackIdsAgain = true;

    void SetUp() override { OpenStore(); }

    void TearDown() override
    {
        if (store != nullptr && store->LastError())
            ADD_FAILURE() << "the store has an error: " << store->LastError()->text.toStdString();
    }

    QString StorePath() const { return folder.filePath(QStringLiteral("store.db")); }

    void OpenStore(sync::database::OpenOptions const& options = {})
    {
        QString error;
        store = sync::database::SqliteDatabaseFactory::Open(StorePath(), &error, options);
        ASSERT_NE(store, nullptr) << error.toStdString();
    }

    /// Closes the store and opens it again, so that the test reads what was written to the disk. The test must have
    /// destroyed the managers that share the store.
    void ReopenStore()
    {
        store.reset();
        OpenStore();
    }

    QTemporaryDir folder;
    std::shared_ptr<sync::database::SqliteDatabaseFactory> store;
};

/// A store test that runs in both journal modes.
class EachJournalMode : public StoreFixture, public testing::WithParamInterface<sync::database::JournalMode>
{
protected:
    void SetUp() override
    {
        sync::database::OpenOptions options;
        options.journalMode = GetParam();
        OpenStore(options);
        ASSERT_EQ(store->journalMode(), GetParam());
    }

    bool UsesLog() const { return GetParam() == sync::database::JournalMode::WriteAheadLog; }
};

inline std::string NameOfJournalMode(testing::TestParamInfo<sync::database::JournalMode> const& mode)
{
    return mode.param == sync::database::JournalMode::WriteAheadLog ? "Log" : "Journal";
}

} // namespace tandry::test

/// Runs a suite derived from `EachJournalMode` in both modes.
#define TANDRY_IN_EACH_JOURNAL_MODE(Suite)                                                                             \
    INSTANTIATE_TEST_SUITE_P(                                                                                          \
        With,                                                                                                          \
        Suite,                                                                                                         \
        testing::Values(sync::database::JournalMode::WriteAheadLog, sync::database::JournalMode::Rollback),            \
        tandry::test::NameOfJournalMode)

/// Runs a suite derived from `EachJournalMode` with a log only.
#define TANDRY_WITH_LOG_ONLY(Suite)                                                                                    \
    INSTANTIATE_TEST_SUITE_P(                                                                                          \
        With, Suite, testing::Values(sync::database::JournalMode::WriteAheadLog), tandry::test::NameOfJournalMode)

/// Runs a suite derived from `EachJournalMode` with a journal only.
#define TANDRY_WITH_JOURNAL_ONLY(Suite)                                                                                \
    INSTANTIATE_TEST_SUITE_P(                                                                                          \
        With, Suite, testing::Values(sync::database::JournalMode::Rollback), tandry::test::NameOfJournalMode)
