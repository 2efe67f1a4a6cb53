#pragma once

#include "database/StoreFactory.h"

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tandry::test {

/// A row's table and the text that identifies it there; and the rows with their states, texts of other columns.
using RowName = std::pair<QByteArray, QByteArray>;
using RowStates = std::map<RowName, QByteArray>;

/// The new state of one row; nothing if the row is removed.
struct RowChange
{
    RowName row;
    std::optional<QByteArray> state;
};

/// A call of a manager and the rows that it changes.
struct PlannedWrite
{
    /// Whether all rows change in one transaction; otherwise they change one after the other.
    bool atomic = true;
    std::vector<RowChange> changes;
};

/// Returns the value of an environment variable, by which a soak makes a test longer, or `otherwise`.
int SoakNumber(char const* variable, int otherwise);
/// Returns the number of interruptions in a test: the value of TANDRY_SOAK_ROUNDS, or `otherwise`.
int Rounds(int otherwise = 30);

/// Writes through all managers until a call fails or a commit is lost, and returns 1 then. Writes each call to `report`
/// before it starts and after it has returned true; returns 1 if `report` cannot be written or the store is null. Files
/// that links lead to are created in the folder `place`. Files and generated files must have different ids: the parent
/// of a generated file is either, and the writer uses both.
int WriteUntilFailure(std::shared_ptr<sync::database::StoreFactory> const& store,
                      QString const& place,
                      unsigned seed,
                      std::FILE* report);

/// Reads the report of a process that runs `WriteUntilFailure`: its acknowledged writes, and the pending one.
class WriterReport
{
public:
    /// `rows` are the rows of the store before the process started.
    WriterReport(std::FILE* report, RowStates rows)
        : _report(report)
        , _rows(std::move(rows))
    {}

    /// Reads until `count` further writes have been acknowledged. Returns false if the process ends before.
    bool ReadAcknowledgements(int count);
    /// Reads the rest of the report of a process that has ended.
    void ReadRest();

    int acknowledged() const { return _acknowledged; }
    /// Returns the rows after the acknowledged writes.
    RowStates const& rows() const { return _rows; }
    /// Returns a description of each row that differs from the acknowledged state. The pending write may be there or
    /// not; if it is atomic, all of it or nothing.
    std::vector<QByteArray> Lost(RowStates const& found) const;

private:
    bool ReadLine();

    std::FILE* _report;
    int _acknowledged = 0;
    RowStates _rows;
    std::optional<PlannedWrite> _pending;
};

/// Reads the rows of a store with a new connection.
RowStates ReadRows(QString const& path);

} // namespace tandry::test
