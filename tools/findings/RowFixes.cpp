#include "tools/findings/RowFixes.h"

#include "tools/findings/Examination.h"
#include "tools/findings/Fix.h"
#include "tools/findings/FolderPlaces.h"
#include "tools/findings/FolderRings.h"
#include "tools/findings/TableNames.h"

#include <QDir>
#include <QVariant>

#include <algorithm>
#include <optional>
#include <tuple>

namespace tandry::findings {

namespace {

using Rows = std::vector<FoundRow>;
using Fixed = std::vector<FixedRow>;

bool IsIn(FoundRow const& row, char const* table)
{
    return row.table == QLatin1String(table);
}

/// Returns the number that the statement finds for the row; nothing for NULL or no row. %1 is the row's table.
std::optional<int> NumberOf(Examination& examination, FoundRow const& row, char const* statement)
{
    QVariant const number = examination.statements().Value(
        QString::fromLatin1(statement).replace(QStringLiteral("%1"), row.table), {{":id", row.id.value_or(0)}});
    return number.isNull() ? std::nullopt : std::optional<int>(number.toInt());
}

void UpdateRow(Examination& examination, FoundRow const& row, char const* column, QVariant const& value, Fixed& fixed)
{
    examination.statements().Write(
        QStringLiteral("UPDATE %1 SET %2 = :value WHERE id = :id").arg(row.table, QLatin1String(column)),
        {{":value", value}, {":id", row.id.value_or(0)}});
    fixed.push_back({row, QStringLiteral("%1 set to %2").arg(QLatin1String(column), value.toString())});
}

void RemoveRow(Examination& examination, FoundRow const& row, Fixed& fixed)
{
    examination.statements().Write(QStringLiteral("DELETE FROM %1 WHERE id = :id").arg(row.table),
                                   {{":id", row.id.value_or(0)}});
    fixed.push_back({row, QStringLiteral("removed")});
}

/// Leaves a folder alone whose root is not on record.
void MoveFolder(Examination& examination, FolderPlaces& places, FoundRow const& row, Fixed& fixed)
{
    auto const rootId = NumberOf(examination, row, "SELECT rootId FROM %1 WHERE id = :id");
    if (auto const parent = places.FolderFor(row.name, rootId.value_or(0), row.id.value_or(0)))
        UpdateRow(examination, row, "parentId", *parent, fixed);
}

} // namespace

void RemoveRows(Examination& examination, Rows const& rows, Fixed& fixed)
{
    for (FoundRow const& row : rows)
        RemoveRow(examination, row, fixed);
}

void MoveFoldersByPath(Examination& examination, Rows const& rows, Fixed& fixed)
{
    FolderPlaces places(examination);
    for (FoundRow const& row : rows)
        MoveFolder(examination, places, row, fixed);
}

void BreakFolderRings(Examination& examination, Rows const& rows, Fixed& fixed)
{
    FolderPlaces places(examination);
    for (std::vector<int> const& ring : FindFolderRings(examination)) {
        // A folder's path is longer than that of its real parent, so the shortest one in a ring lies in the wrong
        // place.
        FoundRow const* topmost = nullptr;
        auto const rank = [](FoundRow const& row) { return std::make_tuple(row.name.size(), row.id); };
        for (FoundRow const& row : rows) {
            bool const isInRing = std::find(ring.begin(), ring.end(), row.id.value_or(0)) != ring.end();
            if (isInRing && (topmost == nullptr || rank(row) < rank(*topmost)))
                topmost = &row;
        }
        if (topmost != nullptr)
            MoveFolder(examination, places, *topmost, fixed);
    }
}

void AssignFoldersToRoots(Examination& examination, Rows const& rows, Fixed& fixed)
{
    FolderPlaces places(examination);
    for (FoundRow const& row : rows) {
        std::optional<int> root = places.RootAbove(row.id.value_or(0));
        if (!root) {
            auto const account = NumberOf(examination, row, "SELECT authenticationId FROM %1 WHERE id = :id");
            root = places.RootContaining(row.name, account.value_or(-1));
        }
        if (root)
            UpdateRow(examination, row, "rootId", *root, fixed);
        else
            RemoveRow(examination, row, fixed);
    }
}

void SetOwnRootIds(Examination& examination, Rows const& rows, Fixed& fixed)
{
    for (FoundRow const& row : rows)
        UpdateRow(examination, row, "rootId", row.id.value_or(0), fixed);
}

void SetAccountsOfRoots(Examination& examination, Rows const& rows, Fixed& fixed)
{
    for (FoundRow const& row : rows) {
        auto const account =
            NumberOf(examination,
                     row,
                     "SELECT account.id FROM %1 AS folder "
                     "JOIN FolderConfiguration AS root ON root.id = folder.rootId "
                     "JOIN AuthenticationConfiguration AS account ON account.id = root.authenticationId "
                     "WHERE folder.id = :id");
        UpdateRow(examination, row, "authenticationId", account.value_or(-1), fixed);
    }
}

void ClearProducts(Examination& examination, Rows const& rows, Fixed& fixed)
{
    for (FoundRow const& row : rows)
        UpdateRow(examination, row, "productConfigurationId", -1, fixed);
}

void MoveFilesByPath(Examination& examination, Rows const& rows, Fixed& fixed)
{
    FolderPlaces places(examination);
    for (FoundRow const& row : rows) {
        std::optional<int> folder;
        if (IsIn(row, Files)) {
            auto const rootId = NumberOf(examination, row, "SELECT rootFolderId FROM %1 WHERE id = :id");
            folder = places.FolderFor(row.name, rootId.value_or(0));
            if (!folder)
                continue;
        }
        else {
            folder = NumberOf(examination,
                              row,
                              "SELECT folder.id FROM %1 AS derived "
                              "JOIN FileConfiguration AS source ON source.id = derived.parentFileId "
                              "JOIN FolderConfiguration AS folder ON folder.id = source.folderConfigurationId "
                              "WHERE derived.id = :id");
        }
        UpdateRow(examination, row, "folderConfigurationId", folder.value_or(-1), fixed);
    }
}

void AssignFilesToRoots(Examination& examination, Rows const& rows, Fixed& fixed)
{
    FolderPlaces const places(examination);
    for (FoundRow const& row : rows) {
        std::optional<int> root;
        if (IsIn(row, Files)) {
            root = NumberOf(examination,
                            row,
                            "SELECT root.id FROM %1 AS file "
                            "JOIN FolderConfiguration AS folder ON folder.id = file.folderConfigurationId "
                            "JOIN FolderConfiguration AS root ON root.id = folder.rootId AND root.parentId = 0 "
                            "WHERE file.id = :id");
            if (!root)
                root = places.RootContaining(row.name, std::nullopt);
        }
        else {
            root = NumberOf(examination,
                            row,
                            "SELECT root.id FROM %1 AS derived "
                            "JOIN FileConfiguration AS source ON source.id = derived.parentFileId "
                            "JOIN FolderConfiguration AS root ON root.id = source.rootFolderId AND root.parentId = 0 "
                            "WHERE derived.id = :id");
        }
        if (root)
            UpdateRow(examination, row, "rootFolderId", *root, fixed);
        else
            RemoveRow(examination, row, fixed);
    }
}

void CleanPaths(Examination& examination, Rows const& rows, Fixed& fixed)
{
    for (FoundRow const& row : rows) {
        QString const path = QDir::cleanPath(row.name);
        if (path != row.name)
            UpdateRow(examination, row, "clientPath", path, fixed);
    }
}

void AddDefaultSchedule(Examination& examination, Rows const& rows, Fixed& fixed)
{
    examination.statements().Write(QStringLiteral(
        "INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) VALUES (0, 0, 30)"));
    for (FoundRow const& row : rows)
        fixed.push_back({row, QStringLiteral("added")});
}

} // namespace tandry::findings
