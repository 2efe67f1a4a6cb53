#pragma once

#include "database/file/FileIdentity.h"
#include "database/file/StoreSchema.h"

#include <QtGlobal>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace sync::database {

/// The commits of this process to one file and the tables that they changed, for those who watch the file. Any thread
/// may call any operation.
///
/// Commits have the numbers of `CommitCounter`. A connection announces its commit while it holds SQLite's write lock,
/// when nobody else can take the number, and settles it afterwards. A watcher that finds a number that was not
/// announced knows that another process has taken it.
class OwnCommits
{
public:
    class Watcher;

    /// Returns what all connections of this process to the file share.
    static std::shared_ptr<OwnCommits> Of(FileIdentity const& file);

    OwnCommits() = default;
    Q_DISABLE_COPY_MOVE(OwnCommits)

    bool isWatched() const noexcept { return _isWatched.load(std::memory_order_relaxed); }

    /// REQUIRES: SQLite's write lock, and that the last commit has the number before this one.
    void Announce(quint32 number, schema::TableSet tables);
    /// Call this after the commit. `isCommitted` is false if it has failed or had nothing to write.
    void Settle(quint32 number, bool isCommitted);

private:
    std::mutex _mutex; // guards the watchers too
    std::vector<Watcher*> _watchers;
    std::atomic<bool> _isWatched{false};
};

/// What one watcher has seen of the commits to a file.
class OwnCommits::Watcher
{
public:
    explicit Watcher(std::shared_ptr<OwnCommits> commits);
    ~Watcher();
    Q_DISABLE_COPY_MOVE(Watcher)

    /// The tables that were changed, and whether that is all.
    struct Advance
    {
        schema::TableSet tables = 0;
        /// False if this process is just finishing a commit, whose tables come with a later call.
        bool isComplete = true;
    };

    /// Regards everything as seen up to the commit with this number.
    void StartAt(quint32 number);
    /// Returns what the commits since the last call have changed, up to the one with this number, which the counter
    /// shows. All tables if one of them was not this process's.
    Advance AdvanceTo(quint32 number);

private:
    friend class OwnCommits;

    /// Consecutive commits.
    struct Range
    {
        quint32 first;
        quint32 last;
        schema::TableSet tables;
        bool isSettled;
    };

    void Announce(quint32 number, schema::TableSet tables);
    void Settle(quint32 number, bool isCommitted);

    std::shared_ptr<OwnCommits> const _commits;
    quint32 _seen = 0;
    std::vector<Range> _ranges;
};

} // namespace sync::database
