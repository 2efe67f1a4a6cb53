#pragma once

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

#include <QString>
#include <QVariant>
#include <QVector>

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

/// Short forms of common uses of a store's queries.
namespace tandry::test {

using Bindings = std::initializer_list<std::pair<char const*, QVariant>>;

/// Returns a query with its statement prepared and its values bound.
inline std::shared_ptr<sync::interf::IQSqlQueryWrapper>
Prepared(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> query = factory.CreateQuery();
    static_cast<void>(query->prepare(statement));
    for (auto const& [placeholder, value] : bindings)
        query->bindValue(QString::fromLatin1(placeholder), value);
    return query;
}

/// Runs a statement and returns the result of `exec`.
inline bool Execute(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    return Prepared(factory, statement, bindings)->exec();
}

/// Returns the first column of all rows.
inline std::vector<QVariant>
Column(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    std::vector<QVariant> values;
    auto const query = Prepared(factory, statement, bindings);
    if (query->exec()) {
        while (query->next())
            values.push_back(query->value(0));
    }
    return values;
}

/// Returns the first column of the first row, or an invalid value if there is none.
inline QVariant
Single(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    std::vector<QVariant> const values = Column(factory, statement, bindings);
    return values.empty() ? QVariant() : values.front();
}

/// Adds a server with this alias and no other value.
inline bool AddServer(sync::interf::factory::IDatabaseFactory& factory, QString const& alias)
{
    return Execute(
        factory, QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES (:alias);"), {{":alias", alias}});
}

inline int CountServers(sync::interf::factory::IDatabaseFactory& factory)
{
    return Single(factory, QStringLiteral("SELECT count(*) FROM ServerConfiguration")).toInt();
}

} // namespace tandry::test
