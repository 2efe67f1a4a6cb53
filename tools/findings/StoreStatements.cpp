#include "tools/findings/StoreStatements.h"

#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"

namespace tandry::findings {

using sync::interf::IQSqlQueryWrapper;

StoreStatements::StoreStatements(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store)
    : _store(std::move(store))
{}

void StoreStatements::Read(QString const& statement, Values const& values, TakeRow const& take)
{
    auto const query = _Run(statement, values);
    while (_works && query->next())
        take(*query);
    _works = _works && query->lastError().isEmpty(); // `next` returns false after the last row and on a failure
}

QVariant StoreStatements::Value(QString const& statement, Values const& values)
{
    auto const query = _Run(statement, values);
    if (!_works || !query->next())
        return {};
    return query->value(0);
}

void StoreStatements::Write(QString const& statement, Values const& values)
{
    static_cast<void>(_Run(statement, values));
}

std::shared_ptr<IQSqlQueryWrapper> StoreStatements::_Run(QString const& statement, Values const& values)
{
    if (!_works)
        return nullptr;
    auto query = _store->CreateQuery();
    static_cast<void>(query->prepare(statement)); // `exec` fails too
    for (auto const& [placeholder, value] : values)
        query->bindValue(QString::fromLatin1(placeholder), value);
    _works = query->exec();
    return query;
}

} // namespace tandry::findings
