#pragma once

#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <vector>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace tandry::findings {

/// A column in which two records differ. A column that refers to another record has that record's name as its value.
struct ColumnDifference
{
    QString column;
    QVariant before;
    QVariant after;
    /// Whether the values are secrets or documents, which are not to be shown.
    bool isPrivate = false;
};

/// A record that one store has and the other has not, or that differs in both.
struct RecordDifference
{
    enum class Change
    {
        Added,
        Removed,
        Changed
    };

    Change change;
    QString table;
    /// The record's path, or another name that tells it from others.
    QString name;
    /// Empty unless the record is changed.
    std::vector<ColumnDifference> columns;
};

/// Compares the records of two stores of this version, on one of which nothing else may write meanwhile.
///
/// Records are matched by their names, not by their ids: servers by their URLs, accounts by domain and user, products
/// by server and key, folders and files by their paths, schedules and file systems by the path of their folder. Of
/// several records of the same name, the first matches the first, and so on, in the order of their ids. References,
/// those in the documents of links included, are compared by the names of what they refer to; a reference to a row that
/// is not there by its number.
///
/// Both stores are read in the order of the names, which their indices give; only ids and names of base files, which no
/// index has, are kept in memory.
class StoreComparison
{
public:
    using Store = std::shared_ptr<sync::interf::factory::IDatabaseFactory>;
    using Take = std::function<void(RecordDifference const&)>;

    StoreComparison(Store before, Store after);

    /// Passes each difference to `take`, table by table and in the order of the names. Returns false if a store has
    /// failed; its `LastError` tells why.
    [[nodiscard]] bool Compare(Take const& take);

private:
    Store const _before;
    Store const _after;
};

} // namespace tandry::findings
