#include "database/file/OpenFiles.h"

#include "database/file/StoreHeader.h"
#include "database/sqlite/ErrorTexts.h"

#include <QFile>

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <utility>

namespace sync::database {

/// The state that all handles of this process on the same file share.
struct OpenFiles::Shared
{
    /// Nothing if none of the handles has a log open.
    std::optional<Log> const log;
    /// The sizes last seen. An index does not shrink as long as a handle has it open.
    std::atomic<off_t> size{0};
    std::atomic<off_t> indexSize{0};

    explicit Shared(std::optional<Log> const& openLog)
        : log(openLog)
    {}
};

namespace {

StoreError HasSeveralNames(StoreFile const& file, FileStatus const& status)
{
    QString const words = QStringLiteral("the file has %1 names (hard links), and what is written under one of them is "
                                         "lost under the others, so the store can only be read: ")
                              .arg(status.names);
    QVector<QByteArray> const left = file.NamesOfInterruptedRestore();
    if (!left.isEmpty())
        return MakeError(file.path(),
                         SQLITE_READONLY,
                         words + QStringLiteral("a restore that was interrupted has left %1. Restore the backup again, "
                                                "or remove that name")
                                     .arg(QFile::decodeName(left.first())));
    return MakeError(file.path(),
                     SQLITE_READONLY,
                     words + QStringLiteral("remove the other names, or make a backup of the store and use that"));
}

StoreError LogWasMoved(StoreFile const& file)
{
    return MakeError(
        file.path(),
        SQLITE_READONLY_DBMOVED,
        QStringLiteral("the log beside the file (-wal) was removed or replaced, or cut, while the store was "
                       "open"));
}

StoreError LogIndexWasMoved(StoreFile const& file)
{
    return MakeError(
        file.path(),
        SQLITE_READONLY_DBMOVED,
        QStringLiteral("the index of the log beside the file (-shm) was removed or replaced, or cut, while "
                       "the store was open: close the store in all programs, then open it again"));
}

} // namespace

OpenFiles::OpenFiles(StoreFile const& file)
    : _file(file)
{}

/// Returns what the handles of this process that have the file open share. If there are none, or only handles
/// without a log while `own` has one, that is `own` from now on.
std::shared_ptr<OpenFiles::Shared> OpenFiles::Share(FileIdentity const& file, std::shared_ptr<Shared> const& own)
{
    static std::mutex mutex;
    static std::map<FileIdentity, std::weak_ptr<Shared>> files;
    std::lock_guard<std::mutex> const lock(mutex);
    auto const found = files.find(file);
    std::shared_ptr<Shared> shared = found != files.end() ? found->second.lock() : nullptr;
    if (own == nullptr || (shared != nullptr && (shared->log || !own->log)))
        return shared;
    for (auto entry = files.begin(); entry != files.end();)
        entry = entry->second.expired() ? files.erase(entry) : std::next(entry);
    files[file] = own;
    return own;
}

Failure OpenFiles::CheckBeforeOpening() const
{
    std::optional<FileStatus> const found = _file.Status();
    std::shared_ptr<Shared> const shared = found ? Share(found->identity) : nullptr;
    if (shared == nullptr || !shared->log)
        return {};
    Failure failure = CheckLogIndex(*shared);
    return failure && found->names > 1 ? Failure(HasSeveralNames(_file, *found)) : failure;
}

Failure OpenFiles::Remember(sqlite3* handle, bool hasLog)
{
    std::optional<FileStatus> const file = _file.Status();
    if (!file)
        return DescribeError(nullptr, SQLITE_READONLY_DBMOVED, _file.path());
    _identity = file->identity;
    std::optional<Log> log;
    if (hasLog) {
        std::optional<FileStatus> const index = _file.LogIndexStatus();
        if (!index)
            return LogIndexWasMoved(_file);
        std::optional<FileStatus> const found = _file.LogStatus();
        if (!found)
            return LogWasMoved(_file);
        log = Log{found->identity, index->identity};
        _index = LogIndex(handle);
    }
    _hasLog = hasLog;
    _shared = Share(file->identity, std::make_shared<Shared>(log));
    return Check(Use::Reading);
}

void OpenFiles::Forget() noexcept
{
    _shared.reset();
    _index = {};
}

Failure OpenFiles::CheckFile(Use use) const
{
    off_t const known = _shared->size.load(std::memory_order_relaxed);
    std::optional<FileStatus> const found = _file.Status();
    if (!found || found->identity != _identity)
        return DescribeError(nullptr, SQLITE_READONLY_DBMOVED, _file.path());
    if (found->size != known) {
        if (Failure failure = FollowSize(found->size, known))
            return failure;
    }
    if (use == Use::Writing && found->names > 1)
        return HasSeveralNames(_file, *found);
    return {};
}

Failure OpenFiles::Check(Use use) const
{
    if (Failure failure = CheckFile(use))
        return failure;
    if (!_hasLog)
        return {};
    if (Failure failure = CheckLogIndex(*_shared)) // before the index is read
        return failure;
    return CheckLog(_shared->log->file);
}

/// The size was `known` before it was looked at.
Failure OpenFiles::FollowSize(off_t size, off_t known) const
{
    if (size < known) {
        // Another program may have vacuumed the file; then its header says how long it is now.
        StoreHeader header;
        if (Failure failure = header.Read(_file))
            return failure;
        if (size < std::max(header.length(), qint64(1)))
            return MakeError(
                _file.path(),
                SQLITE_CORRUPT,
                QStringLiteral("the file was cut from %1 to %2 bytes while the store was open, so what was "
                               "in it is damaged")
                    .arg(known)
                    .arg(size));
    }
    _shared->size.store(size, std::memory_order_relaxed);
    return {};
}

Failure OpenFiles::CheckLogIndex(Shared& shared) const
{
    off_t const known = shared.indexSize.load(std::memory_order_relaxed);
    std::optional<FileStatus> const found = _file.LogIndexStatus();
    if (!found || found->identity != shared.log->index || found->size < known)
        return LogIndexWasMoved(_file);
    if (found->size > known)
        shared.indexSize.store(found->size, std::memory_order_relaxed);
    return {};
}

Failure OpenFiles::CheckLog(FileIdentity const& log) const
{
    qint64 const needed = _index.sizeOfLog();
    std::optional<FileStatus> const found = _file.LogStatus();
    // If that has not changed, nobody emptied the log meanwhile.
    bool const isCut = found && found->size < needed && _index.sizeOfLog() == needed;
    return found && found->identity == log && !isCut ? Failure() : LogWasMoved(_file);
}

bool OpenFiles::MayCheckpointOnClose() const noexcept
{
    if (_shared == nullptr || !_hasLog)
        return true;
    std::optional<FileStatus> const index = _file.LogIndexStatus();
    std::optional<FileStatus> const log = _file.LogStatus();
    Log const& own = *_shared->log;
    bool const isAnother = (index && index->identity != own.index) || (log && log->identity != own.file);
    bool const isCut = index && index->size < _shared->indexSize.load(std::memory_order_relaxed);
    return !isAnother && !isCut;
}

} // namespace sync::database
