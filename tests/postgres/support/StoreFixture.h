#pragma once

#include "postgres/PostgresDatabaseFactory.h"
#include "postgres/support/PostgresServer.h"
#include "postgres/support/ServerRawStore.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>

namespace tandry::test {

/// A test with a profile of its own on the shared server. The managers' tests, compiled for PostgreSQL, find this
/// header in place of the one for SQLite.
class StoreFixture : public testing::Test
{
protected:
    static constexpr bool StoreIsFile = false;
    static constexpr bool StoreKeepsNullCharacters = false;
    static constexpr bool StoreGivesRolledBackIdsAgain = false;

    ~StoreFixture() override
    {
        store.reset();
        ServerRawStore(StorePath()).Run(QStringLiteral("DROP SCHEMA IF EXISTS tandry_%1 CASCADE").arg(_profile));
    }

    void SetUp() override { OpenStore(); }

    void TearDown() override
    {
        if (store != nullptr && store->LastError())
            ADD_FAILURE() << "the store has an error: " << store->LastError()->text.toStdString();
    }

    QString const& profile() const { return _profile; }

    /// Returns the URI.
    QString StorePath() const { return PostgresServer::Shared().Uri(_profile); }

    void OpenStore(sync::database::OpenOptions const& options = {})
    {
        QString error;
        store = sync::database::PostgresDatabaseFactory::Open(StorePath(), &error, options);
        ASSERT_NE(store, nullptr) << error.toStdString();
    }

    /// Closes the store and opens it again. The test must have destroyed the managers that share the store.
    void ReopenStore()
    {
        store.reset();
        OpenStore();
    }

    QTemporaryDir folder;
    std::shared_ptr<sync::database::PostgresDatabaseFactory> store;

private:
    QString const _profile = PostgresServer::NewProfile();
};

} // namespace tandry::test
