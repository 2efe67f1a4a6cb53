#pragma once

#include "database/SqliteDatabaseFactory.h"
#include "reliability/ManagerScript.h"

#include <QByteArray>
#include <QString>

namespace tandry::test {

/// Reads the rows through the store.
RowTexts RowsOf(sync::database::SqliteDatabaseFactory& store);
/// Reads the rows of a closed store with SQLite. Fails the test if the file is damaged.
RowTexts RowsOnDisk(QString const& path);

/// Returns the file of a store with the rows of the script.
QByteArray const& ScriptStore(sync::database::JournalMode journalMode);

} // namespace tandry::test
