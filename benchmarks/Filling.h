#pragma once

#include "benchmarks/Failure.h"
#include "benchmarks/SampleRecords.h"
#include "benchmarks/SqlBackend.h"
#include "config/Managers.h"
#include "database/TransactionalScope.h"

#include <memory>

namespace sync::benchmarks {

/// Adds the sample servers, accounts and products to an empty store.
inline void AddAccounts(std::shared_ptr<interf::factory::IDatabaseFactory> const& factory)
{
    config::Managers const managers(factory);
    database::TransactionalScope const scope;
    for (int number = 0; number < SampleRecords::AccountRows; ++number) {
        config::ServerConfiguration server = SampleRecords::Server(number);
        config::AuthenticationConfiguration account = SampleRecords::Account(number);
        config::ProductConfiguration product = SampleRecords::Product(number);
        Require(managers.servers->Add(server) && managers.accounts->Add(account) && managers.products->Add(product),
                "filling a sample store failed");
    }
}

/// Adds the sample folders and files in one transaction.
template <class Api>
void AddRecords(SqlBackend<Api>& backend, SampleRecords const& records)
{
    backend.Begin();
    for (int number = 0; number < records.folderCount(); ++number) {
        config::FolderConfiguration folder = records.Folder(number);
        backend.AddFolder(folder);
    }
    for (int number = 0; number < records.fileCount(); ++number) {
        config::FileConfiguration file = records.File(number);
        backend.InsertFile(file);
    }
    backend.Commit();
}

} // namespace sync::benchmarks
