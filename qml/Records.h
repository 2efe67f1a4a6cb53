#pragma once

#include "config/RecordColumns.h"

#include <QDateTime>
#include <QMetaProperty>
#include <QObject>
#include <QString>
#include <QVariantMap>

/// A column of a record: a property with its value, in the type that `sync::config::RecordColumn::Get` returns.
#define TANDRY_COLUMN(Type, name)                                                                                      \
    Q_PROPERTY(Type name MEMBER name)                                                                                  \
    Type name{};

/// The records of a store as values of QML, with the columns that a manager receives and that are no secrets.
namespace sync::qml {

struct Folder
{
    Q_GADGET

public:
    TANDRY_COLUMN(int, id)
    TANDRY_COLUMN(int, authenticationId)
    TANDRY_COLUMN(QString, name)
    TANDRY_COLUMN(QString, remoteShortKey)
    TANDRY_COLUMN(QString, remoteLongKey)
    TANDRY_COLUMN(QString, clientPath)
    TANDRY_COLUMN(QString, serverPath)
    TANDRY_COLUMN(int, syncStatus)
    TANDRY_COLUMN(QVariantMap, nameValueProperties)
    TANDRY_COLUMN(int, parentId)
    TANDRY_COLUMN(QDateTime, lastOperationTime)
    TANDRY_COLUMN(QDateTime, lastSyncTime)
    TANDRY_COLUMN(int, folderOption)
    TANDRY_COLUMN(int, lastOperationType)
    TANDRY_COLUMN(int, syncDriveType)
    TANDRY_COLUMN(int, rootId)
    TANDRY_COLUMN(int, syncOption)
    TANDRY_COLUMN(QString, ownerId)
    TANDRY_COLUMN(int, privileges)
    TANDRY_COLUMN(QString, serverRoot)
    TANDRY_COLUMN(int, productConfigurationId)
    TANDRY_COLUMN(QString, serverFolderId)
};

struct File
{
    Q_GADGET

public:
    TANDRY_COLUMN(int, id)
    TANDRY_COLUMN(int, folderConfigurationId)
    TANDRY_COLUMN(QString, name)
    TANDRY_COLUMN(QString, clientPath)
    TANDRY_COLUMN(QString, serverPath)
    TANDRY_COLUMN(QString, checkSum)
    TANDRY_COLUMN(QDateTime, createdDateTime)
    TANDRY_COLUMN(QDateTime, lastModifiedDateTime)
    TANDRY_COLUMN(int, syncStatus)
    TANDRY_COLUMN(int, lastOperationType)
    TANDRY_COLUMN(qlonglong, size)
    TANDRY_COLUMN(QVariantMap, nameValueProperties)
    TANDRY_COLUMN(QDateTime, lastOperationTime)
    TANDRY_COLUMN(int, rootFolderId)
    TANDRY_COLUMN(int, syncOption)
    TANDRY_COLUMN(int, parentFileId)
    TANDRY_COLUMN(int, fileType)
    TANDRY_COLUMN(QString, ownerId)
    TANDRY_COLUMN(int, privileges)
    TANDRY_COLUMN(int, productConfigurationId)
    TANDRY_COLUMN(QString, serverFileId)
    TANDRY_COLUMN(QString, serverFileVersionId)
    TANDRY_COLUMN(QString, checkSumMD5)
    TANDRY_COLUMN(QVariantMap, fileLinks)
};

struct Server
{
    Q_GADGET

public:
    TANDRY_COLUMN(int, id)
    TANDRY_COLUMN(QString, alias)
    TANDRY_COLUMN(QString, davUrl)
    TANDRY_COLUMN(QString, webServiceUrl)
    TANDRY_COLUMN(QVariantMap, nameValueProperties)
    TANDRY_COLUMN(QString, binaryDiffEncoder)
};

struct Account
{
    Q_GADGET

public:
    TANDRY_COLUMN(int, id)
    TANDRY_COLUMN(QString, domain)
    TANDRY_COLUMN(QString, domainId)
    TANDRY_COLUMN(QString, userName)
    TANDRY_COLUMN(QVariantMap, nameValueProperties)
    TANDRY_COLUMN(int, serverId)
};

struct Product
{
    Q_GADGET

public:
    TANDRY_COLUMN(int, id)
    TANDRY_COLUMN(QString, name)
    TANDRY_COLUMN(QString, consumerKey)
    TANDRY_COLUMN(int, serverId)
};

struct Schedule
{
    Q_GADGET

public:
    TANDRY_COLUMN(int, id)
    TANDRY_COLUMN(int, folderConfigurationId)
    TANDRY_COLUMN(QDateTime, startTime)
    TANDRY_COLUMN(QDateTime, expireTime)
    TANDRY_COLUMN(int, syncScheduleType)
    TANDRY_COLUMN(int, syncInterval)
};

/// Returns a record with the values that its columns have.
template <class Gadget, class Record>
Gadget ToGadget(Record const& record)
{
    Gadget gadget;
    QMetaObject const& type = Gadget::staticMetaObject;
    for (auto const& column : sync::config::RecordColumns<Record>()) {
        int const property = type.indexOfProperty(column.name().toLatin1().constData());
        if (property >= 0)
            type.property(property).writeOnGadget(&gadget, column.Get(record));
    }
    return gadget;
}

} // namespace sync::qml

#undef TANDRY_COLUMN

Q_DECLARE_METATYPE(sync::qml::Folder)
Q_DECLARE_METATYPE(sync::qml::File)
Q_DECLARE_METATYPE(sync::qml::Server)
Q_DECLARE_METATYPE(sync::qml::Account)
Q_DECLARE_METATYPE(sync::qml::Product)
Q_DECLARE_METATYPE(sync::qml::Schedule)
