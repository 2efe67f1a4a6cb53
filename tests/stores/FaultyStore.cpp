#include "stores/FaultyStore.h"

#include "database/ScopeParticipant.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "own_store/QtSqlDatabaseFactory.h"
#include "storesuite/Statements.h"

#include <QDateTime>
#include <QMap>

#include <thread>
#include <utility>
#include <vector>

namespace tandry::test {

using own_store::QtSqlDatabaseFactory;
using sync::database::TransactionalScope;
using sync::interf::IQSqlDatabaseWrapper;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

namespace {

using Values = QMap<QString, QVariant>;

/// The correct store, the rule to break, and the state that breaking it needs.
class RuleBreaker : public sync::database::ScopeParticipant
{
public:
    RuleBreaker(QString path, QString fault)
        : _path(std::move(path))
        , _fault(std::move(fault))
        , good(QtSqlDatabaseFactory::Open(_path))
    {}

    ~RuleBreaker() override { TransactionalScope::Leave(*this); }

    bool Breaks(char const* rule) const { return _fault == QLatin1String(rule); }

    /// Called before a write runs.
    void BeforeWrite()
    {
        if (TransactionalScope::Depth() == 0 || _joined)
            return;
        if (Breaks("keeps the writes of a scope") || Breaks("commits no client transaction at a scope's end")) {
            _joined = true;
            TransactionalScope::Join(*this);
        }
    }

    void AfterWrite(bool succeeded, QString const& statement, QVariant const& id)
    {
        if (TransactionalScope::Depth() == 0)
            return;
        if (succeeded && statement == storesuite::statements::AddServer)
            _servers.push_back(id);
        if (!succeeded && Breaks("undoes only the failed statement"))
            RemoveServers();
    }

    bool CommitScope() noexcept override
    {
        _joined = false;
        if (Breaks("keeps the writes of a scope"))
            RemoveServers();
        if (Breaks("commits no client transaction at a scope's end"))
            static_cast<void>(good->CreateDatabase()->commit());
        return true;
    }

    /// Runs a statement so that it is durable immediately, even inside a scope.
    bool RunDurably(QString const& statement, Values const& values) const
    {
        bool succeeded = false;
        std::thread([&] {
            auto const other = QtSqlDatabaseFactory::Open(_path);
            auto const query = other->CreateQuery();
            static_cast<void>(query->prepare(statement));
            for (auto value = values.cbegin(); value != values.cend(); ++value)
                query->bindValue(value.key(), value.value());
            succeeded = query->exec();
        }).join();
        return succeeded;
    }

private:
    QString const _path;
    QString const _fault;

    void RemoveServers()
    {
        for (QVariant const& id : std::exchange(_servers, {})) {
            auto const query = good->CreateQuery();
            static_cast<void>(query->prepare(storesuite::statements::RemoveServer));
            query->bindValue(QStringLiteral(":id"), id);
            static_cast<void>(query->exec());
        }
    }

    bool _joined = false;
    std::vector<QVariant> _servers;

public:
    std::shared_ptr<QtSqlDatabaseFactory> const good;
    QVariant lastInsertId;
    Values lastValues;
    std::shared_ptr<IQSqlQueryWrapper> listing;
    int published = 0;
};

class FaultyQuery : public IQSqlQueryWrapper
{
public:
    explicit FaultyQuery(std::shared_ptr<RuleBreaker> breaker)
        : _breaker(std::move(breaker))
        , _query(_breaker->good->CreateQuery())
    {}

    bool prepare(QString const& statement) override
    {
        _statement = statement;
        _values.clear();
        if (_breaker->Breaks("gives each listing its own position") &&
            statement == storesuite::statements::GetServers) {
            if (_breaker->listing == nullptr)
                _breaker->listing = _breaker->good->CreateQuery();
            _query = _breaker->listing;
        }
        bool const prepared = _query->prepare(statement);
        if (_breaker->Breaks("does not keep bound values")) {
            for (auto value = _breaker->lastValues.cbegin(); value != _breaker->lastValues.cend(); ++value)
                _query->bindValue(value.key(), value.value());
        }
        return prepared;
    }

    void bindValue(QString const& placeholder, QVariant const& value) override
    {
        _values[placeholder] = Altered(value);
        _query->bindValue(placeholder, _values[placeholder]);
    }

    bool exec() override
    {
        if (_breaker->Breaks("treats an unbound placeholder as NULL") &&
            _values.size() < _statement.count(QLatin1String(" :")))
            return false;
        if (_breaker->Breaks("returns false for a bad statement")) {
            static_cast<void>(_query->exec());
            return true;
        }
        bool const writes = !_statement.startsWith(QLatin1String("SELECT"));
        if (!writes)
            return _query->exec();
        if (_breaker->Breaks("shows the writes of a scope together") && TransactionalScope::Depth() > 0 &&
            ++_breaker->published < 3)
            return _breaker->RunDurably(_statement, _values);
        _breaker->BeforeWrite();
        bool const succeeded = _query->exec();
        _breaker->lastValues = _values;
        _breaker->lastInsertId = _query->lastInsertId();
        _breaker->AfterWrite(succeeded, _statement, _breaker->lastInsertId);
        return succeeded;
    }

    bool next() override { return _query->next(); }

    bool isValid() override { return _breaker->Breaks("is on no row behind the last") || _query->isValid(); }

    QVariant value(int column) override
    {
        QVariant const value = _query->value(column);
        if (_breaker->Breaks("returns the clock reading") && value.toString().endsWith(QLatin1Char('Z'))) {
            QDateTime date = value.toDateTime();
            return date.isValid() ? QDateTime(date.date(), date.time(), Qt::LocalTime) : value;
        }
        return value;
    }

    QVariant lastInsertId() override
    {
        return _breaker->Breaks("gives each query its own id") ? _breaker->lastInsertId : _query->lastInsertId();
    }

    int numRowsAffected() override { return _breaker->Breaks("counts matching rows") ? 0 : _query->numRowsAffected(); }

private:
    QVariant Altered(QVariant const& value) const
    {
        if (value.userType() == QMetaType::QDateTime) {
            QDateTime date = value.toDateTime();
            if (_breaker->Breaks("stores the clock reading"))
                return date.toUTC();
            if (_breaker->Breaks("keeps milliseconds"))
                date.setTime(QTime(date.time().hour(), date.time().minute(), date.time().second()));
            return date;
        }
        if (value.userType() == QMetaType::QString) {
            if (_breaker->Breaks("keeps blanks"))
                return value.toString().trimmed();
            if (_breaker->Breaks("distinguishes empty from null") && value.toString().isEmpty())
                return {};
            if (_breaker->Breaks("refuses a text that it cannot keep") && value.toString().endsWith(QChar(0xD83D)))
                return value.toString().chopped(1);
        }
        if (value.userType() == QMetaType::LongLong && _breaker->Breaks("keeps 64 bits"))
            return static_cast<int>(value.toLongLong());
        return value;
    }

    std::shared_ptr<RuleBreaker> _breaker;
    std::shared_ptr<IQSqlQueryWrapper> _query;
    QString _statement;
    Values _values;
};

class FaultyDatabase : public IQSqlDatabaseWrapper
{
public:
    explicit FaultyDatabase(std::shared_ptr<RuleBreaker> breaker)
        : _breaker(std::move(breaker))
        , _database(_breaker->good->CreateDatabase())
    {}

    bool transaction() override { return _database->transaction() || _breaker->Breaks("refuses a second transaction"); }
    bool commit() override
    {
        return _database->commit() || _breaker->Breaks("refuses to end a transaction that was not begun");
    }

    bool rollback() override
    {
        return _breaker->Breaks("rolls a transaction back") ? _database->commit() : _database->rollback();
    }

private:
    std::shared_ptr<RuleBreaker> _breaker;
    std::shared_ptr<IQSqlDatabaseWrapper> _database;
};

class FaultyFactory : public IDatabaseFactory
{
public:
    FaultyFactory(QString const& path, QString const& fault)
        : _breaker(std::make_shared<RuleBreaker>(path, fault))
    {}

    std::shared_ptr<IQSqlDatabaseWrapper> CreateDatabase() override
    {
        return std::make_shared<FaultyDatabase>(_breaker);
    }

    std::shared_ptr<IQSqlQueryWrapper> CreateQuery() override { return std::make_shared<FaultyQuery>(_breaker); }

private:
    std::shared_ptr<RuleBreaker> _breaker;
};

} // namespace

std::shared_ptr<IDatabaseFactory> OpenFaultyStore(QString const& path, QString const& fault)
{
    return std::make_shared<FaultyFactory>(path, fault);
}

} // namespace tandry::test
