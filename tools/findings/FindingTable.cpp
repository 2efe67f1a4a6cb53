#include "tools/findings/FindingTable.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/Documents.h"
#include "tools/findings/Examination.h"
#include "tools/findings/Fix.h"
#include "tools/findings/FolderRings.h"
#include "tools/findings/PathNotes.h"
#include "tools/findings/RowFixes.h"
#include "tools/findings/TableNames.h"
#include "tools/findings/Twins.h"

#include <QStringList>

namespace tandry::findings {

namespace {

/// The first and last millisecond of the years 1 to 9999, as dates are stored.
constexpr char const* DatesWithText = "-62135596800000 AND 253402300799999";

QString Sql(char const* text)
{
    return QString::fromLatin1(text);
}

/// The value of a column for `FoundRow::detail`.
QString Shown(char const* column)
{
    return Sql("'%1 ' || coalesce(bad.%1, 'NULL')").arg(Sql(column));
}

/// The rows whose id in this column, NULL included, is that of no row in the table.
Condition NamesNone(char const* table, char const* column, char const* target)
{
    return {table,
            Sql("(bad.%1 IS NULL OR bad.%1 NOT IN (SELECT id FROM %2))").arg(Sql(column), Sql(target)),
            Shown(column)};
}

/// The rows whose id in this column is not that of a root.
Condition NamesNoRoot(char const* table, char const* column)
{
    return {table,
            Sql("(bad.%1 IS NULL OR bad.%1 NOT IN (SELECT id FROM FolderConfiguration WHERE parentId = 0))")
                .arg(Sql(column)),
            Shown(column)};
}

/// The same rows, but only those that another condition holds for too.
Condition If(QString const& where, Condition condition)
{
    condition.where = where + Sql(" AND ") + condition.where;
    return condition;
}

/// The same rows, without those where -1 or NULL says that there is no such row.
Condition Optional(char const* column, Condition const& condition)
{
    return If(Sql("bad.%1 <> -1").arg(Sql(column)), condition);
}

Condition NamesAGoneProduct(char const* table)
{
    Condition condition = Optional("productConfigurationId", NamesNone(table, "productConfigurationId", Products));
    condition.readsWholeTable = true;
    return condition;
}

QString const IsNoRoot = Sql("bad.parentId IS NOT 0");

QString const IsInDrive = Sql("bad.clientPath GLOB '[A-Za-z]:/*'");

/// The first part finds paths that do not begin with a slash by their index.
QString const IsRelative = Sql("(bad.clientPath IS NULL OR bad.clientPath < '/' OR bad.clientPath >= '0') "
                               "AND NOT coalesce(%1, 0)")
                               .arg(IsInDrive);

/// True for what `QDir::cleanPath` changes in an absolute path. The root of a drive keeps its slash. The first part
/// leaves few rows to the others.
QString const IsNotClean =
    Sql("(bad.clientPath || '/') GLOB '*/[/.]*' AND (substr(bad.clientPath, 1, 1) = '/' OR %1) "
        "AND (instr(bad.clientPath, '//') > 0 "
        "OR instr(bad.clientPath || '/', '/./') > 0 OR instr(bad.clientPath || '/', '/../') > 0 "
        "OR (substr(bad.clientPath, -1) = '/' AND bad.clientPath <> '/' AND bad.clientPath NOT GLOB '[A-Za-z]:/'))")
        .arg(IsInDrive);

/// One condition for each table that has local paths.
std::vector<Condition> AboutPaths(QString const& where, bool readsWholeTable)
{
    std::vector<Condition> conditions;
    for (char const* table : {Folders, Files, GeneratedFiles, BaseFiles})
        conditions.push_back({table, where, Sql("NULL"), readsWholeTable});
    return conditions;
}

struct DateColumns
{
    char const* table;
    std::vector<char const*> columns;
};

std::vector<DateColumns> const& AllDateColumns()
{
    static std::vector<char const*> const ofFiles{"createdDateTime", "lastModifiedDateTime", "lastOperationTime"};
    static std::vector<DateColumns> const all{
        {Folders, {"lastOperationTime", "lastSyncTime"}},
        {Files, ofFiles},
        {GeneratedFiles, ofFiles},
        {BaseFiles, ofFiles},
        {Schedules, {"startTime", "expireTime"}},
    };
    return all;
}

QString IsOutOfRange(char const* column)
{
    return Sql("(bad.%1 NOT BETWEEN %2 AND typeof(bad.%1) IN ('integer', 'real'))")
        .arg(Sql(column), Sql(DatesWithText));
}

/// One condition for each table with dates.
std::vector<Condition> AboutDates()
{
    std::vector<Condition> conditions;
    for (auto const& [table, columns] : AllDateColumns()) {
        QStringList outside;
        QString detail = Sql("CASE");
        for (char const* column : columns) {
            outside.append(IsOutOfRange(column));
            detail += Sql(" WHEN ") + outside.last() + Sql(" THEN ") + Shown(column);
        }
        conditions.push_back({table, outside.join(Sql(" OR ")), detail + Sql(" END"), true});
    }
    return conditions;
}

void ClearDates(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed)
{
    for (auto const& [table, columns] : AllDateColumns()) {
        for (char const* column : columns)
            examination.statements().Write(
                Sql("UPDATE %1 AS bad SET %2 = NULL WHERE %3").arg(Sql(table), Sql(column), IsOutOfRange(column)));
    }
    for (FoundRow const& row : rows)
        fixed.push_back({row, Sql("dates out of range cleared")});
}

void FindDamage(Examination& examination, std::vector<FoundRow>& rows)
{
    // On failure the store's error tells.
    for (QString const& damage : examination.store()->FindDamage().value_or(QStringList()))
        rows.push_back({QString(), std::nullopt, QString(), damage});
}

void FindBrokenDocuments(Examination& examination, std::vector<FoundRow>& rows)
{
    rows = examination.documents().broken;
}

void FindDocumentsOverLimits(Examination& examination, std::vector<FoundRow>& rows)
{
    rows = examination.documents().overLimits;
}

void FindLinksToNothing(Examination& examination, std::vector<FoundRow>& rows)
{
    rows = examination.documents().linksToNothing;
}

void FindMissingDefaultSchedule(Examination& examination, std::vector<FoundRow>& rows)
{
    if (examination.statements().Value(Sql("SELECT 1 FROM Schedules WHERE folderConfigurationId = 0")).isNull())
        rows.push_back({Sql(Schedules), std::nullopt, QString(), Sql("no row with folderConfigurationId 0")});
}

std::vector<FindingEntry> MakeTable()
{
    return {
        // First: the queries behind the others need whole pages.
        {{"damage",
          Severity::Fault,
          "The file is damaged, and the client may lose or misread any row.",
          "Copy what can still be read with 'tandryctl recover', or put a backup in its place with 'tandryctl "
          "restore'."},
         {},
         nullptr,
         FindDamage},
        {{"folder-without-parent",
          Severity::Fault,
          "No listing of a folder shows these folders, and removing the tree that they were in leaves them "
          "behind.",
          "Moves each folder into the one that its path lies in, which is added below the root if it is "
          "missing; to the root itself if the path lies outside. A folder whose root is gone too stays for "
          "folder-without-root."},
         {If(IsNoRoot, NamesNone(Folders, "parentId", Folders))},
         MoveFoldersByPath},
        {{"folder-without-root",
          Severity::Fault,
          "No root owns these folders: nothing synchronises them, and removing a root leaves them behind.",
          "Assigns each folder to the root that its parents lead to, or else to the root of its account that "
          "its path lies in. Removes the others, which a removed root has left behind."},
         {If(IsNoRoot, NamesNoRoot(Folders, "rootId"))},
         AssignFoldersToRoots},
        {{"folder-ring",
          Severity::Fault,
          "These folders lie in each other: no listing leads to them, and removing one of them never ends.",
          "Moves the folder with the shortest path of each ring as for folder-without-parent."},
         {},
         BreakFolderRings,
         FindFolderRingRows},
        {{"root-with-other-root",
          Severity::Fault,
          "The client counts these roots among the folders of another root, and removes them with it.",
          "Sets the root's rootId to its own id."},
         {{Folders, Sql("bad.parentId = 0 AND bad.rootId IS NOT bad.id"), Shown("rootId")}},
         SetOwnRootIds},
        {{"file-without-folder",
          Severity::Fault,
          "No listing of a folder shows these files, and the client finds neither account nor server for them.",
          "Moves each file into the folder that its path lies in, as for folder-without-parent; a generated or "
          "base file into the folder of its source or, without one, into none. A file whose root is gone too "
          "stays for file-without-root."},
         {NamesNone(Files, "folderConfigurationId", Folders),
          Optional("folderConfigurationId", NamesNone(GeneratedFiles, "folderConfigurationId", Folders)),
          Optional("folderConfigurationId", NamesNone(BaseFiles, "folderConfigurationId", Folders))},
         MoveFilesByPath},
        {{"file-without-root",
          Severity::Fault,
          "No root owns these files: nothing synchronises them, and removing a root leaves them behind.",
          "Assigns each file to the root of its folder, or else to the root that its path lies in; a generated "
          "or base file to the root of its source. Removes the others from the store, which a removed root has "
          "left behind; no file on the disk is touched."},
         {NamesNoRoot(Files, "rootFolderId"),
          Optional("rootFolderId", NamesNoRoot(GeneratedFiles, "rootFolderId")),
          Optional("rootFolderId", NamesNoRoot(BaseFiles, "rootFolderId"))},
         AssignFilesToRoots},
        {{"generated-without-source",
          Severity::Fault,
          "The file that these were generated from is gone, so nothing renews or removes them.",
          "Removes the rows; no file on the disk is touched."},
         {NamesNone(GeneratedFiles, "parentFileId", Files)},
         RemoveRows},
        {{"link-to-nothing",
          Severity::Fault,
          "These links name a file by an id that is gone; the client then looks for the file by the link's "
          "path.",
          "Sets the id to that of the file recorded at the link's path or, without one, to -1, as the client "
          "does."},
         {},
         ResolveLinks,
         FindLinksToNothing},
        {{"account-without-server",
          Severity::Fault,
          "The client finds no server for these accounts, nor for their folders and files.",
          "Not fixed, since only the user knows which server may receive the account's password: name it with "
          "'tandryctl account update', or remove the account with 'tandryctl account remove'."},
         {NamesNone(Accounts, "serverId", Servers)}},
        {{"product-without-server",
          Severity::Fault,
          "The client finds these products for no server.",
          "Not fixed, since only the user knows which server may receive the product's key: name it with "
          "'tandryctl product update', or remove the product with 'tandryctl product remove'."},
         {NamesNone(Products, "serverId", Servers)}},
        {{"folder-without-account",
          Severity::Fault,
          "The account of these folders is gone, so the client finds no server for them and their files.",
          "Sets the account to that of the folder's root or, if that is gone too, to -1, none."},
         {Optional("authenticationId", NamesNone(Folders, "authenticationId", Accounts))},
         SetAccountsOfRoots},
        {{"folder-without-product",
          Severity::Fault,
          "The product of these folders is gone, so the client finds no consumer key for them.",
          "Sets the product to -1, none."},
         {NamesAGoneProduct(Folders)},
         ClearProducts},
        {{"file-without-product",
          Severity::Fault,
          "The product of these files is gone, so the client finds no consumer key for them.",
          "Sets the product to -1, none."},
         {NamesAGoneProduct(Files), NamesAGoneProduct(GeneratedFiles), NamesAGoneProduct(BaseFiles)},
         ClearProducts},
        {{"twin",
          Severity::Fault,
          "The client finds only the row with the lowest id by its path, and updates only this one; listings "
          "show the others as they once were.",
          "Keeps the row with the lowest id, lets everything that named the others name it, and removes the "
          "others."},
         {},
         MergeTwins,
         FindTwinRows},
        {{"path-not-clean",
          Severity::Fault,
          "The client looks paths up as clean text, so it does not find these rows.",
          "Cleans the path as the client does. A row that another one with this path precedes becomes a twin."},
         AboutPaths(IsNotClean, true),
         CleanPaths},
        {{"path-relative",
          Severity::Fault,
          "These paths do not tell where the folder or file is, so the client finds nothing there.",
          "Not fixed, since nothing tells which folder the path starts from: remove the record, and scan its "
          "root again."},
         AboutPaths(IsRelative, false)},
        {{"document-broken",
          Severity::Fault,
          "The client reads only what precedes the error in these documents, and its next update of the row "
          "drops the rest.",
          "Writes the document anew with what the client reads in it, as its next update would."},
         {},
         WriteDocumentsAnew,
         FindBrokenDocuments},
        {{"document-over-limits",
          Severity::Fault,
          "These documents exceed the client's limits: it reads nothing of them, and its next update of the row "
          "drops them.",
          "Not fixed, since the document is whole: let the program that wrote it write a smaller one."},
         {},
         nullptr,
         FindDocumentsOverLimits},
        {{"date-out-of-range",
          Severity::Fault,
          "These dates are before the year 1 or after 9999 and have no text form, so they are lost in "
          "documents and in JSON.",
          "Sets these dates to NULL, none."},
         AboutDates(),
         ClearDates},
        {{"schedule-ends-early",
          Severity::Fault,
          "These schedules end before they begin, so they never apply.",
          "Not fixed, since only the user knows which of the two times is wrong: correct it with 'tandryctl schedule "
          "update'."},
         {{Schedules, Sql("bad.expireTime < bad.startTime"), Shown("folderConfigurationId")}}},
        {{"roots-overlap",
          Severity::Note,
          "These roots share a part of the disk, so its files are recorded in both, and the client takes a "
          "path for that of the first root that it finds.",
          "Not fixed, since only the user knows which root to keep: remove the other one with 'tandryctl root "
          "remove'."},
         {},
         nullptr,
         FindRootsThatOverlap},
        {{"server-roots-overlap",
          Severity::Note,
          "These roots of one account share a part of the server, so a change of one root's files there is a "
          "change of the other's.",
          "Not fixed, since only the user knows which root to keep: remove the other one with 'tandryctl root "
          "remove'."},
         {},
         nullptr,
         FindServerRootsThatOverlap},
        {{"paths-alike",
          Severity::Note,
          "These paths differ only in case or in their Unicode form: on a file system that ignores this, one "
          "file replaces the other.",
          "Not fixed, since the files are the user's: rename one of them on the disk, and scan its root again."},
         {},
         nullptr,
         FindPathsAlike},
        {{"schedule-without-folder",
          Severity::Note,
          "These schedules have outlived their folders and never apply again, since ids are not given twice.",
          "Removes the schedules."},
         {If(Sql("bad.folderConfigurationId IS NOT 0"), NamesNone(Schedules, "folderConfigurationId", Folders))},
         RemoveRows},
        {{"no-default-schedule",
          Severity::Note,
          "Folders without a schedule of their own get the client's built-in one, with the interval 30 and no "
          "times.",
          "Adds the one of a new store, with the interval 30 and no times."},
         {},
         AddDefaultSchedule,
         FindMissingDefaultSchedule},
    };
}

} // namespace

std::vector<FindingEntry> const& FindingTable()
{
    static std::vector<FindingEntry> const table = MakeTable();
    return table;
}

} // namespace tandry::findings
