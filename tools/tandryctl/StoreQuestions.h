#pragma once

#include <QString>
#include <QVector>

#include <memory>
#include <optional>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace tandryctl {

/// What the tool has to know of the tables and no manager answers: who refers to a row, and what can't be read back
/// from a record. Statements of its own over the store's public interface; it writes nothing.
///
/// A failure answers like a miss, as with the managers: the store's last error tells.
class StoreQuestions
{
public:
    explicit StoreQuestions(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store);

    /// How many rows of the table hold this id in the column. Names, here and below, come from the source alone.
    int CountNaming(char const* table, char const* column, int id);

    /// The same for the folder with this id and all folders below it together.
    int CountNamingTree(char const* table, char const* column, int folderId);

    QVector<int> ScheduleIds();

    /// A product's record keeps its server to itself.
    std::optional<int> ServerOfProduct(int productId);

private:
    QVector<int> _Integers(QString const& statement, std::optional<int> id = {});
    int _Count(QString const& statement, int id);

    std::shared_ptr<sync::interf::factory::IDatabaseFactory> const _store;
};

} // namespace tandryctl
