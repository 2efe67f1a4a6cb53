#include "postgres/PostgresDatabaseFactory.h"

#include "database/store/OpenStore.h"
#include "database/store/StoreDatabase.h"
#include "postgres/PostgresChanges.h"
#include "postgres/PostgresQuery.h"
#include "postgres/PostgresStore.h"

#include <utility>

namespace sync::database {

PostgresDatabaseFactory::PostgresDatabaseFactory(std::shared_ptr<PostgresStore> store)
    : _store(std::move(store))
{}

PostgresDatabaseFactory::~PostgresDatabaseFactory()
{
    _store->Close();
}

std::shared_ptr<PostgresDatabaseFactory>
PostgresDatabaseFactory::Open(QString const& uri, QString* error, OpenOptions const& options)
{
    return OpenWithWords(error, [&](StoreError& reason) { return Open(uri, reason, options); });
}

std::shared_ptr<PostgresDatabaseFactory>
PostgresDatabaseFactory::Open(QString const& uri, StoreError& error, OpenOptions const& options)
{
    return OpenProfile(uri, error, options, false);
}

std::shared_ptr<PostgresDatabaseFactory> PostgresDatabaseFactory::OpenState(QString const& uri, StoreError& error)
{
    OpenOptions options;
    options.mode = OpenMode::ReadOnly;
    return OpenProfile(uri, error, options, true);
}

std::shared_ptr<PostgresDatabaseFactory>
PostgresDatabaseFactory::OpenProfile(QString const& uri, StoreError& error, OpenOptions const& options, bool holdsState)
{
    return OpenStore<PostgresDatabaseFactory>(error, [&](std::shared_ptr<PostgresDatabaseFactory>& factory) {
        ServerAddress address;
        if (Failure failure = ServerAddress::Parse(uri, address))
            return failure;
        factory.reset(
            new PostgresDatabaseFactory(std::make_shared<PostgresStore>(std::move(address), options, holdsState)));
        factory->_store->SetFactory(factory);
        return factory->_store->Open();
    });
}

bool PostgresDatabaseFactory::HasPassword(QString const& uri)
{
    ServerAddress address;
    if (!ServerAddress::Parse(uri, address))
        return !address.secrets.empty();
    // As far as it can be seen in a text that cannot be read. A keyword may be percent-encoded.
    QString const text = QString::fromUtf8(QByteArray::fromPercentEncoding(uri.toUtf8())).remove(QLatin1Char(' '));
    QString const rest = text.section(QStringLiteral("://"), 1);
    bool const hasUserAndPassword =
        rest.contains(QLatin1Char(':')) && rest.lastIndexOf(QLatin1Char('@')) > rest.indexOf(QLatin1Char(':'));
    return hasUserAndPassword || text.contains(QStringLiteral("password="), Qt::CaseInsensitive);
}

void PostgresDatabaseFactory::SetConnectionLimit(int connections)
{
    ServerHandle::SetLimit(connections);
}

std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> PostgresDatabaseFactory::CreateDatabase()
{
    return std::make_shared<StoreDatabase>(_store);
}

std::shared_ptr<sync::interf::IQSqlQueryWrapper> PostgresDatabaseFactory::CreateQuery()
{
    return std::make_shared<PostgresQuery>(_store->Connection());
}

QString PostgresDatabaseFactory::name() const
{
    return _store->address().name;
}

template <class Operation>
bool PostgresDatabaseFactory::Answer(Operation const& operation)
{
    std::shared_ptr<PostgresConnection> const connection = _store->Connection();
    Failure const failure = connection != nullptr ? operation(*connection) : _store->NoConnection();
    if (failure && connection != nullptr)
        connection->errors().Record(*failure);
    return !failure;
}

bool PostgresDatabaseFactory::SetNotices(bool on)
{
    return Answer([on](PostgresConnection& connection) { return connection.SetNotices(on); });
}

std::unique_ptr<StoreChanges> PostgresDatabaseFactory::WatchChanges()
{
    auto changes = std::make_unique<PostgresChanges>(_store);
    bool tells = false;
    if (!Answer([&](PostgresConnection&) { return changes->Open(tells); }) || !tells)
        return nullptr;
    return changes;
}

std::optional<StoreError> PostgresDatabaseFactory::LastError() const
{
    return _store->LastError();
}

void PostgresDatabaseFactory::ClearError()
{
    _store->ClearError();
}

} // namespace sync::database
