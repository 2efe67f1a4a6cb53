#include "config/AuthenticationConfigManager.h"
#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "interf/IRefreshNativeFileViewer.h"

#include "support/QtPrinters.h"
#include "support/RecordingStore.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QRegularExpression>

#include <memory>
#include <set>
#include <type_traits>

/// Clients reach records and managers through the text of their meta-objects, so all of it is compared.
namespace {

using namespace tandry::test;
using namespace sync::config;
using namespace sync::interf;

QString Describe(QMetaProperty const& property)
{
    QString text =
        QStringLiteral("property %1 %2").arg(QLatin1String(property.typeName()), QLatin1String(property.name()));
    if (!property.isWritable())
        text += ", read-only"_q;
    if (!property.isReadable())
        text += ", not readable"_q;
    if (!property.isDesignable())
        text += ", not designable"_q;
    if (!property.isScriptable())
        text += ", not scriptable"_q;
    if (!property.isStored())
        text += ", not stored"_q;
    if (property.isResettable())
        text += ", resettable"_q;
    if (property.hasNotifySignal())
        text += ", notifies"_q;
    if (property.isConstant())
        text += ", constant"_q;
    if (property.isFinal())
        text += ", final"_q;
    if (property.isUser())
        text += ", user"_q;
    return text;
}

QString Describe(QMetaMethod const& method)
{
    static char const* const kinds[] = {"invokable", "signal", "slot", "constructor"};
    static char const* const accesses[] = {"private ", "protected ", ""};
    QStringList parameters;
    QList<QByteArray> const types = method.parameterTypes();
    QList<QByteArray> const names = method.parameterNames();
    for (int i = 0; i < types.size(); ++i)
        parameters.append(QString::fromLatin1(types[i] + ' ' + names[i]));
    return QStringLiteral("%1%2 %3 %4(%5)")
        .arg(QLatin1String(accesses[method.access()]),
             QLatin1String(kinds[method.methodType()]),
             QLatin1String(method.typeName()),
             QString::fromLatin1(method.name()),
             parameters.join(", "_q));
}

/// All that the class itself declares, in its order: one line for the class, each property, method, enumerator list and
/// class information.
QString Describe(QMetaObject const& meta)
{
    QStringList lines{
        QStringLiteral("%1 : %2").arg(QLatin1String(meta.className()), QLatin1String(meta.superClass()->className()))};
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        lines.append(Describe(meta.property(i)));
    for (int i = 0; i < meta.constructorCount(); ++i)
        lines.append(Describe(meta.constructor(i)));
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        lines.append(Describe(meta.method(i)));
    for (int i = meta.enumeratorOffset(); i < meta.enumeratorCount(); ++i)
        lines.append("enumeration "_q + QLatin1String(meta.enumerator(i).name()));
    for (int i = meta.classInfoOffset(); i < meta.classInfoCount(); ++i)
        lines.append("class information "_q + QLatin1String(meta.classInfo(i).name()));
    return lines.join(QLatin1Char('\n'));
}

struct MetaObjectCase
{
    QMetaObject const* meta;
    char const* description;
};

MetaObjectCase const MetaObjects[] = {
    {&factory::IDatabaseFactory::staticMetaObject, "sync::interf::factory::IDatabaseFactory : QObject"},
    {&IQSqlDatabaseWrapper::staticMetaObject, "sync::interf::IQSqlDatabaseWrapper : QObject"},
    {&IQSqlQueryWrapper::staticMetaObject, "sync::interf::IQSqlQueryWrapper : QObject"},
    {&IRefreshNativeFileViewer::staticMetaObject, "sync::interf::IRefreshNativeFileViewer : QObject"},
    {&IAuthenticationConfigManager::staticMetaObject, "sync::interf::IAuthenticationConfigManager : QObject"},
    {&IFileConfigManager::staticMetaObject, "sync::interf::IFileConfigManager : QObject"},
    {&IFolderConfigManager::staticMetaObject, "sync::interf::IFolderConfigManager : QObject"},
    {&IProductConfigManager::staticMetaObject, "sync::interf::IProductConfigManager : QObject"},
    {&IScheduleEntryManager::staticMetaObject, "sync::interf::IScheduleEntryManager : QObject"},
    {&IServerConfigManager::staticMetaObject, "sync::interf::IServerConfigManager : QObject"},

    {&AuthenticationConfiguration::staticMetaObject,
     "sync::config::AuthenticationConfiguration : QObject\n"
     "property int Id\n"
     "property QString Domain\n"
     "property QString DomainId\n"
     "property QString UserName\n"
     "property QString Password\n"
     "property int ServerId"},
    {&FolderConfiguration::staticMetaObject,
     "sync::config::FolderConfiguration : QObject\n"
     "property int Id, read-only\n"
     "property int AuthenticationId\n"
     "property int ProductConfigurationId\n"
     "property QString Name\n"
     "property QString RemoteShortKey\n"
     "property QString RemoteLongKey\n"
     "property QString ClientPath\n"
     "property FolderSynchronizationStatus SyncStatus\n"
     "property QString ServerPath\n"
     "property QDateTime LastOperationTime\n"
     "property int ParentId\n"
     "property QDateTime LastSyncTime\n"
     "property SynchronizationFolderOption FolderOption\n"
     "property FolderOperationType LastOperationType\n"
     "property DriveType SyncDriveType\n"
     "property int RootId\n"
     "property FolderSyncOption SyncOption\n"
     "property QString OwnerId\n"
     "property FolderPrivileges Privileges\n"
     "property QString ServerRoot\n"
     "property QString ServerFolderId"},
    {&ProductConfiguration::staticMetaObject,
     "sync::config::ProductConfiguration : QObject\n"
     "property int Id, read-only\n"
     "property QString Name\n"
     "property QString ConsumerKey\n"
     "property QString ConsumerSecret\n"
     "property int ServerId"},
    {&ScheduleEntry::staticMetaObject,
     "sync::config::ScheduleEntry : QObject\n"
     "property int Id, read-only\n"
     "property QDateTime StartTime\n"
     "property QDateTime ExpireTime\n"
     "property int FolderConfigId\n"
     "property SyncSchedule SyncScheduleType\n"
     "property int SyncInterval"},
    {&ServerConfiguration::staticMetaObject,
     "sync::config::ServerConfiguration : QObject\n"
     "property int Id, read-only\n"
     "property QString Alias\n"
     "property QString DavUrl\n"
     "property QString WebServiceUrl\n"
     "property QString BinaryDiffEncoder"},

    {&AuthenticationConfigManager::staticMetaObject,
     "sync::config::AuthenticationConfigManager : sync::interf::IAuthenticationConfigManager\n"
     "invokable sync::config::AuthenticationConfiguration "
     "GetAuthenticationConfigurationById(int authenticationConfigurationId)\n"
     "invokable sync::config::AuthenticationConfiguration "
     "GetAuthenticationConfigurationByDomainAndUser(QString domain, QString userName)\n"
     "invokable QVector<sync::config::AuthenticationConfiguration> GetAll()"},
    {&FolderConfigManager::staticMetaObject,
     "sync::config::FolderConfigManager : sync::interf::IFolderConfigManager\n"
     "invokable sync::config::FolderConfiguration GetFolderConfigurationById(int folderConfigurationId)\n"
     "invokable sync::config::FolderConfiguration GetFolderConfigurationByClientPath(QString clientPath)\n"
     "invokable sync::config::FolderConfiguration "
     "GetFolderConfigurationByClientPathAndAuthenticationId(QString clientPath, int authenticationId)\n"
     "invokable QVector<sync::config::FolderConfiguration> GetAll()\n"
     "invokable bool Update(sync::config::FolderConfiguration folderConfiguration)\n"
     "invokable bool Add(sync::config::FolderConfiguration& folderConfiguration)\n"
     "invokable FolderConfiguration AddFolderAndParent(QString absolutePath, FolderConfiguration rootConfig)\n"
     "invokable bool Remove(int folderConfigurationId)\n"
     "invokable bool RemoveFolderAndChildren(int folderConfigurationId)\n"
     "invokable bool AncestorOrDescendantOfServerFolderExists"
     "(QString serverPath, int authenticationId, QString& matchingServerFolder)\n"
     "invokable QVector<sync::config::FolderConfiguration> GetAllRootFolders()\n"
     "invokable QVector<sync::config::FolderConfiguration> GetFolderConfigurationByParentId(int "
     "folderConfigurationId)\n"
     "invokable QVector<sync::config::FolderConfiguration> GetFolderConfigurationsByRootId(int rootFolderId)\n"
     "invokable bool IsInExistingAuthentication(int authenticationId)\n"
     "invokable bool IsAnyFolderConfigOutOfSync()\n"
     "invokable int GetRootFolderConfigurationCount()\n"
     "invokable void ClearCaches()\n"
     "invokable bool CleanRootFolder(int folderConfigurationId)\n"
     "invokable void RefreshNativeFileViewer()\n"
     "invokable void RefreshNativeFileViewer(QString& clientPath)"},
    {&ProductConfigManager::staticMetaObject,
     "sync::config::ProductConfigManager : sync::interf::IProductConfigManager\n"
     "invokable sync::config::ProductConfiguration GetProductConfigurationById(int id)\n"
     "invokable sync::config::ProductConfiguration "
     "GetProductConfigurationByServerIdAndConsumerKey(int serverId, QString consumerKey)\n"
     "invokable QVector<sync::config::ProductConfiguration> GetAll()\n"
     "invokable bool Update(sync::config::ProductConfiguration ProductConfiguration)\n"
     "invokable bool Add(sync::config::ProductConfiguration& ProductConfiguration)\n"
     "invokable bool Remove(int ProductConfigurationId)"},
    {&ScheduleEntryManager::staticMetaObject,
     "sync::config::ScheduleEntryManager : sync::interf::IScheduleEntryManager\n"
     "invokable sync::config::ScheduleEntry GetScheduleEntryById(int scheduleEntryId)\n"
     "invokable sync::config::ScheduleEntry GetDefaultScheduleEntry()\n"
     "invokable bool Update(sync::config::ScheduleEntry scheduleEntry)\n"
     "invokable bool Remove(int scheduleEntryId)"},
    {&ServerConfigManager::staticMetaObject, "sync::config::ServerConfigManager : sync::interf::IServerConfigManager"},

    {&sync::database::StoreFactory::staticMetaObject,
     "sync::database::StoreFactory : sync::interf::factory::IDatabaseFactory\n"
     "signal void CommitFailed(sync::database::StoreError error)"},
    {&sync::database::SqliteDatabaseFactory::staticMetaObject,
     "sync::database::SqliteDatabaseFactory : sync::database::StoreFactory"},
};

/// The same description with the names of the Qt in use. Qt 6 has one type of lists, and names the type of a property
/// with its namespaces.
QString WithNamesOfThisQt(char const* description)
{
    QString text = QString::fromLatin1(description);
    if (QT_VERSION_MAJOR == 5)
        return text;
    text.replace("QVector<"_q, "QList<"_q);
    for (QString const& enumeration : {"DriveType"_q,
                                       "FolderOperationType"_q,
                                       "FolderPrivileges"_q,
                                       "FolderSyncOption"_q,
                                       "FolderSynchronizationStatus"_q,
                                       "SyncSchedule"_q,
                                       "SynchronizationFolderOption"_q})
        text.replace("property %1 "_q.arg(enumeration), "property sync::config::%1 "_q.arg(enumeration));
    return text;
}

class AMetaObject : public testing::TestWithParam<MetaObjectCase>
{};

TEST_P(AMetaObject, DeclaresExactlyWhatClientsAskFor)
{
    EXPECT_EQ(Describe(*GetParam().meta), WithNamesOfThisQt(GetParam().description));
}

INSTANTIATE_TEST_SUITE_P(Classes, AMetaObject, testing::ValuesIn(MetaObjects), [](auto const& test) {
    return QString::fromLatin1(test.param.meta->className()).section("::"_q, -1).toStdString();
});

TEST(MetaObjects, AllExportedClassesWithOneAreInTheTable)
{
    std::set<QString> listed;
    for (MetaObjectCase const& test : MetaObjects)
        listed.insert(QString::fromLatin1(test.meta->className()).section("::"_q, -1));

    std::set<QString> declared;
    static QRegularExpression const exportedClass("^class TANDRY_[A-Z]+_EXPORT (\\w+).*?^ +Q_OBJECT$"_q,
                                                  QRegularExpression::MultilineOption |
                                                      QRegularExpression::DotMatchesEverythingOption);
    for (QString const& folder : {"interf"_q, "database"_q, "config"_q}) {
        QDirIterator headers(QStringLiteral(TANDRY_SOURCES) + QLatin1Char('/') + folder, {"*.h"_q}, QDir::Files);
        while (headers.hasNext()) {
            QFile header(headers.next());
            ASSERT_TRUE(header.open(QIODevice::ReadOnly));
            auto const match = exportedClass.match(QString::fromUtf8(header.readAll()));
            if (match.hasMatch())
                declared.insert(match.captured(1));
        }
    }
    EXPECT_EQ(declared, listed);
}

TEST(MetaObjects, FileManagerAnswersWithThatOfItsInterface)
{
    auto const store = std::make_shared<RecordingStore>();
    FileConfigManager const files(store, nullptr, std::make_shared<FolderConfigManager>(store, nullptr));
    EXPECT_EQ(files.metaObject(), &IFileConfigManager::staticMetaObject);
    EXPECT_FALSE((std::is_base_of_v<QObject, FileConfiguration>));
    EXPECT_FALSE((std::is_base_of_v<QObject, FileLink>));
}

TEST(MetaObjects, ManagersAnswerTheNameOfTheirBaseWithThatPartOfTheObject)
{
    auto const store = std::make_shared<RecordingStore>();
    AuthenticationConfigManager accounts(store);
    FolderConfigManager folders(store, nullptr);
    ProductConfigManager products(store);
    ScheduleEntryManager schedules(store);
    ServerConfigManager servers(store);
    auto const expectBase = [](auto& manager) {
        EXPECT_EQ(manager.qt_metacast("DatabaseConfigurationManager"),
                  static_cast<void*>(static_cast<DatabaseConfigurationManager*>(&manager)));
        EXPECT_EQ(manager.qt_metacast(manager.metaObject()->className()), static_cast<void*>(&manager));
        EXPECT_EQ(manager.qt_metacast(manager.metaObject()->superClass()->className()), static_cast<void*>(&manager));
        EXPECT_EQ(manager.qt_metacast("sync::config::DatabaseConfigurationManager"), nullptr);
    };
    expectBase(accounts);
    expectBase(folders);
    expectBase(products);
    expectBase(schedules);
    expectBase(servers);
}

TEST(MetaObjects, InvokableMethodsAreCalledByTheirText)
{
    auto const store = std::make_shared<RecordingStore>();
    ProductConfigManager products(store);
    bool removed = false;
    EXPECT_TRUE(QMetaObject::invokeMethod(&products, "Remove", Q_RETURN_ARG(bool, removed), Q_ARG(int, 7)));
    EXPECT_TRUE(removed);

    ProductConfiguration product;
    bool added = false;
    EXPECT_TRUE(QMetaObject::invokeMethod(
        &products, "Add", Q_RETURN_ARG(bool, added), Q_ARG(sync::config::ProductConfiguration&, product)));
    EXPECT_TRUE(added);
    EXPECT_EQ(product.getId(), 1);

    AuthenticationConfigManager accounts(store);
    store->PlayRows({{9}});
    AuthenticationConfiguration account;
    EXPECT_TRUE(QMetaObject::invokeMethod(&accounts,
                                          "GetAuthenticationConfigurationById",
                                          Q_RETURN_ARG(sync::config::AuthenticationConfiguration, account),
                                          Q_ARG(int, 9)));
    EXPECT_EQ(account.getId(), 9);

    ScheduleEntryManager schedules(store);
    bool updated = false;
    EXPECT_TRUE(QMetaObject::invokeMethod(
        &schedules, "Update", Q_RETURN_ARG(bool, updated), Q_ARG(sync::config::ScheduleEntry, ScheduleEntry())));
    EXPECT_TRUE(updated);
}

} // namespace
