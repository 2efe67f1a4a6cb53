-- The rows of every store here: a few in each table, with texts and times that a copy could corrupt, and with references
-- to missing rows.
INSERT INTO ServerConfiguration (id, alias, davUrl, webServiceUrl, nameValueProperties, binaryDiffEncoder) VALUES
    (1, 'Häuser & "Gärten" ''mit'' 日本語 😀', 'https://dav.example.org/a%20b', 'https://ws.example.org',
     '<!DOCTYPE NameValueXml>' || char(10) || '<NameValueXml>' || char(10) || ' <k><![CDATA[v < w]]></k>' || char(10) || '</NameValueXml>' || char(10),
     'xdelta'),
    (7, '', NULL, 'https://[::1]:8443', NULL, '');
INSERT INTO AuthenticationConfiguration (id, domain, domainId, userName, encryptedPassword, nameValueProperties, serverId) VALUES
    (2, 'domain', '{0A1B}', 'ada', NULL, NULL, 1),
    (3, '', '', 'name' || char(9) || 'with' || char(10) || 'controls', NULL, NULL, 12);
INSERT INTO ProductConfiguration (id, name, consumerKey, consumerSecret, serverId, nameValueProperties) VALUES
    (5, 'Büro', 'key%_', 'sécret', 1, NULL);
INSERT INTO FolderConfiguration (id, authenticationId, name, remoteShortKey, remoteLongKey, clientPath, serverPath, syncStatus, nameValueProperties, parentId, lastOperationTime, lastSyncTime, folderOption, lastOperationType, syncDriveType, rootId, syncOption, ownerId, privileges, serverRoot, productConfigurationId, serverFolderId) VALUES
    (1, 2, 'Documents', 'short', 'long', '/home/ada/Documents', '/documents', 2, NULL, 0, 1704104430111, -86400001, 1, 4, 5, 1, 6, 'owner', 31, '/', 5, 'server-folder-1'),
    -- a name in decomposed form, and one that reads from right to left
    (4, 2, 'e' || char(769), NULL, NULL, '/home/ada/Documents/e' || char(769), '/documents/e' || char(769), 1, NULL, 1, NULL, 253402300799999, 0, 0, 0, 1, 0, NULL, 1, NULL, -1, NULL),
    (6, 9, 'עברית', '', '', '/home/ada/Documents/עברית', '', 77, NULL, 5, 0, 0, 0, 0, 0, 1, -1, '', -2147483648, '', 30, '');
INSERT INTO FileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, lastOperationTime, rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, productConfigurationId, serverFileId, serverFileVersionId, checkSumMD5, fileLinks) VALUES
    (10, 1, 'a''b"c;--.txt', '/home/ada/Documents/a''b"c;--.txt', '/documents/a', 'sum', 1704104430222, 1704190830333, 2, 3, 5000000104, NULL, 1704277230444, 1, 8, -1, 0, 'owner', 31, 5, 'server-file-10', 'v1', 'md5',
     '<FileLinks FileDate="2024-05-06T07:08:09Z">' || char(10) || ' <FileLink FileId="17" Path="../x y" RefId="r" ServerFileId="s"/>' || char(10) || '</FileLinks>' || char(10)),
    (2147483000, 40, '😀', '/home/ada/Documents/😀', NULL, NULL, NULL, -62135596800000, 1, 0, 0, NULL, NULL, 1, 0, -1, 0, NULL, 0, -1, NULL, NULL, NULL, NULL);
INSERT INTO GeneratedFileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, lastOperationTime, rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, productConfigurationId, serverFileId, serverFileVersionId, checkSumMD5, fileLinks) VALUES
    (1, 1, 'preview', '/home/ada/.previews/10', NULL, NULL, 1704104430222, NULL, 1, 0, 9223372036854775807, NULL, NULL, 1, 0, 10, 1, NULL, 31, -1, NULL, NULL, NULL, NULL);
INSERT INTO BaseFileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, checkSum, createdDateTime, lastModifiedDateTime, syncStatus, lastOperationType, size, nameValueProperties, lastOperationTime, rootFolderId, syncOption, parentFileId, fileType, ownerId, privileges, productConfigurationId, serverFileId, serverFileVersionId, checkSumMD5, fileLinks) VALUES
    (3, 1, 'base', '/home/ada/.base/10', NULL, 'sum of the base', NULL, 1704190830333, 1, 0, 17, NULL, NULL, 1, 0, 10, 2, NULL, 31, -1, NULL, NULL, NULL, NULL);
INSERT INTO Schedules (id, folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval) VALUES
    (2, 1, 1704104430111, 1735726830000, 1, 15),
    (8, 45, NULL, NULL, 2, 0);
