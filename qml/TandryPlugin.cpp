#include "qml/TandryPlugin.h"

#include "qml/Enumerations.h"
#include "qml/FileListModel.h"
#include "qml/Store.h"
#include "qml/StoreModel.h"

#include <QtQml>

void TandryPlugin::registerTypes(char const* uri)
{
    using namespace sync::qml;
    constexpr int major = 1;
    constexpr int minor = 0;
    qmlRegisterType<Store>(uri, major, minor, "Store");
    qmlRegisterType<FolderTreeModel>(uri, major, minor, "FolderTreeModel");
    qmlRegisterType<FileListModel>(uri, major, minor, "FileListModel");
    qmlRegisterType<ServerModel>(uri, major, minor, "ServerModel");
    qmlRegisterType<AccountModel>(uri, major, minor, "AccountModel");
    qmlRegisterType<ProductModel>(uri, major, minor, "ProductModel");
    qmlRegisterType<ScheduleModel>(uri, major, minor, "ScheduleModel");
    qmlRegisterUncreatableMetaObject(Enumerations::staticMetaObject,
                                     uri,
                                     major,
                                     minor,
                                     "Tandry",
                                     QStringLiteral("Tandry has the names of values, and no objects."));
}
