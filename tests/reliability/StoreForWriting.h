#pragma once

#include "database/SqliteDatabaseFactory.h"
#include "reliability/WritingLoop.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

namespace tandry::test {

/// Creates a store file for `WriteUntilFailure` and returns its rows.
inline RowStates MakeStoreForWriting(QString const& path, sync::database::JournalMode mode)
{
    sync::database::OpenOptions options;
    options.journalMode = mode;
    EXPECT_NE(sync::database::SqliteDatabaseFactory::Open(path, nullptr, options), nullptr);
    RawStore(path).Run(QStringLiteral("INSERT INTO sqlite_sequence VALUES ('GeneratedFileConfiguration', 1000000)"));
    return ReadRows(path);
}

} // namespace tandry::test
