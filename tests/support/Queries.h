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

/// Short ways to talk to a store as a client of its query objects does.
namespace tandry::test {

using Bindings = std::initializer_list<std::pair<char const*, QVariant>>;

/// A query with its statement prepared and its values bound.
inline std::shared_ptr<sync::interf::IQSqlQueryWrapper>
Prepared(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> query = factory.CreateQuery();
    static_cast<void>(query->prepare(statement));
    for (auto const& [placeholder, value] : bindings)
        query->bindValue(QString::fromLatin1(placeholder), value);
    return query;
}

/// The answer of `exec`.
inline bool Execute(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    return Prepared(factory, statement, bindings)->exec();
}

/// The first column of all rows.
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

/// The first column of the first row; invalid without one.
inline QVariant
Single(sync::interf::factory::IDatabaseFactory& factory, QString const& statement, Bindings bindings = {})
{
    std::vector<QVariant> const values = Column(factory, statement, bindings);
    return values.empty() ? QVariant() : values.front();
}

/// Adds a server with this alias, the smallest row that a store can take.
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
