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

/// An operation that reads, with values that find something in the script's store.
struct ReadingOperation
{
    /// Interface and operation as the header spells them; after a comma which one where there are several.
    char const* name;
    /// What was found, as a text.
    QString (*run)(Managers&);
    bool usesStore = true; // some answer by themselves
};

/// What may be in the store after a writing operation that met with a failure.
enum class Failing
{
    /// Everything after true, nothing after false.
    AllOrNothing,
    /// A composite operation leaves what was done before the failure. One that could not read what it was to write next
    /// may take it for missing and answer true; the store's last error tells.
    Parts,
    /// The same, and where it could not read what is on record it may make another one.
    PartsAndMore,
};

/// An operation that writes, with values that change something in the script's store.
struct WritingOperation
{
    char const* name;
    /// The operation's answer. Of one that always answers the same, whether the store has no error.
    bool (*run)(Managers&, sync::database::SqliteDatabaseFactory&);
    Failing failing = Failing::AllOrNothing;
    bool usesStore = true;
};

/// Every operation of every manager's interface.
std::vector<ReadingOperation> const& ReadingOperations();
std::vector<WritingOperation> const& WritingOperations();

/// All rows of a store's tables by table and id, each as a text.
using StoreRows = QMap<QString, QString>;
/// Through the store's own queries.
StoreRows RowsOf(sync::database::SqliteDatabaseFactory& store);
/// Of a closed store, by the engine alone; finds fault with a file that is not whole.
StoreRows RowsOnDisk(QString const& path);

/// The bytes of a store in which the operations find something: a few pages, with one listing that goes over several.
QByteArray const& ScriptStore(sync::database::JournalMode journalMode);

} // namespace tandry::test
