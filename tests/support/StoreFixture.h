#pragma once

#include "database/SqliteDatabaseFactory.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>

namespace tandry::test {

/// A test with a store in a folder of its own. The store is opened before the test and must be free of errors after it,
/// unless the test cleared them.
class StoreFixture : public testing::Test
{
protected:
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

    /// Closes the store and opens it anew: what a test then reads was on the disk. Managers that share it must be gone.
    void ReopenStore()
    {
        store.reset();
        OpenStore();
    }

    QTemporaryDir folder;
    std::shared_ptr<sync::database::SqliteDatabaseFactory> store;
};

} // namespace tandry::test
