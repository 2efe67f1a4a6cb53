#pragma once

#include "config/Managers.h"
#include "database/SqliteDatabaseFactory.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace tandry::test {

using sync::config::Managers;

/// An operation that reads, with arguments that match rows of the script's store.
struct ReadingOperation
{
    /// Interface and operation as spelt in the header; overloads and variants are told apart by a comma and a suffix.
    char const* name;
    /// Runs the operation and returns its result as a text.
    QString (*run)(Managers&);
    bool usesStore = true; // some return without accessing the store
};

/// The writes that a failed operation may leave in the store.
enum class Failing
{
    /// All of its writes if it returns true, none if it returns false.
    AllOrNothing,
    /// The writes before the failure. An operation that fails to read what it would write next may take it for missing
    /// and return true; the store then has an error.
    Parts,
    /// The same, and if it fails to read a row it may add a duplicate.
    PartsAndMore,
};

/// An operation that writes, with arguments that change the script's store.
struct WritingOperation
{
    char const* name;
    /// Runs the operation and returns its result; if that is always the same, whether the store has no error.
    bool (*run)(Managers&, sync::database::SqliteDatabaseFactory&);
    Failing failing = Failing::AllOrNothing;
    bool usesStore = true;
};

/// Returns the operations of all managers' interfaces.
std::vector<ReadingOperation> const& ReadingOperations();
std::vector<WritingOperation> const& WritingOperations();

/// The rows of all tables as texts, by table and id.
using RowTexts = QMap<QString, QString>;
/// Reads the rows through the store.
RowTexts RowsOf(sync::database::SqliteDatabaseFactory& store);
/// Reads the rows of a closed store with SQLite. Fails the test if the file is damaged.
RowTexts RowsOnDisk(QString const& path);

/// Returns the file of a store with rows for the operations: a few pages, with one listing that needs several of them.
QByteArray const& ScriptStore(sync::database::JournalMode journalMode);

} // namespace tandry::test
