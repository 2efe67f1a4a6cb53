#pragma once

#include "tools/carry/CarriedTables.h"
#include "tools/findings/StoreStatements.h"

#include <QVariant>

#include <memory>

namespace sync::interf {
class IQSqlQueryWrapper;
namespace factory {
class IDatabaseFactory;
}
} // namespace sync::interf

namespace tandry::carry {

/// Calls `take` for each row in ascending order of the ids, with the id as the first column and the columns of the
/// table behind it. Reads page after page, so that no query stays open for long.
void ReadRows(findings::StoreStatements& statements,
              CarriedTable const& table,
              findings::StoreStatements::TakeRow const& take);

/// The same with the ids alone.
void ReadIds(findings::StoreStatements& statements,
             CarriedTable const& table,
             findings::StoreStatements::TakeRow const& take);

/// Inserts rows with ids of the caller's choice.
class RowWriter
{
public:
    RowWriter(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& store, CarriedTable const& table);
    ~RowWriter();

    /// The values are those of the table's columns. Returns false if the store has failed.
    [[nodiscard]] bool Insert(qint32 id, std::vector<QVariant> const& values);

private:
    std::vector<QString> _placeholders;
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> _insert;
};

} // namespace tandry::carry
