#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace sync::database {
class SqliteDatabaseFactory;
}

namespace tandry::findings {

/// How much a finding matters.
enum class Severity
{
    /// The client does not find rows, or does something that its user does not expect.
    Fault,
    /// The state is valid, but its user should know of it.
    Note,
};

/// A kind of finding.
struct FindingKind
{
    /// Stable: scripts rely on it.
    char const* code;
    Severity severity;
    /// The effect on the client, as a sentence.
    char const* meaning;
    /// The action of `Fix` or, if there is none, the advice to the user, as a sentence.
    char const* remedy;
    bool isFixable = false;
};

/// Returns all kinds, in the order in which they are looked for. Made at the first call and kept.
std::vector<FindingKind> const& FindingKinds();

/// A row that a finding is about.
struct FoundRow
{
    /// Null for damage of the file.
    QString table;
    /// Nothing for damage, and for a row that is missing.
    std::optional<int> id;
    /// The row's path or name, if it has one.
    QString name;
    /// The faulty value, such as "parentId 7".
    QString detail;
};

/// The rows of one kind of finding.
struct Finding
{
    FindingKind const* kind;
    /// At least one.
    std::vector<FoundRow> rows;
};

/// Called after each kind that was looked for.
using FindingProgress = std::function<void()>;

/// Looks for all kinds of findings, and returns those that the store has. Changes nothing. If the file is damaged, this
/// is the only finding, since queries can then return anything.
///
/// Values of enumerations that the library does not name belong to the client and are no finding. While other programs
/// write, each kind is looked for in a later state of the store. Returns nothing if the store fails; the reason is in
/// its `LastError`.
[[nodiscard]] std::optional<std::vector<Finding>>
FindAll(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store, FindingProgress const& progress = {});

/// Looks for the findings about one row, as far as the row and those that it names tell of them. That leaves out
/// damage, rings, twins, overlaps, paths that are alike, and what is in documents. Takes the same time in a store of
/// any size. Changes nothing. Returns nothing if the store fails; the reason is in its `LastError`.
[[nodiscard]] std::optional<std::vector<Finding>>
FindInRow(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store, char const* table, int id);

} // namespace tandry::findings
