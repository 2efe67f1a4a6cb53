#pragma once

#include <QtGlobal>

#include <array>

struct sqlite3;

namespace sync::database {

// Sizes in the format that SQLite documents for its log, in bytes.
constexpr int LogHeaderSize = 32;
constexpr int FrameHeaderSize = 24;

/// The index of a write-ahead log, which all connections of a database share in memory: a view of its first bytes.
///
/// Reading it takes no system call. The view is valid as long as its handle.
class LogIndex
{
public:
    /// The index's description of the log as of the last commit.
    struct Header
    {
        quint32 lastFrame = 0;
        int pageSize = 0; // 0 before the first commit
        bool hasBigEndianChecksums = false;
        std::array<quint32, 2> checksum{};
        std::array<quint32, 2> salts{};

        /// The end of the last commit in the log, in bytes.
        qint64 end() const { return LogHeaderSize + qint64(lastFrame) * (FrameHeaderSize + pageSize); }
    };

    /// An empty view.
    LogIndex() = default;
    /// REQUIRES: the handle has read from its database. The view is empty if there is no log or SQLite does not provide
    /// the index.
    explicit LogIndex(sqlite3* handle);

    bool isValid() const noexcept { return _bytes != nullptr; }

    /// The number of frames up to the last commit; 0 for an empty view. May be called at any time.
    quint32 lastFrame() const noexcept;
    /// The number of commits since the index was made; 0 for an empty view. May be called at any time.
    quint32 commits() const noexcept;
    /// The least size of the log, in bytes; 0 for an empty view. May be called at any time.
    qint64 sizeOfLog() const noexcept;
    /// REQUIRES: a valid view, and a write transaction on the handle.
    Header header() const noexcept;

private:
    void const volatile* _bytes = nullptr;
};

} // namespace sync::database
