#include "database/SqliteDatabaseFactory.h"
#include "storesuite/StoreSuite.h"

#include <QTemporaryDir>

namespace {

/// Stands for a client's own factory.
class ClientStore : public tandry::storesuite::StoreUnderTest
{
public:
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> Open() override
    {
        sync::database::OpenOptions options;
        options.busyTimeoutMsec = 50;
        return sync::database::SqliteDatabaseFactory::Open(
            _folder.filePath(QStringLiteral("store.db")), nullptr, options);
    }

private:
    QTemporaryDir _folder;
};

} // namespace

TANDRY_STORE_SUITE(Client, [] { return std::make_unique<ClientStore>(); });
