#pragma once

#include "database/sqlite/LogIndex.h"

#include <QtGlobal>

#include <array>
#include <optional>
#include <vector>

struct sqlite3;
struct sqlite3_file;

namespace sync::database {

/// The part of a write-ahead log behind its last commit, where failed commits and rolled back transactions leave their
/// frames.
///
/// SQLite does not read it while a connection is open. If all connections end without closing, the next connection uses
/// every frame whose checksum continues the chain, and so a commit that failed at its flush comes back.
class LogTail
{
public:
    /// REQUIRES: the handle has begun a write transaction on a database with a log, and has written nothing in it.
    explicit LogTail(sqlite3* handle);

    /// Prevents, durably, that any commit in the tail comes back. Returns SQLite's result code.
    [[nodiscard]] int Erase();

    /// Returns the number of commits behind a damaged frame; nothing if the log cannot be read. SQLite stops reading at
    /// that frame, and drops the commits without an error. A program that is killed leaves none, unless it was just
    /// writing the last page of a commit.
    [[nodiscard]] std::optional<int> CountDroppedCommits();

private:
    using Pair = std::array<quint32, 2>;

    /// The header of a frame.
    struct Frame
    {
        quint32 page = 0;
        quint32 commitSize = 0; // of the database in pages; 0 unless the frame ends a commit
        Pair salts{};
        Pair checksum{};
    };

    bool Read(void* bytes, int size, qint64 offset);
    bool ReadHeader(bool& isIntact);
    bool ReadFrame(qint64 offset, Frame& frame, std::vector<unsigned char>& bytes);
    Pair Continue(Pair sum, unsigned char const* data, int size) const;

    sqlite3* _handle;
    sqlite3_file* _log = nullptr;
    int _code;
    LogIndex::Header _lastCommit;
};

} // namespace sync::database
