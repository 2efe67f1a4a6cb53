#include "tools/findings/ColumnReference.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "tools/findings/TableNames.h"

#include <map>
#include <string>
#include <utility>

namespace tandry::findings {

using namespace sync::config;

namespace {

/// The part of a column's description that the library's list of columns does not contain.
struct Description
{
    char const* meaning;
    /// What the named values mean.
    std::map<int, char const*> values = {};
};

using Descriptions = std::map<std::string, Description>;

constexpr char const* GivenId = "Row id, given by the store.";
constexpr char const* OwnProperties = "The client's own properties, as an XML document.";
constexpr char const* ServerId = "The server's id.";
constexpr char const* ProductId = "The product's id; -1 for none.";
constexpr char const* ClientPath = "Path on this computer, absolute, with / as separator.";
constexpr char const* ServerPath = "Path on the server.";
constexpr char const* OperationTime = "When the client last did something with it.";
constexpr char const* OwnerId = "The owner, as the server calls it.";
constexpr char const* ClientsNumber = "A number of the client's own.";

/// The rights to folders and to files have the same bits.
std::map<int, char const*> const& Privileges()
{
    static std::map<int, char const*> const bits{
        {0, "No right at all."},
        {FolderPrivilegeView, "See that it is there."},
        {FolderPrivilegeDownload, "Fetch it from the server."},
        {FolderPrivilegeUpdate, "Change it."},
        {FolderPrivilegeDelete, "Remove it."},
        {FolderPrivilegeShare, "Give others access to it."},
    };
    return bits;
}

Descriptions ServerDescriptions()
{
    return {
        {"id", {GivenId}},
        {"alias", {"Name that the user gave the server; without one, it is derived from the URL."}},
        {"davUrl", {"URL of the WebDAV access."}},
        {"webServiceUrl", {"URL of the web service."}},
        {"nameValueProperties", {OwnProperties}},
        {"binaryDiffEncoder", {"How differences of binary files are encoded."}},
    };
}

Descriptions AccountDescriptions()
{
    return {
        {"id", {GivenId}},
        {"domain", {"Domain of the user."}},
        {"domainId", {"The domain, as the server calls it."}},
        {"userName", {"Name of the user."}},
        {"encryptedPassword", {"Always NULL: a store holds no password."}},
        {"nameValueProperties", {OwnProperties}},
        {"serverId", {ServerId}},
    };
}

Descriptions ProductDescriptions()
{
    return {
        {"id", {GivenId}},
        {"name", {"Name of the product."}},
        {"consumerKey", {"Key by which the server knows the product."}},
        {"consumerSecret", {"Secret that goes with the key."}},
        {"serverId", {ServerId}},
        {"nameValueProperties", {OwnProperties}},
    };
}

Descriptions FolderDescriptions()
{
    return {
        {"id", {GivenId}},
        {"authenticationId", {"The account's id."}},
        {"name", {"Last part of the path."}},
        {"remoteShortKey", {"Short key of the folder on the server."}},
        {"remoteLongKey", {"Long key of the folder on the server."}},
        {"clientPath", {ClientPath}},
        {"serverPath", {ServerPath}},
        {"syncStatus",
         {"State of the synchronisation.",
          {{FolderStatusInitial, "As a new record has it."},
           {FolderStatusOutOfSync, "To be synchronised."},
           {FolderStatusPlaced, "Recorded by its path alone."}}}},
        {"nameValueProperties", {OwnProperties}},
        {"parentId", {"The folder above; 0 for a root, -1 for a folder without a place."}},
        {"lastOperationTime", {OperationTime}},
        {"lastSyncTime", {"When the client last synchronised it."}},
        {"folderOption",
         {"The part of a root that is synchronised.",
          {{FolderOptionTopFilesOnly, "Where honoured, only the files directly in the root."}}}},
        {"lastOperationType", {ClientsNumber}},
        {"syncDriveType", {ClientsNumber}},
        {"rootId", {"The root's id; a root has its own."}},
        {"syncOption", {ClientsNumber}},
        {"ownerId", {OwnerId}},
        {"privileges", {"The user's rights.", Privileges()}},
        {"serverRoot", {"Root on the server."}},
        {"productConfigurationId", {ProductId}},
        {"serverFolderId", {"The folder, as the server calls it."}},
    };
}

Descriptions FileDescriptions()
{
    return {
        {"id", {GivenId}},
        {"folderConfigurationId", {"The id of the folder that holds the file."}},
        {"name", {"Last part of the path."}},
        {"clientPath", {ClientPath}},
        {"serverPath", {ServerPath}},
        {"checkSum", {"Checksum in a form of the client's choice."}},
        {"createdDateTime", {"When the file was created."}},
        {"lastModifiedDateTime", {"When the content last changed."}},
        {"syncStatus",
         {"State of the synchronisation.",
          {{FileSyncStatusSyncing, "Being synchronised."},
           {FileSyncStatusNotSynced, "New or changed, to be synchronised."},
           {FileSyncStatusLinkDiscovered, "Recorded because a link leads to it."}}}},
        {"lastOperationType", {ClientsNumber}},
        {"size", {"In bytes."}},
        {"nameValueProperties", {OwnProperties}},
        {"lastOperationTime", {OperationTime}},
        {"rootFolderId", {"The root's id."}},
        {"syncOption",
         {"Options.",
          {{FileSyncOptionNone, "No option."},
           {FileSyncOptionRepathRequired, "The path is to be set anew; other machines get it too."}}}},
        {"parentFileId", {"For a generated file, the file that it was made from; else -1."}},
        {"fileType",
         {"Kind of file, one for each of the three tables.",
          {{FileConfigurationTypeFile, "In FileConfiguration."},
           {FileConfigurationTypeGenerated, "In GeneratedFileConfiguration."},
           {FileConfigurationTypeBase, "In BaseFileConfiguration."}}}},
        {"ownerId", {OwnerId}},
        {"privileges", {"The user's rights.", Privileges()}},
        {"productConfigurationId", {ProductId}},
        {"serverFileId", {"The file, as the server calls it."}},
        {"serverFileVersionId", {"The file's version, as the server calls it."}},
        {"checkSumMD5", {"MD5 checksum in a form of the client's choice."}},
        {"fileLinks", {"Links to other files, and their date, as an XML document."}},
    };
}

Descriptions ScheduleDescriptions()
{
    return {
        {"id", {GivenId}},
        {"folderConfigurationId", {"The folder's id; 0 for the default schedule."}},
        {"startTime", {"From when it holds; a clock reading without a time zone."}},
        {"expireTime", {"Until when it holds; a clock reading without a time zone."}},
        {"syncScheduleType", {ClientsNumber}},
        {"syncInterval", {"In the client's own unit."}},
    };
}

DescribedColumn Describe(QString const& name, ColumnKind kind, Description const& description)
{
    return {name, kind, QLatin1String(description.meaning), std::nullopt};
}

template <class Record>
DescribedTables Describe(QStringList const& tables, Descriptions const& descriptions)
{
    DescribedTables described{tables, {}};
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        auto const found = descriptions.find(column.name().toStdString());
        Description const description = found == descriptions.end() ? Description{""} : found->second;
        described.columns.push_back(Describe(column.name(), column.kind(), description));
        if (!column.valueNames().isEmpty())
            described.columns.back().names.emplace(column.valueNames(), description.values);
    }
    return described;
}

/// No record has these rows.
DescribedTables FileSystems()
{
    return {{QStringLiteral("FolderFileSystem")},
            {
                Describe(QStringLiteral("id"), ColumnKind::Integer, {GivenId}),
                Describe(QStringLiteral("folderConfigurationId"),
                         ColumnKind::Integer,
                         {"The id of a root, or of a mount point below one."}),
                Describe(QStringLiteral("fileSystem"), ColumnKind::Text, {"The file system that it was recorded on."}),
                Describe(QStringLiteral("inode"), ColumnKind::LongInteger, {"The folder's inode there."}),
            }};
}

} // namespace

template <>
DescribedTables const& ReferenceOf<ServerConfiguration>()
{
    static DescribedTables const tables = Describe<ServerConfiguration>({QLatin1String(Servers)}, ServerDescriptions());
    return tables;
}

template <>
DescribedTables const& ReferenceOf<AuthenticationConfiguration>()
{
    static DescribedTables const tables =
        Describe<AuthenticationConfiguration>({QLatin1String(Accounts)}, AccountDescriptions());
    return tables;
}

template <>
DescribedTables const& ReferenceOf<ProductConfiguration>()
{
    static DescribedTables const tables =
        Describe<ProductConfiguration>({QLatin1String(Products)}, ProductDescriptions());
    return tables;
}

template <>
DescribedTables const& ReferenceOf<FolderConfiguration>()
{
    static DescribedTables const tables = Describe<FolderConfiguration>({QLatin1String(Folders)}, FolderDescriptions());
    return tables;
}

template <>
DescribedTables const& ReferenceOf<FileConfiguration>()
{
    static DescribedTables const tables = Describe<FileConfiguration>(
        {QLatin1String(Files), QLatin1String(GeneratedFiles), QLatin1String(BaseFiles)}, FileDescriptions());
    return tables;
}

template <>
DescribedTables const& ReferenceOf<ScheduleEntry>()
{
    static DescribedTables const tables = Describe<ScheduleEntry>({QLatin1String(Schedules)}, ScheduleDescriptions());
    return tables;
}

std::vector<DescribedTables> const& ColumnReference()
{
    static std::vector<DescribedTables> const reference{
        ReferenceOf<ServerConfiguration>(),
        ReferenceOf<AuthenticationConfiguration>(),
        ReferenceOf<ProductConfiguration>(),
        ReferenceOf<FolderConfiguration>(),
        ReferenceOf<FileConfiguration>(),
        ReferenceOf<ScheduleEntry>(),
        FileSystems(),
    };
    return reference;
}

} // namespace tandry::findings
