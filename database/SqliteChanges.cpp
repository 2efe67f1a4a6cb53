#include "database/SqliteChanges.h"

#include "database/SqliteStore.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

#include <sys/inotify.h>

namespace sync::database {

namespace {

using namespace std::chrono_literals;

/// The first pause while another connection writes. Each is twice as long as the one before.
constexpr auto ShortestPause = 2ms;
/// Less than a user notices.
constexpr auto LongestPause = 64ms;
/// The pause after a commit, so that the commits of a loop are seen together.
constexpr auto PauseAfterNotice = 20ms;

/// The store's file was renamed or removed; the latter changes its number of names.
constexpr quint32 Moves = IN_MOVE_SELF | IN_ATTRIB;

} // namespace

SqliteChanges::SqliteChanges(std::shared_ptr<SqliteStore> store)
    : _store(std::move(store))
    , _seen(_store->ownCommits())
    , _pause(ShortestPause)
{}

SqliteChanges::~SqliteChanges() = default;

Failure SqliteChanges::Open()
{
    if (Failure failure = _notices.Check(_store->file().path()))
        return failure;
    return Connect();
}

Failure SqliteChanges::Connect()
{
    StoreFile const& file = _store->file();
    _notices.Clear();
    _counter = {};
    _handle.reset();
    auto handle = std::make_unique<StoreHandle>(file, _store->options().busyTimeoutMsec);
    if (Failure failure = handle->Open(OpenPurpose::Connection, _store->access()))
        return failure;
    if (Failure failure = _store->CheckIdentity(*handle))
        return failure;
    bool const hasLog = handle->journalMode() == JournalMode::WriteAheadLog;
    bool const isWatched = handle->isImmutable() || !hasLog ? WatchFile(handle->isImmutable()) : WatchLog();
    if (Failure failure = handle->CheckUnmoved()) // since before the watches came
        return failure;
    if (!isWatched)
        return _notices.Check(file.path());

    _counter = CommitCounter(handle->get());
    _seen.StartAt(_counter.Read().value_or(0));
    sqlite3_busy_handler(handle->get(), nullptr, nullptr); // a look does not wait
    _handle = std::move(handle);
    return {};
}

bool SqliteChanges::WatchLog()
{
    QByteArray const name(_store->file().name());
    return _notices.Watch(name, Moves) && _notices.Watch(name + LogSuffix, Moves | IN_MODIFY);
}

bool SqliteChanges::WatchFile(bool mayGetLog)
{
    StoreFile const& file = _store->file();
    return _notices.Watch(file.name(), Moves | IN_MODIFY) &&
           (!mayGetLog || _notices.Watch(file.folder(), IN_CREATE | IN_DELETE | IN_MOVED_TO));
}

/// Connects anew after another program has opened or changed a store that was read as immutable.
Failure SqliteChanges::FollowStore(Sight& sight)
{
    if (_handle != nullptr && _handle->IsUnchanged())
        return _handle->CheckUnmoved();
    Failure failure = Connect();
    if (!failure) {
        sight.tables = schema::NamesOf(schema::AllTables);
        return failure;
    }
    // The other program is just opening the store, or was killed. What it does next gives a notice.
    bool const isPassing = failure->kind == StoreErrorKind::NotClosed || failure->kind == StoreErrorKind::Locked;
    return isPassing && WatchFile(true) ? Failure() : failure;
}

bool SqliteChanges::LookAtCommits(Sight& sight)
{
    // In this order: a commit that begins after the lock was found free gives a notice later.
    bool const isOtherWriting = _counter.IsOtherWriting();
    std::optional<quint32> const number = _counter.Read();
    if (!number)
        return false;
    OwnCommits::Watcher::Advance const advance = _seen.AdvanceTo(*number);
    if (advance.tables != 0)
        sight.tables = schema::NamesOf(advance.tables);
    return !isOtherWriting && advance.isComplete;
}

StoreChanges::Sight SqliteChanges::Look()
{
    Sight sight;
    bool const hasNotice = _notices.Take();
    if (!_error) {
        if (Failure failure = FollowStore(sight))
            _error = *failure;
    }
    if (_error) {
        sight.error = _error;
        return sight;
    }
    bool isSettled = true;
    if (_handle != nullptr)
        isSettled = LookAtCommits(sight);
    else // until the next notice, but for the case that it came before the watch
        isSettled = _pause == LongestPause;

    if (!isSettled) {
        sight.pauseMsec = static_cast<int>(_pause.count());
        _pause = std::min<std::chrono::milliseconds>(2 * _pause, LongestPause);
        return sight;
    }
    _pause = ShortestPause;
    if (hasNotice)
        sight.pauseMsec = static_cast<int>(PauseAfterNotice.count());
    return sight;
}

} // namespace sync::database
