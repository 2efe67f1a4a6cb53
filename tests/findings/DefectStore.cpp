#include "DefectStore.h"

#include "database/SqliteDatabaseFactory.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

namespace tandry::test {

void CreateCleanStore(QString const& path)
{
    QString error;
    ASSERT_NE(sync::database::SqliteDatabaseFactory::Open(path, &error), nullptr) << error.toStdString();
    RawStore(path).Run(QStringLiteral(R"(
INSERT INTO ServerConfiguration (id, alias, davUrl, webServiceUrl, nameValueProperties) VALUES
    (1, 'example', 'https://dav.example.org', 'https://ws.example.org', '<!DOCTYPE NameValueXml>' || char(10) || '<NameValueXml/>' || char(10));
INSERT INTO AuthenticationConfiguration (id, domain, userName, serverId) VALUES (1, 'domain', 'ada', 1);
INSERT INTO ProductConfiguration (id, name, consumerKey, serverId) VALUES (1, 'office', 'key', 1);
INSERT INTO FolderConfiguration (id, authenticationId, name, clientPath, serverPath, syncStatus, nameValueProperties, parentId, lastOperationTime, lastSyncTime, folderOption, lastOperationType, syncDriveType, rootId, syncOption, privileges, productConfigurationId) VALUES
    (1, 1, 'docs', '/home/ada/docs', '/docs', 4711, NULL, 0, -62135596800000, 253402300799999, 99, -5, 77, 1, 64, -1, 1),
    (2, 1, 'a', '/home/ada/docs/a', '/docs/a', 3, '<!DOCTYPE NameValueXml><NameValueXml><FeatureName>f</FeatureName></NameValueXml>', 1, NULL, NULL, 1, 0, 0, 1, 0, 31, 1),
    (3, 1, 'b', '/home/ada/docs/a/b', '/docs/a/b', 3, '', 2, NULL, NULL, 1, 0, 0, 1, 0, 31, -1),
    (4, 1, '.c', '/home/ada/docs/.c', '/docs/.c', 3, NULL, 1, NULL, NULL, 1, 0, 0, 1, 0, 31, -1),
    (5, -1, 'pics', '/home/ada/pics', '/pics', 1, NULL, 0, NULL, NULL, 1, 0, 0, 5, 0, 31, -1);
INSERT INTO FileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, createdDateTime, lastModifiedDateTime, syncStatus, nameValueProperties, rootFolderId, syncOption, parentFileId, fileType, privileges, productConfigurationId, fileLinks) VALUES
    (1, 1, 'one.txt', '/home/ada/docs/one.txt', '/docs/one.txt', 1704104430222, 1704190830333, 2, NULL, 1, 0, -1, 0, 31, 1, ''),
    (2, 2, 'two.txt', '/home/ada/docs/a/two.txt', '/docs/a/two.txt', NULL, NULL, 4711, '<!DOCTYPE NameValueXml>' || char(10) || '<NameValueXml>' || char(10) || ' <k><![CDATA[v < w]]></k>' || char(10) || '</NameValueXml>' || char(10), 1, 1 << 30, -1, 42, 31, -1, NULL),
    (3, 3, 'three.txt', '/home/ada/docs/a/b/three.txt', '/docs/a/b/three.txt', 0, 0, 2, '', 1, 0, -1, 0, 31, -1,
     '<FileLinks FileDate="2024-05-06T07:08:09Z">' || char(10) || ' <FileLink FileId="1" Path="../../one.txt" RefId="r" ServerFileId="s"/>' || char(10) || ' <FileLink FileId="-1" Path="/elsewhere" RefId="" ServerFileId=""/>' || char(10) || '</FileLinks>' || char(10)),
    (4, 5, 'four.png', '/home/ada/pics/four.png', '/pics/four.png', NULL, NULL, 2, NULL, 5, 0, -1, 0, 31, -1, NULL);
INSERT INTO GeneratedFileConfiguration (id, folderConfigurationId, name, clientPath, rootFolderId, parentFileId, fileType, productConfigurationId) VALUES
    (1, 3, 'preview', '/home/ada/.previews/three', 1, 3, 1, -1),
    (2, -1, 'preview', '/home/ada/.previews/four', -1, 4, 1, NULL);
INSERT INTO BaseFileConfiguration (id, folderConfigurationId, name, clientPath, rootFolderId, parentFileId, fileType, productConfigurationId) VALUES
    (1, 2, 'base', '/home/ada/.base/two', 1, 2, 2, -1);
INSERT INTO Schedules (id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval) VALUES
    (2, 1, 1704104430111, 1735726830000, 4711, 15),
    (3, 5, 1704104430111, 1704104430111, 1, 0);
)"));
}

void PrintTo(Defect const& defect, std::ostream* out)
{
    *out << defect.code << ": " << defect.statements;
}

std::vector<Defect> const& AllDefects()
{
    static std::vector<Defect> const defects{
        {"damage", "DROP INDEX FileConfiguration_root", {{"damage"_q, {"index FileConfiguration_root is missing"_q}}}},
        {"folder-without-parent",
         "UPDATE FolderConfiguration SET parentId = 99 WHERE id = 3",
         {{"folder-without-parent"_q, {"FolderConfiguration 3: parentId 99"_q}}},
         "UPDATE FolderConfiguration SET parentId = 2 WHERE id = 3"},
        {"folder-without-parent",
         "UPDATE FolderConfiguration SET parentId = NULL WHERE id = 3",
         {{"folder-without-parent"_q, {"FolderConfiguration 3: parentId NULL"_q}}},
         "UPDATE FolderConfiguration SET parentId = 2 WHERE id = 3"},
        {"folder-without-parent", // of folders in between too, whose files and folders follow
         "DELETE FROM FolderConfiguration WHERE id = 2",
         {{"folder-without-parent"_q, {"FolderConfiguration 3: parentId 2"_q}},
          {"file-without-folder"_q,
           {"FileConfiguration 2: folderConfigurationId 2"_q, "BaseFileConfiguration 1: folderConfigurationId 2"_q}}},
         "INSERT INTO FolderConfiguration (id, authenticationId, name, remoteLongKey, clientPath, serverPath, "
         "syncStatus, nameValueProperties, parentId, folderOption, lastOperationType, syncDriveType, rootId, "
         "syncOption, privileges, productConfigurationId) SELECT 6, authenticationId, 'a', '/docs/a', "
         "'/home/ada/docs/a', '/docs/a', 3, '<!DOCTYPE NameValueXml>' || char(10) || '<NameValueXml/>' || "
         "char(10), 1, 1, 0, 0, 1, 0, 31, productConfigurationId FROM FolderConfiguration WHERE id = 1;"
         " UPDATE FolderConfiguration SET parentId = 6 WHERE id = 3"},
        {"folder-without-root",
         "UPDATE FolderConfiguration SET rootId = 99 WHERE id = 3",
         {{"folder-without-root"_q, {"FolderConfiguration 3: rootId 99"_q}}},
         "UPDATE FolderConfiguration SET rootId = 1 WHERE id = 3"},
        {"folder-without-root", // a folder that is no root
         "UPDATE FolderConfiguration SET rootId = 2 WHERE id = 3",
         {{"folder-without-root"_q, {"FolderConfiguration 3: rootId 2"_q}}},
         "UPDATE FolderConfiguration SET rootId = 1 WHERE id = 3"},
        {"folder-without-root",
         "DELETE FROM FolderConfiguration WHERE id = 1",
         {{"folder-without-parent"_q, {"FolderConfiguration 2: parentId 1"_q, "FolderConfiguration 4: parentId 1"_q}},
          {"folder-without-root"_q,
           {"FolderConfiguration 2: rootId 1"_q,
            "FolderConfiguration 3: rootId 1"_q,
            "FolderConfiguration 4: rootId 1"_q}},
          {"file-without-folder"_q, {"FileConfiguration 1: folderConfigurationId 1"_q}},
          {"file-without-root"_q,
           {"FileConfiguration 1: rootFolderId 1"_q,
            "FileConfiguration 2: rootFolderId 1"_q,
            "FileConfiguration 3: rootFolderId 1"_q,
            "GeneratedFileConfiguration 1: rootFolderId 1"_q,
            "BaseFileConfiguration 1: rootFolderId 1"_q}},
          {"schedule-without-folder"_q, {"Schedules 2: folderConfigurationId 1"_q}}},
         "DELETE FROM FolderConfiguration WHERE rootId = 1"},
        {"folder-ring",
         "UPDATE FolderConfiguration SET parentId = 3 WHERE id = 2",
         {{"folder-ring"_q, {"FolderConfiguration 2: parentId 3"_q, "FolderConfiguration 3: parentId 2"_q}}},
         "UPDATE FolderConfiguration SET parentId = 1 WHERE id = 2"},
        {"folder-ring",
         "UPDATE FolderConfiguration SET parentId = 4 WHERE id = 4",
         {{"folder-ring"_q, {"FolderConfiguration 4: parentId 4"_q}}},
         "UPDATE FolderConfiguration SET parentId = 1 WHERE id = 4"},
        {"folder-ring", // with a folder below it, and one that is no part of it
         "UPDATE FolderConfiguration SET parentId = 4 WHERE id = 2;"
         "UPDATE FolderConfiguration SET parentId = 2 WHERE id = 4",
         {{"folder-ring"_q, {"FolderConfiguration 2: parentId 4"_q, "FolderConfiguration 4: parentId 2"_q}}},
         "UPDATE FolderConfiguration SET parentId = 1 WHERE id = 2"},
        {"root-with-other-root",
         "UPDATE FolderConfiguration SET rootId = 1 WHERE id = 5",
         {{"root-with-other-root"_q, {"FolderConfiguration 5: rootId 1"_q}}},
         "UPDATE FolderConfiguration SET rootId = 5 WHERE id = 5"},
        {"file-without-folder",
         "UPDATE FileConfiguration SET folderConfigurationId = 99 WHERE id = 2",
         {{"file-without-folder"_q, {"FileConfiguration 2: folderConfigurationId 99"_q}}},
         "UPDATE FileConfiguration SET folderConfigurationId = 2 WHERE id = 2"},
        {"file-without-folder",
         "UPDATE FileConfiguration SET folderConfigurationId = -1 WHERE id = 2",
         {{"file-without-folder"_q, {"FileConfiguration 2: folderConfigurationId -1"_q}}},
         "UPDATE FileConfiguration SET folderConfigurationId = 2 WHERE id = 2"},
        {"file-without-folder",
         "UPDATE GeneratedFileConfiguration SET folderConfigurationId = 99 WHERE id = 1",
         {{"file-without-folder"_q, {"GeneratedFileConfiguration 1: folderConfigurationId 99"_q}}},
         "UPDATE GeneratedFileConfiguration SET folderConfigurationId = 3 WHERE id = 1"},
        {"file-without-folder",
         "UPDATE BaseFileConfiguration SET folderConfigurationId = 99",
         {{"file-without-folder"_q, {"BaseFileConfiguration 1: folderConfigurationId 99"_q}}},
         "UPDATE BaseFileConfiguration SET folderConfigurationId = 2"},
        {"file-without-root",
         "UPDATE FileConfiguration SET rootFolderId = 99 WHERE id = 2",
         {{"file-without-root"_q, {"FileConfiguration 2: rootFolderId 99"_q}}},
         "UPDATE FileConfiguration SET rootFolderId = 1 WHERE id = 2"},
        {"file-without-root",
         "UPDATE FileConfiguration SET rootFolderId = NULL WHERE id = 2",
         {{"file-without-root"_q, {"FileConfiguration 2: rootFolderId NULL"_q}}},
         "UPDATE FileConfiguration SET rootFolderId = 1 WHERE id = 2"},
        {"file-without-root",
         "UPDATE GeneratedFileConfiguration SET rootFolderId = 2 WHERE id = 1",
         {{"file-without-root"_q, {"GeneratedFileConfiguration 1: rootFolderId 2"_q}}},
         "UPDATE GeneratedFileConfiguration SET rootFolderId = 1 WHERE id = 1"},
        {"file-without-root",
         "UPDATE BaseFileConfiguration SET rootFolderId = 99",
         {{"file-without-root"_q, {"BaseFileConfiguration 1: rootFolderId 99"_q}}},
         "UPDATE BaseFileConfiguration SET rootFolderId = 1"},
        {"generated-without-source",
         "UPDATE GeneratedFileConfiguration SET parentFileId = 99 WHERE id = 1",
         {{"generated-without-source"_q, {"GeneratedFileConfiguration 1: parentFileId 99"_q}}},
         "DELETE FROM GeneratedFileConfiguration WHERE id = 1"},
        {"link-to-nothing",
         "DELETE FROM FileConfiguration WHERE id = 1",
         {{"link-to-nothing"_q, {"FileConfiguration 3: FileId 1"_q}}},
         "UPDATE FileConfiguration SET fileLinks = replace(fileLinks, '\"1\"', '\"-1\"') WHERE id = 3"},
        {"link-to-nothing", // and a file is recorded at its path
         "UPDATE FileConfiguration SET fileLinks = replace(fileLinks, '\"1\"', '\"77\"') WHERE id = 3",
         {{"link-to-nothing"_q, {"FileConfiguration 3: FileId 77"_q}}},
         "UPDATE FileConfiguration SET fileLinks = replace(fileLinks, '\"77\"', '\"1\"') WHERE id = 3"},
        {"link-to-nothing", // in a document that the library did not write
         "UPDATE BaseFileConfiguration SET fileLinks = '<x><y FileId=''77''/><y FileId=''78''/><y FileId=''1''/></x>'",
         {{"link-to-nothing"_q, {"BaseFileConfiguration 1: FileId 77, 78"_q}}},
         "UPDATE BaseFileConfiguration SET fileLinks = '<x><y FileId=''-1''/><y FileId=''-1''/><y "
         "FileId=''1''/></x>'"},
        {"account-without-server",
         "UPDATE AuthenticationConfiguration SET serverId = 99",
         {{"account-without-server"_q, {"AuthenticationConfiguration 1: serverId 99"_q}}}},
        {"product-without-server",
         "UPDATE ProductConfiguration SET serverId = 99",
         {{"product-without-server"_q, {"ProductConfiguration 1: serverId 99"_q}}}},
        {"folder-without-account",
         "UPDATE FolderConfiguration SET authenticationId = 99 WHERE id = 3",
         {{"folder-without-account"_q, {"FolderConfiguration 3: authenticationId 99"_q}}},
         "UPDATE FolderConfiguration SET authenticationId = 1 WHERE id = 3"},
        {"folder-without-account",
         "UPDATE FolderConfiguration SET authenticationId = 99 WHERE id = 5",
         {{"folder-without-account"_q, {"FolderConfiguration 5: authenticationId 99"_q}}},
         "UPDATE FolderConfiguration SET authenticationId = -1 WHERE id = 5"},
        {"folder-without-product",
         "UPDATE FolderConfiguration SET productConfigurationId = 99 WHERE id = 1",
         {{"folder-without-product"_q, {"FolderConfiguration 1: productConfigurationId 99"_q}}},
         "UPDATE FolderConfiguration SET productConfigurationId = -1 WHERE id = 1"},
        {"file-without-product",
         "UPDATE FileConfiguration SET productConfigurationId = 99 WHERE id = 1;"
         "UPDATE GeneratedFileConfiguration SET productConfigurationId = 98 WHERE id = 2;"
         "UPDATE BaseFileConfiguration SET productConfigurationId = 97",
         {{"file-without-product"_q,
           {"FileConfiguration 1: productConfigurationId 99"_q,
            "GeneratedFileConfiguration 2: productConfigurationId 98"_q,
            "BaseFileConfiguration 1: productConfigurationId 97"_q}}},
         "UPDATE FileConfiguration SET productConfigurationId = -1 WHERE id = 1;"
         "UPDATE GeneratedFileConfiguration SET productConfigurationId = -1 WHERE id = 2;"
         "UPDATE BaseFileConfiguration SET productConfigurationId = -1"},
        {"twin",
         "INSERT INTO FileConfiguration (id, folderConfigurationId, clientPath, rootFolderId) VALUES "
         "(9, 2, '/home/ada/docs/a/two.txt', 1), (10, 2, '/home/ada/docs/a/two.txt', 1)",
         {{"twin"_q, {"FileConfiguration 9: twin of 2"_q, "FileConfiguration 10: twin of 2"_q}}},
         "DELETE FROM FileConfiguration WHERE id > 4"},
        {"twin",
         "INSERT INTO GeneratedFileConfiguration (id, folderConfigurationId, clientPath, rootFolderId, parentFileId) "
         "SELECT 9, folderConfigurationId, clientPath, rootFolderId, parentFileId FROM GeneratedFileConfiguration "
         "WHERE id = 1;"
         "INSERT INTO BaseFileConfiguration (id, folderConfigurationId, clientPath, rootFolderId, parentFileId) "
         "SELECT 9, folderConfigurationId, clientPath, rootFolderId, parentFileId FROM BaseFileConfiguration",
         {{"twin"_q, {"GeneratedFileConfiguration 9: twin of 1"_q, "BaseFileConfiguration 9: twin of 1"_q}}},
         "DELETE FROM GeneratedFileConfiguration WHERE id = 9;"
         "DELETE FROM BaseFileConfiguration WHERE id = 9"},
        {"twin",
         "INSERT INTO FolderConfiguration (id, authenticationId, clientPath, parentId, rootId) VALUES "
         "(9, 1, '/home/ada/docs/a', 1, 1)",
         {{"twin"_q, {"FolderConfiguration 9: twin of 2"_q}}},
         "DELETE FROM FolderConfiguration WHERE id = 9"},
        {"twin", // of a root
         "INSERT INTO FolderConfiguration (id, authenticationId, clientPath, serverPath, parentId, rootId) VALUES "
         "(9, -1, '/home/ada/pics', '/pics', 0, 9)",
         {{"twin"_q, {"FolderConfiguration 9: twin of 5"_q}},
          {"roots-overlap"_q, {"FolderConfiguration 9: same as root 5 '/home/ada/pics'"_q}},
          {"server-roots-overlap"_q, {"FolderConfiguration 9: same as root 5 '/pics'"_q}}},
         "DELETE FROM FolderConfiguration WHERE id = 9"},
        {"path-not-clean",
         "UPDATE FolderConfiguration SET clientPath = '/home/ada/docs/.c/' WHERE id = 4;"
         "UPDATE FileConfiguration SET clientPath = '/home/ada/docs/a/./two.txt' WHERE id = 2;"
         "UPDATE FileConfiguration SET clientPath = '/home/ada/docs/a/b/x/../three.txt' WHERE id = 3;"
         "UPDATE FileConfiguration SET clientPath = '/home/ada//pics/four.png' WHERE id = 4;"
         "UPDATE GeneratedFileConfiguration SET clientPath = '/home/ada/.previews/x/..' WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET clientPath = 'C:/home/ada/.base/'",
         {{"path-not-clean"_q,
           {"FolderConfiguration 4"_q,
            "FileConfiguration 2"_q,
            "FileConfiguration 3"_q,
            "FileConfiguration 4"_q,
            "GeneratedFileConfiguration 1"_q,
            "BaseFileConfiguration 1"_q}}},
         "UPDATE FolderConfiguration SET clientPath = '/home/ada/docs/.c' WHERE id = 4;"
         "UPDATE FileConfiguration SET clientPath = '/home/ada/docs/a/two.txt' WHERE id = 2;"
         "UPDATE FileConfiguration SET clientPath = '/home/ada/docs/a/b/three.txt' WHERE id = 3;"
         "UPDATE FileConfiguration SET clientPath = '/home/ada/pics/four.png' WHERE id = 4;"
         "UPDATE GeneratedFileConfiguration SET clientPath = '/home/ada/.previews' WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET clientPath = 'C:/home/ada/.base'"},
        {"path-relative",
         "UPDATE FolderConfiguration SET clientPath = 'docs/.c' WHERE id = 4;"
         "UPDATE FileConfiguration SET clientPath = '' WHERE id = 2;"
         "UPDATE FileConfiguration SET clientPath = '../four.png' WHERE id = 4;"
         "UPDATE GeneratedFileConfiguration SET clientPath = 'C:three' WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET clientPath = NULL",
         {{"path-relative"_q,
           {"FolderConfiguration 4"_q,
            "FileConfiguration 2"_q,
            "FileConfiguration 4"_q,
            "GeneratedFileConfiguration 1"_q,
            "BaseFileConfiguration 1"_q}}}},
        {"document-broken",
         "UPDATE FolderConfiguration SET nameValueProperties = '<NameValueXml><a>1</a><b>2</b><c' WHERE id = 4;"
         "UPDATE FileConfiguration SET fileLinks = '<FileLinks><FileLink FileId=\"1\"/><FileLink' WHERE id = 2;"
         "UPDATE ServerConfiguration SET nameValueProperties = 'no document';"
         "UPDATE AuthenticationConfiguration SET nameValueProperties = ' ';"
         "UPDATE ProductConfiguration SET nameValueProperties = '<a/><b/>';"
         "UPDATE GeneratedFileConfiguration SET nameValueProperties = '<a></b>' WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET nameValueProperties = '<a>', fileLinks = '<a>'",
         {{"document-broken"_q,
           {"ServerConfiguration 1: nameValueProperties"_q,
            "AuthenticationConfiguration 1: nameValueProperties"_q,
            "ProductConfiguration 1: nameValueProperties"_q,
            "FolderConfiguration 4: nameValueProperties"_q,
            "FileConfiguration 2: fileLinks"_q,
            "GeneratedFileConfiguration 1: nameValueProperties"_q,
            "BaseFileConfiguration 1: nameValueProperties"_q,
            "BaseFileConfiguration 1: fileLinks"_q}}},
         "UPDATE FolderConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) || "
         "'<NameValueXml>' || char(10) || ' <a><![CDATA[1]]></a>' || char(10) || ' <b><![CDATA[2]]></b>' || "
         "char(10) || '</NameValueXml>' || char(10) WHERE id = 4;"
         "UPDATE FileConfiguration SET fileLinks = '<FileLinks><FileLink FileId=\"1\"/></FileLinks>' WHERE id "
         "= 2;"
         "UPDATE BaseFileConfiguration SET fileLinks = '';"
         "UPDATE ServerConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) || "
         "'<NameValueXml/>' || char(10);"
         "UPDATE AuthenticationConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) "
         "|| '<NameValueXml/>' || char(10);"
         "UPDATE ProductConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) || "
         "'<NameValueXml/>' || char(10);"
         "UPDATE GeneratedFileConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) "
         "|| '<NameValueXml/>' || char(10) WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) || "
         "'<NameValueXml/>' || char(10)"},
        {"document-over-limits", // nested more deeply than the library reads
         "UPDATE FolderConfiguration SET nameValueProperties = '<x>' || replace(hex(zeroblob(1001)), '00', '<a>') || "
         "replace(hex(zeroblob(1001)), '00', '</a>') || '</x>' WHERE id = 4",
         {{"document-over-limits"_q, {"FolderConfiguration 4: nameValueProperties"_q}}}},
        {"date-out-of-range",
         "UPDATE FolderConfiguration SET lastSyncTime = 253402300800000 WHERE id = 2;"
         "UPDATE FileConfiguration SET createdDateTime = -62135596800001 WHERE id = 3;"
         "UPDATE GeneratedFileConfiguration SET lastOperationTime = 1e300 WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET lastModifiedDateTime = 9223372036854775807;"
         "UPDATE Schedules SET startTime = -9223372036854775808 WHERE id = 2",
         {{"date-out-of-range"_q,
           {"FolderConfiguration 2: lastSyncTime 253402300800000"_q,
            "FileConfiguration 3: createdDateTime -62135596800001"_q,
            "GeneratedFileConfiguration 1: lastOperationTime 1.0e+300"_q,
            "BaseFileConfiguration 1: lastModifiedDateTime 9223372036854775807"_q,
            "Schedules 2: startTime -9223372036854775808"_q}}},
         "UPDATE FolderConfiguration SET lastSyncTime = NULL WHERE id = 2;"
         "UPDATE FileConfiguration SET createdDateTime = NULL WHERE id = 3;"
         "UPDATE GeneratedFileConfiguration SET lastOperationTime = NULL WHERE id = 1;"
         "UPDATE BaseFileConfiguration SET lastModifiedDateTime = NULL;"
         "UPDATE Schedules SET startTime = NULL WHERE id = 2"},
        {"schedule-ends-early",
         "UPDATE Schedules SET expireTime = startTime - 1 WHERE id = 3",
         {{"schedule-ends-early"_q, {"Schedules 3: folderConfigurationId 5"_q}}}},
        {"roots-overlap",
         "INSERT INTO FolderConfiguration (id, authenticationId, clientPath, serverPath, parentId, rootId) VALUES "
         "(9, -1, '/HOME/ada/docs/new/root', '/new', 0, 9)",
         {{"roots-overlap"_q, {"FolderConfiguration 9: in root 1 '/home/ada/docs'"_q}}}},
        {"roots-overlap",
         "INSERT INTO FolderConfiguration (id, authenticationId, clientPath, serverPath, parentId, rootId) VALUES "
         "(9, -1, '/', '/new', 0, 9)",
         {{"roots-overlap"_q, {"FolderConfiguration 1: in root 9 '/'"_q, "FolderConfiguration 5: in root 9 '/'"_q}}}},
        {"server-roots-overlap",
         "INSERT INTO FolderConfiguration (id, authenticationId, clientPath, serverPath, parentId, rootId) VALUES "
         "(9, 1, '/home/ada/new', '/Docs/new/', 0, 9)",
         {{"server-roots-overlap"_q, {"FolderConfiguration 9: in root 1 '/docs'"_q}}}},
        {"paths-alike",
         "INSERT INTO FileConfiguration (id, folderConfigurationId, clientPath, rootFolderId) VALUES "
         "(9, 2, '/home/ada/docs/a/TWO.txt', 1), (10, 2, '/home/ada/docs/a/e' || char(769), 1), "
         "(11, 2, '/home/ada/docs/a/' || char(201), 1)",
         {{"paths-alike"_q,
           {"FileConfiguration 2: like '/home/ada/docs/a/TWO.txt'"_q,
            "FileConfiguration 11: like '/home/ada/docs/a/e\u0301'"_q}}}},
        {"schedule-without-folder",
         "UPDATE Schedules SET folderConfigurationId = 99 WHERE id = 3",
         {{"schedule-without-folder"_q, {"Schedules 3: folderConfigurationId 99"_q}}},
         "DELETE FROM Schedules WHERE id = 3"},
        {"no-default-schedule",
         "DELETE FROM Schedules WHERE folderConfigurationId = 0",
         {{"no-default-schedule"_q, {"Schedules: no row with folderConfigurationId 0"_q}}},
         "INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) VALUES (0, 0, 30)"},
    };
    return defects;
}

} // namespace tandry::test
