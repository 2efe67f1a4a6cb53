#pragma once

#include "tools/carry/Export.h"
#include "tools/carry/PathMaps.h"

namespace tandry::carry {

/// Why a file was not imported.
struct ImportFault
{
    /// From 1 up; 0 if the reason is not in the file.
    qint64 line = 0;
    /// The key in the line; null if the reason concerns none.
    QString field;
    /// Null if the store has failed; its `LastError` then tells why.
    QString reason;
};

/// How a store keeps the highest id that a table has given.
enum class IdRecord
{
    /// In SQLite's table `sqlite_sequence`, which inserts with an id of their own raise too.
    SqliteSequence,
    /// In a sequence of PostgreSQL, which inserts with an id of their own leave as it is.
    ServerSequence
};

/// Puts the records of an export into an empty store: one without records, except for the default schedule.
///
/// All records or none: they are written in one client transaction. They get ids above all that the store has given, in
/// the order of their numbers. The memory does not depend on how many they are.
class Import
{
public:
    /// The device must outlive this object.
    Import(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store,
           QIODevice& device,
           std::vector<PathMap> maps,
           IdRecord idRecord = IdRecord::SqliteSequence);
    ~Import();

    /// Reads the first line. Returns nothing on failure.
    [[nodiscard]] std::optional<RecordCounts> Prepare(ImportFault& fault);

    /// Reads and writes the records after `Prepare`. Returns false on failure; the store is then as it was.
    [[nodiscard]] bool Write(ImportFault& fault, CarryProgress const& progress);

    /// Returns how many paths of records have been moved by the maps.
    [[nodiscard]] qint64 movedPaths() const;

private:
    Q_DISABLE_COPY_MOVE(Import)

    class Lines;

    std::unique_ptr<Lines> const _lines;
};

} // namespace tandry::carry
