#include "tools/findings/LockHolders.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace tandry::findings {

namespace {

/// Bytes that SQLite locks, and the lock that others cannot have meanwhile.
struct LockedBytes
{
    off_t first;
    off_t count;
    short wanted;
};

// In the store's file. Readers share the last range, which a process locks alone when it changes the file.
constexpr LockedBytes Pending{0x40000000, 1, F_WRLCK};
constexpr LockedBytes Reserved{0x40000001, 1, F_WRLCK};
constexpr LockedBytes Exclusive{0x40000002, 510, F_RDLCK};
constexpr LockedBytes Shared{0x40000002, 510, F_WRLCK};

// In the index of its log.
constexpr LockedBytes LogWriter{120, 1, F_WRLCK};
constexpr LockedBytes LogCheckpoint{121, 1, F_WRLCK};
constexpr LockedBytes LogRecovery{122, 1, F_WRLCK};
constexpr off_t FirstLogReader = 123;
constexpr off_t LastLogReader = 127;

QByteArray ProgramOf(qint64 processId)
{
    QFile name(QStringLiteral("/proc/%1/comm").arg(processId));
    return name.open(QIODevice::ReadOnly) ? name.readAll().trimmed() : QByteArray();
}

/// A file whose locks are looked at.
class LockedFile
{
public:
    explicit LockedFile(QString const& path)
        : _descriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC))
    {}
    ~LockedFile()
    {
        if (_descriptor != -1)
            ::close(_descriptor);
    }

    bool exists() const { return _descriptor != -1; }

    /// Adds the process that holds a lock there, if any.
    void AddHolder(LockedBytes const& bytes, QVector<LockHolder>& holders) const
    {
        struct flock lock = {};
        lock.l_type = bytes.wanted;
        lock.l_whence = SEEK_SET;
        lock.l_start = bytes.first;
        lock.l_len = bytes.count;
        if (::fcntl(_descriptor, F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK)
            return;
        qint64 const processId = lock.l_pid;
        bool const isKnown = std::any_of(
            holders.begin(), holders.end(), [&](LockHolder const& holder) { return holder.processId == processId; });
        if (!isKnown)
            holders.append({processId, processId > 0 ? ProgramOf(processId) : QByteArray()});
    }

private:
    Q_DISABLE_COPY_MOVE(LockedFile)

    int const _descriptor;
};

} // namespace

QVector<LockHolder> FindLockHolders(QString const& storePath)
{
    QVector<LockHolder> holders;
    QString const path = QFileInfo(storePath).canonicalFilePath(); // where SQLite keeps the log
    LockedFile const file(path);
    LockedFile const logIndex(path + QStringLiteral("-shm"));
    for (LockedBytes const& bytes : {Pending, Reserved, Exclusive})
        file.AddHolder(bytes, holders);
    for (LockedBytes const& bytes : {LogWriter, LogCheckpoint, LogRecovery})
        logIndex.AddHolder(bytes, holders);
    if (!holders.isEmpty())
        return holders;

    // Readers hold up the commit of a journal, and a log that has reached its limit.
    if (!logIndex.exists())
        file.AddHolder(Shared, holders);
    for (off_t reader = FirstLogReader; reader <= LastLogReader; ++reader)
        logIndex.AddHolder({reader, 1, F_WRLCK}, holders);
    return holders;
}

} // namespace tandry::findings
