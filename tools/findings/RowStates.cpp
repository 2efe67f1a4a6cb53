#include "tools/findings/RowStates.h"

#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/StoreStatements.h"
#include "tools/findings/TableNames.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tandry::findings {

using sync::interf::IQSqlQueryWrapper;

namespace {

struct WatchedTable
{
    char const* name;
    bool hasStatus;
    /// A row's name in SQL.
    char const* rowName;
};

constexpr std::array<WatchedTable, 8> Tables{{{Servers, false, "coalesce(davUrl, webServiceUrl)"},
                                              {Accounts, false, "userName"},
                                              {Products, false, "name"},
                                              {Folders, true, "clientPath"},
                                              {Files, true, "clientPath"},
                                              {GeneratedFiles, true, "clientPath"},
                                              {BaseFiles, true, "clientPath"},
                                              {Schedules, false, "NULL"}}};

} // namespace

RowStates::RowStates(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store)
    : _store(std::move(store))
    , _rows(Tables.size())
{}

bool RowStates::Look(std::function<void(RowChange const&)> const& take)
{
    using Kind = RowChange::Kind;
    for (std::size_t table = 0; table < Tables.size(); ++table) {
        Rows now;
        if (!_Read(table, now))
            return false;
        std::optional<Rows> const before = std::exchange(_rows[table], std::move(now));
        if (!before)
            continue;
        auto const status = [&](Row const& row) {
            return Tables[table].hasStatus ? std::make_optional(row.status) : std::nullopt;
        };
        char const* const name = Tables[table].name;
        auto old = before->begin();
        for (Row const& row : *_rows[table]) {
            for (; old != before->end() && old->id < row.id; ++old)
                take({Kind::Removed, name, old->id, status(*old), std::nullopt});
            if (old == before->end() || old->id != row.id) {
                take({Kind::Added, name, row.id, std::nullopt, status(row)});
                continue;
            }
            if (old->status != row.status)
                take({Kind::Status, name, row.id, status(*old), status(row)});
            ++old;
        }
        for (; old != before->end(); ++old)
            take({Kind::Removed, name, old->id, status(*old), std::nullopt});
    }
    return true;
}

QString RowStates::NameOf(char const* table, int id)
{
    auto const* const found = std::find_if(
        Tables.begin(), Tables.end(), [table](WatchedTable const& t) { return qstrcmp(t.name, table) == 0; });
    if (found == Tables.end())
        return {};
    return StoreStatements(_store)
        .Value(
            QStringLiteral("SELECT %1 FROM %2 WHERE id = :id").arg(QLatin1String(found->rowName), QLatin1String(table)),
            {{":id", id}})
        .toString();
}

bool RowStates::_Read(std::size_t table, Rows& rows)
{
    StoreStatements statements(_store);
    statements.Read(
        QStringLiteral("SELECT id, %1 FROM %2 ORDER BY id")
            .arg(QLatin1String(Tables[table].hasStatus ? "syncStatus" : "0"), QLatin1String(Tables[table].name)),
        {},
        [&](IQSqlQueryWrapper& row) {
            rows.push_back({row.value(0).toInt(), row.value(1).toInt()});
        });
    return statements.works();
}

} // namespace tandry::findings
