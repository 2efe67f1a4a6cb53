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
/// Looking at it costs no system call. It is gone with its handle.
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

        /// Where the last commit ends in the log, in bytes.
        qint64 end() const { return LogHeaderSize + qint64(lastFrame) * (FrameHeaderSize + pageSize); }
    };

    /// A view of nothing.
    LogIndex() = default;
    /// REQUIRES: the handle has read from its database. Without a log, or when the index cannot be had, the view is one
    /// of nothing.
    explicit LogIndex(sqlite3* handle);

    bool isValid() const noexcept { return _bytes != nullptr; }

    /// The number of frames up to the last commit; 0 for a view of nothing. May be called at any time.
    quint32 lastFrame() const noexcept;
    /// How many bytes the log has at least; 0 for a view of nothing. May be called at any time.
    qint64 sizeOfLog() const noexcept;
    /// REQUIRES: a valid view, and a write transaction on the handle.
    Header header() const noexcept;

private:
    void const volatile* _bytes = nullptr;
};

} // namespace sync::database
