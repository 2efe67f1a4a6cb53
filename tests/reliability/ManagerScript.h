#pragma once

#include "config/Managers.h"
#include "database/StoreFactory.h"

#include <gtest/gtest.h>

#include <QMap>
#include <QString>
#include <QStringList>

#include <vector>

namespace tandry::test {

using sync::config::Managers;

/// An operation that reads, with arguments that match rows of the script's store.
struct ReadingOperation
{
    /// Interface and operation as spelt in the header; overloads and variants are told apart by a comma and a suffix.
    char const* name;
    /// Runs the operation and returns its result as a text.
    QString (*run)(Managers&);
    bool usesStore = true; // some return without accessing the store
};

/// The writes that a failed operation may leave in the store.
enum class Failing
{
    /// All of its writes if it returns true, none if it returns false.
    AllOrNothing,
    /// The writes before the failure. An operation that fails to read what it would write next may take it for missing
    /// and return true; the store then has an error.
    Parts,
    /// The same, and if it fails to read a row it may add a duplicate.
    PartsAndMore,
};

/// An operation that writes, with arguments that change the script's store.
struct WritingOperation
{
    char const* name;
    /// Runs the operation and returns its result; if that is always the same, whether the store has no error.
    bool (*run)(Managers&, sync::database::StoreFactory&);
    Failing failing = Failing::AllOrNothing;
    bool usesStore = true;
};

/// Returns the operations of all managers' interfaces.
std::vector<ReadingOperation> const& ReadingOperations();
std::vector<WritingOperation> const& WritingOperations();

/// Adds the rows that the operations are for to an empty store: a few pages of a file, with one listing that needs
/// several of them.
void FillScriptStore(Managers& managers);

/// The rows of all tables as texts, by table and id.
using RowTexts = QMap<QString, QString>;

/// The result of an operation that may have failed.
struct OperationOutcome
{
    bool answer = false;
    bool hasError = false;
    bool commitFailed = false;
    bool isUnknown = false;

    bool succeeded() const { return answer && !commitFailed; }
};

/// Compares the rows in the store with the result of an operation.
testing::AssertionResult MatchesOutcome(WritingOperation const& operation,
                                        OperationOutcome const& outcome,
                                        RowTexts const& before,
                                        RowTexts const& after,
                                        RowTexts const& found);

/// Compares rows, and names the first that differs; `what` goes in front.
testing::AssertionResult Same(RowTexts const& expected, RowTexts const& found, char const* what);

} // namespace tandry::test
