#pragma once

#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace sync::interf {
class IQSqlQueryWrapper;
namespace factory {
class IDatabaseFactory;
}
} // namespace sync::interf

namespace tandry::findings {

/// Runs statements that no manager offers. After the first failure nothing runs any more, so that callers need to ask
/// only once, at the end.
class StoreStatements
{
public:
    /// Placeholders and their values.
    using Values = std::vector<std::pair<char const*, QVariant>>;
    using TakeRow = std::function<void(sync::interf::IQSqlQueryWrapper& row)>;

    explicit StoreStatements(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store);

    /// Calls `take` for each row of the result.
    void Read(QString const& statement, Values const& values, TakeRow const& take);
    /// Returns the first column of the first row; an invalid value if there is none.
    QVariant Value(QString const& statement, Values const& values = {});
    void Write(QString const& statement, Values const& values = {});

    bool works() const { return _works; }

private:
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> _Run(QString const& statement, Values const& values);

    std::shared_ptr<sync::interf::factory::IDatabaseFactory> const _store;
    bool _works = true;
};

} // namespace tandry::findings
