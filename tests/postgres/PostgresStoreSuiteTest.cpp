#include "postgres/PostgresDatabaseFactory.h"
#include "postgres/support/PostgresServer.h"
#include "postgres/support/ServerRawStore.h"
#include "storesuite/StoreSuite.h"

namespace {

using tandry::test::PostgresServer;

class PostgresProfile : public tandry::storesuite::StoreUnderTest
{
public:
    ~PostgresProfile() override
    {
        tandry::test::ServerRawStore(_uri).Run(QStringLiteral("DROP SCHEMA IF EXISTS tandry_%1 CASCADE").arg(_profile));
    }

    std::shared_ptr<tandry::storesuite::IDatabaseFactory> Open() override
    {
        sync::database::OpenOptions options;
        options.busyTimeoutMsec = 50; // longer waits are for this same thread
        return sync::database::PostgresDatabaseFactory::Open(_uri, nullptr, options);
    }

private:
    QString const _profile = PostgresServer::NewProfile();
    QString const _uri = PostgresServer::Shared().Uri(_profile);
};

} // namespace

TANDRY_STORE_SUITE(Postgres, [] { return std::make_unique<PostgresProfile>(); });
