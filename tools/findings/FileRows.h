#pragma once

#include "config/FileConfiguration.h"
#include "config/RecordColumns.h"
#include "tools/findings/StoreStatements.h"

#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tandry::findings {

/// Which files to read. Without a condition, all files of the type.
struct FileConditions
{
    sync::config::FileConfigurationType type = sync::config::FileConfigurationTypeFile;
    std::optional<int> folder;
    std::optional<int> root;
    std::optional<int> status;
    /// A pattern of SQLite's GLOB that the name matches.
    std::optional<QString> name;
};

using FileColumn = sync::config::RecordColumn<sync::config::FileConfiguration>;

/// Reads some columns of files, whatever their number, in ascending order of ids unless another order is asked for.
///
/// A manager's listing returns all records at once. This reads pages, as `PagedRows` describes.
///
/// Belongs to a thread, like the connection of the store.
class FileRows
{
public:
    /// The values of the columns, in their order, as `RecordColumn::Get` returns them for a record of the manager.
    using Row = std::vector<QVariant>;

    FileRows(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store,
             FileConditions conditions,
             QVector<FileColumn const*> columns);

    /// Reads in the order of a column's values, and of ids where they are the same. Keeps the value and the id of each
    /// file in memory. The comparison is that of the values in a record: texts by their UTF-16 code units, no text like
    /// an empty one, no time like 1970-01-01.
    void SortBy(FileColumn const& column, Qt::SortOrder order);

    /// Calls `take` with each row, or with the first ones up to a limit.
    void Read(std::function<void(Row const&)> const& take, std::optional<int> limit = {});

    /// Returns the number of rows that match the conditions.
    qint64 Count();

    /// Returns false after a failure of the store, which has the reason. The rows are then incomplete.
    bool works() const { return _statements.works(); }

private:
    QString _Where() const;
    StoreStatements::Values _Values() const;
    QString _Select(QVector<FileColumn const*> const& columns) const;
    void _ReadPages(QVector<FileColumn const*> const& columns,
                    std::function<void(qint64 id, Row& row)> const& take,
                    std::optional<int> limit = {});

    StoreStatements _statements;
    FileConditions const _conditions;
    char const* const _table;
    QVector<FileColumn const*> const _columns;
    /// The ids of all rows, if they are sorted.
    std::optional<std::vector<qint64>> _order;
};

/// Returns whether a column's value comes before another one: numbers and times by their size, texts by their UTF-16
/// code units; an invalid value comes first.
bool IsValueLess(QVariant const& left, QVariant const& right);

} // namespace tandry::findings
