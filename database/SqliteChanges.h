#pragma once

#include "database/StoreChanges.h"
#include "database/file/FileNotices.h"
#include "database/file/OwnCommits.h"
#include "database/file/StoreHandle.h"
#include "database/sqlite/CommitCounter.h"

#include <chrono>
#include <memory>
#include <optional>

namespace sync::database {

class SqliteStore;

/// The changes of a store in an SQLite file.
///
/// A writer's last notice comes before its commit can be seen: it writes the log, flushes it, and then changes the
/// index, which is memory and gives no notice. With a journal it writes the file, and then deletes the journal. So
/// after a notice this looks again, with growing pauses, until nobody has SQLite's write lock. Between that look and
/// the next write there is nothing to see, and that write gives a notice of its own.
///
/// A store that is read as immutable has no log to watch until another program opens it; then this opens it anew.
class SqliteChanges : public StoreChanges
{
public:
    explicit SqliteChanges(std::shared_ptr<SqliteStore> store);
    ~SqliteChanges() override;

    /// Call once; the object is of no use if it fails.
    Failure Open();

    int descriptor() const override { return _notices.descriptor(); }
    Sight Look() override;

private:
    Failure Connect();
    [[nodiscard]] bool WatchLog();
    [[nodiscard]] bool WatchFile(bool mayGetLog);
    Failure FollowStore(Sight& sight);
    /// Returns whether there is nothing more to see until the next notice.
    bool LookAtCommits(Sight& sight);

    std::shared_ptr<SqliteStore> const _store;
    FileNotices _notices;
    OwnCommits::Watcher _seen;
    /// A handle of its own, which keeps the log's index in place. Null while another program is opening the store.
    std::unique_ptr<StoreHandle> _handle;
    CommitCounter _counter; // of the handle
    std::chrono::milliseconds _pause;
    std::optional<StoreError> _error;
};

} // namespace sync::database
