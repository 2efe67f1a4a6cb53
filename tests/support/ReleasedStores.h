#pragma once

#include "database/SqliteDatabaseFactory.h"
#include "support/RawStore.h"

#include <QMap>
#include <QString>

#include <ostream>
#include <string>
#include <vector>

namespace tandry::test {

/// A store file as a version of this library left it, cleanly closed; tests/data/stores/rows.sql tells the rows.
struct ReleasedStore
{
    int version;
    sync::database::JournalMode journalMode;

    /// Puts a copy of the file at the path.
    void CopyTo(QString const& path) const;
    /// Letters and digits.
    std::string Name() const;
};

void PrintTo(ReleasedStore const& store, std::ostream* out);

/// Every version there has been, with a log and with a journal.
std::vector<ReleasedStore> AllReleasedStores();
/// Those of them that have to be brought up to date.
std::vector<ReleasedStore> OlderStores();

/// The rows of all tables by the table's name, with every column, in the order of their ids.
using StoreRows = QMap<QString, std::vector<QVector<QVariant>>>;
StoreRows RowsOf(RawStore& store);

/// The rows that a store of the current version holds once it has been brought up to date from these: the same, and a
/// default schedule.
StoreRows UpToDate(StoreRows rows);

int VersionOf(RawStore& store);

} // namespace tandry::test
