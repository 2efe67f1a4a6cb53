#pragma once

#include "database/SqliteDatabaseFactory.h"

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace tandry::test {

/// A row by its table and its unique text, with what is to be seen of its other columns.
using RowName = std::pair<QByteArray, QByteArray>;
using RowStates = std::map<RowName, QByteArray>;

/// What a write makes of one row; nothing for a row that goes.
struct RowChange
{
    RowName row;
    std::optional<QByteArray> state;
};

/// One call of a manager, and the rows that it changes.
struct PlannedWrite
{
    /// Whether the rows change together; else one after the other, each by itself.
    bool whole = true;
    std::vector<RowChange> changes;
};

/// How often a test breaks off what writes: 30 times, unless TANDRY_SOAK_ROUNDS asks for more.
int Rounds();

/// Makes a store for `WriteWithoutEnd`, and gives the rows that it begins with.
RowStates MakeStoreForWriting(QString const& path, sync::database::JournalMode mode);

/// Writes through all managers without end, telling `news` of each call before it and after it was answered with true.
/// Returns 1 when an answer was false or not kept, or when `news` can't be written.
int WriteWithoutEnd(QString const& path, unsigned seed, std::FILE* news);

/// What such a process told before it ended: the answered writes, and the one that was under way.
class WriterNews
{
public:
    /// `rows` are those that the store held before.
    WriterNews(std::FILE* news, RowStates rows)
        : _news(news)
        , _rows(std::move(rows))
    {}

    /// Reads on until so many further writes were answered; false when the process ended before.
    bool ReadAnswers(int count);
    /// Reads what is left of a process that has ended.
    void ReadRest();

    int answered() const { return _answered; }
    /// Rows as the answered writes left them.
    RowStates const& rows() const { return _rows; }
    /// The rows that differ from what the answers promise, each in words. A write without an answer may show or not:
    /// whole or not at all, where its rows change together.
    std::vector<QByteArray> Lost(RowStates const& found) const;

private:
    bool ReadLine();

    std::FILE* _news;
    int _answered = 0;
    RowStates _rows;
    std::optional<PlannedWrite> _underWay;
};

/// The rows that a store holds now, by a connection of its own.
RowStates ReadRows(QString const& path);

} // namespace tandry::test
