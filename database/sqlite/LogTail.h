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
/// SQLite reads nothing of it while any connection is open. When all of them are gone without closing, the next
/// connection takes every frame whose checksum continues the chain, and so a commit that failed at its flush comes
/// back.
class LogTail
{
public:
    /// REQUIRES: the handle has begun a write transaction on a database with a log, and has written nothing in it.
    explicit LogTail(sqlite3* handle);

    /// Makes sure that no commit in the tail can come back; on success that is durable. Returns SQLite's result code.
    [[nodiscard]] int Erase();

    /// Returns how many commits stand behind a spoilt frame. SQLite stops reading at that frame and drops them without
    /// an error. A program that is killed leaves none, unless it was writing the last page of a commit right then.
    /// Nothing if the log cannot be read.
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
