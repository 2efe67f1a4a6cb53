#pragma once

#include <vector>

/// The tables of the managers, whatever the database of the store.
namespace sync::database {

enum class ColumnType
{
    /// 64 bits.
    Integer,
    Text,
    /// A date-time, stored as the milliseconds of its clock reading.
    DateTime,
};

struct Column
{
    char const* name;
    ColumnType type;
};

struct Table
{
    char const* name;
    /// Without `id`, which is the first column of every table. Ids have 32 bits and are not given twice.
    std::vector<Column> columns;
};

struct Index
{
    char const* name;
    char const* table;
    std::vector<char const*> columns;
    /// The rows that are in the index, as the condition of a WHERE clause; null for all.
    char const* condition = nullptr;
};

std::vector<Table> const& ManagerTables();

/// One index for each way in which a statement looks rows up, and no other, since each costs at every write.
std::vector<Index> const& ManagerIndices();

/// The statement that creates the default schedule of a new store.
constexpr char const* CreateDefaultSchedule =
    "INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) VALUES (0, 0, 30)";

} // namespace sync::database
