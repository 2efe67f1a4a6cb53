#include "database/file/OwnCommits.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace sync::database {

namespace {

/// More than this are not kept for a watcher that does not look: it is told that all tables were changed.
constexpr std::size_t MostRanges = 1024;

/// Whether a number comes after another one. The counter begins anew after 2^32 commits.
bool IsAfter(quint32 number, quint32 other)
{
    return static_cast<qint32>(number - other) > 0;
}

} // namespace

std::shared_ptr<OwnCommits> OwnCommits::Of(FileIdentity const& file)
{
    static std::mutex mutex;
    static std::map<FileIdentity, std::weak_ptr<OwnCommits>> files;
    std::lock_guard<std::mutex> const lock(mutex);
    for (auto entry = files.begin(); entry != files.end();)
        entry = entry->second.expired() ? files.erase(entry) : std::next(entry);
    std::weak_ptr<OwnCommits>& entry = files[file];
    std::shared_ptr<OwnCommits> commits = entry.lock();
    if (commits == nullptr) {
        commits = std::make_shared<OwnCommits>();
        entry = commits;
    }
    return commits;
}

void OwnCommits::Announce(quint32 number, schema::TableSet tables)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    for (Watcher* watcher : _watchers)
        watcher->Announce(number, tables);
}

void OwnCommits::Settle(quint32 number, bool isCommitted)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    for (Watcher* watcher : _watchers)
        watcher->Settle(number, isCommitted);
}

OwnCommits::Watcher::Watcher(std::shared_ptr<OwnCommits> commits)
    : _commits(std::move(commits))
{
    std::lock_guard<std::mutex> const lock(_commits->_mutex);
    _commits->_watchers.push_back(this);
    _commits->_isWatched.store(true, std::memory_order_relaxed);
}

OwnCommits::Watcher::~Watcher()
{
    std::lock_guard<std::mutex> const lock(_commits->_mutex);
    std::vector<Watcher*>& watchers = _commits->_watchers;
    watchers.erase(std::remove(watchers.begin(), watchers.end(), this), watchers.end());
    _commits->_isWatched.store(!watchers.empty(), std::memory_order_relaxed);
}

void OwnCommits::Watcher::Announce(quint32 number, schema::TableSet tables)
{
    if (_ranges.size() == MostRanges)
        _ranges.clear();
    _ranges.push_back({number, number, tables, false});
}

void OwnCommits::Watcher::Settle(quint32 number, bool isCommitted)
{
    auto const settled = std::find_if(_ranges.begin(), _ranges.end(), [number](Range const& range) {
        return range.first == number && !range.isSettled;
    });
    if (settled == _ranges.end())
        return; // announced before the watcher came
    settled->isSettled = true;
    auto const before = std::find_if(_ranges.begin(), _ranges.end(), [number](Range const& range) {
        return range.last + 1 == number && range.isSettled;
    });
    if (isCommitted && before != _ranges.end()) {
        before->last = number;
        before->tables |= settled->tables;
    }
    if (!isCommitted || before != _ranges.end())
        _ranges.erase(settled);
}

void OwnCommits::Watcher::StartAt(quint32 number)
{
    std::lock_guard<std::mutex> const lock(_commits->_mutex);
    _seen = number;
}

OwnCommits::Watcher::Advance OwnCommits::Watcher::AdvanceTo(quint32 number)
{
    std::lock_guard<std::mutex> const lock(_commits->_mutex);
    Advance advance;
    quint32 end = number;
    for (Range const& range : _ranges) {
        if (range.isSettled && IsAfter(range.last, end))
            end = range.last; // committed after the counter was read
    }
    if (IsAfter(_seen, end)) {
        // A writer was killed at the wrong moment, and the next connection has made the log's index anew.
        _ranges.clear();
        _seen = number;
        advance.tables = schema::AllTables;
        return advance;
    }
    for (Range const& range : _ranges) {
        if (!range.isSettled && IsAfter(range.first, _seen) && !IsAfter(range.first, end)) {
            end = range.first - 1;
            advance.isComplete = false;
        }
    }
    quint32 known = 0;
    for (Range const& range : _ranges) {
        if (range.isSettled && IsAfter(range.last, _seen) && !IsAfter(range.last, end)) {
            advance.tables |= range.tables;
            known += range.last - (IsAfter(range.first, _seen) ? range.first - 1 : _seen);
        }
    }
    if (known != end - _seen)
        advance.tables = schema::AllTables;
    _seen = end;
    _ranges.erase(std::remove_if(_ranges.begin(),
                                 _ranges.end(),
                                 [end](Range const& range) { return range.isSettled && !IsAfter(range.last, end); }),
                  _ranges.end());
    return advance;
}

} // namespace sync::database
