// Runs the suite on a store that breaks the rule named in the environment.

#include "stores/FaultyStore.h"
#include "storesuite/StoreSuite.h"

#include <QTemporaryDir>

namespace {

class FaultyStoreUnderTest : public tandry::storesuite::StoreUnderTest
{
public:
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> Open() override
    {
        return tandry::test::OpenFaultyStore(_folder.filePath(QStringLiteral("store.db")),
                                             qEnvironmentVariable("TANDRY_STORE_FAULT"));
    }

private:
    QTemporaryDir _folder;
};

} // namespace

TANDRY_STORE_SUITE(Faulty, [] { return std::make_unique<FaultyStoreUnderTest>(); });
