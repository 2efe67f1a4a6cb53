#pragma once

#include "FolderPlace.h"

#include <QHash>
#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::config {
class ScheduleEntry;
}

namespace tandryctl {

/// The columns of a product that `ProductConfigManager::Update` sets to NULL or to no properties, as they are stored.
struct ProductRemainder
{
    QVariant consumerSecret;
    QVariant nameValueProperties;
};

/// Whether a store keeps the file systems of folders. A profile on a server does not: each machine has its own.
enum class OriginRecords
{
    Kept,
    NotKept
};

/// Statements that no manager offers, through the store's public interface.
///
/// Like the managers, returns the same for a miss and for a failure; the store's `LastError` tells which.
class StoreQueries
{
public:
    StoreQueries(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store, OriginRecords origins);

    /// Returns the number of rows of the table that have this id in the column. Table and column names are not escaped.
    int CountReferences(char const* table, char const* column, int id);

    /// The same for the folder with this id and all folders below it.
    int CountReferencesToTree(char const* table, char const* column, int folderId);

    ProductRemainder RemainderOfProduct(int id);
    /// Writes the columns back. Returns false on failure.
    [[nodiscard]] bool WriteRemainderOfProduct(int id, ProductRemainder const& remainder);

    /// Returns whether the text matches a pattern of SQLite's GLOB.
    bool Matches(QString const& text, QString const& glob);

    /// Returns the ids of all schedules in ascending order.
    QVector<int> ScheduleIds();

    /// Adds a row with the values of the record and returns its id, or -1 if the store has failed.
    int AddSchedule(sync::config::ScheduleEntry const& schedule);

    /// Calls `take` with the id and the path of each folder of a root, the root's own included, in ascending order of
    /// ids. Memory does not grow with them. Returns false if the store has failed.
    [[nodiscard]] bool ReadFoldersOf(int rootId, std::function<void(int id, QString const& clientPath)> const& take);

    /// Returns the folders whose file system is on record, with it; none if the store does not keep them.
    QHash<int, FolderOrigin> FolderOrigins();

    /// Records the file system of a folder, or forgets it if there is none to record. Does nothing if the store does
    /// not keep them. Returns false if the store has failed.
    [[nodiscard]] bool SetFolderOrigin(int folderId, std::optional<FolderOrigin> const& origin);

    /// Forgets the file systems of folders that are no longer on record. Returns false if the store has failed.
    [[nodiscard]] bool RemoveOriginsOfMissingFolders();

private:
    QVector<int> _Integers(QString const& statement, std::optional<int> id = {});
    int _Count(QString const& statement, int id);

    std::shared_ptr<sync::interf::factory::IDatabaseFactory> const _store;
    OriginRecords const _origins;
};

} // namespace tandryctl
