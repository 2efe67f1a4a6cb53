#include "tools/carry/Snapshot.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/TemporaryFolder.h"

namespace tandry::carry {

using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::findings::TemporaryFolder;

Snapshot::Snapshot()
    : _folder(TemporaryFolder().filePath(QStringLiteral("tandry-snapshot-XXXXXX")))
{}

Snapshot::~Snapshot() = default;

std::unique_ptr<Snapshot> Snapshot::Take(SqliteDatabaseFactory& store, StoreError& error)
{
    std::unique_ptr<Snapshot> snapshot(new Snapshot);
    if (!snapshot->_folder.isValid()) {
        error.kind = StoreErrorKind::ReadOnly;
        error.text = QStringLiteral("%1 cannot hold a copy of the store: %2")
                         .arg(TemporaryFolder().path(), snapshot->_folder.errorString());
        return nullptr;
    }
    QString const path = snapshot->_folder.filePath(QStringLiteral("store.db"));
    if (!store.Backup(path)) {
        error = store.LastError().value_or(error);
        return nullptr;
    }
    snapshot->_store = SqliteDatabaseFactory::Open(path, error);
    return snapshot->_store == nullptr ? nullptr : std::move(snapshot);
}

} // namespace tandry::carry
