#pragma once

#include "database/SqliteDatabaseFactory.h"
#include "support/RawStore.h"

#include <QMap>
#include <QString>

#include <ostream>
#include <string>
#include <vector>

namespace tandry::test {

/// The version of new and upgraded stores.
constexpr int CurrentVersion = 2;

/// A store file written and closed by a version of this library. tests/data/stores/rows.sql lists its rows.
struct ReleasedStore
{
    int version;
    sync::database::JournalMode journalMode;

    /// Copies the file to the path.
    void CopyTo(QString const& path) const;
    /// Returns a name for test cases, of letters and digits.
    std::string Name() const;
};

void PrintTo(ReleasedStore const& store, std::ostream* out);

/// Returns a store of every version, with a log and with a journal.
std::vector<ReleasedStore> AllReleasedStores();
/// Returns the stores of older versions.
std::vector<ReleasedStore> OlderStores();
/// Returns the stores of the previews, of version 0.
std::vector<ReleasedStore> PreviewStores();

/// The complete rows of all tables by table name, ordered by id. Tables without rows are left out.
using StoreRows = QMap<QString, std::vector<QVector<QVariant>>>;
StoreRows RowsOf(RawStore& store);

/// Returns the rows after an upgrade to the current version: the same rows, and a default schedule if there was none.
StoreRows UpToDate(StoreRows rows);

int VersionOf(RawStore& store);

} // namespace tandry::test
