#include "config/MetaTypes.h"

#include "config/AuthenticationConfigManager.h"
#include "config/FileConfigManager.h"
#include "config/FolderConfigManager.h"
#include "config/ProductConfigManager.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"
#include "support/MetaTypeNames.h"
#include "support/QtPrinters.h"
#include "support/RecordingStore.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QVariant>

#include <memory>

namespace meta_types_test {

using namespace sync::config;
using tandry::test::MetaTypeNamed;
using tandry::test::RecordingStore;
using tandry::test::operator""_q;

/// A client's object, whose signals have records as arguments.
class Teller : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void FolderTold(sync::config::FolderConfiguration const& folder);
    void FilesTold(QVector<sync::config::FileConfiguration> const& files);
    void StatusTold(sync::config::FileSynchronizationStatus status);
};

class Listener : public QObject
{
    Q_OBJECT

public:
    QString name;
    int files = 0;
    int status = 0;

public Q_SLOTS:
    void HearFolder(sync::config::FolderConfiguration const& folder) { name = folder.getName(); }
    void HearFiles(QVector<sync::config::FileConfiguration> const& heard) { files = int(heard.size()); }
    void HearStatus(sync::config::FileSynchronizationStatus heard) { status = heard; }
};

namespace {

FolderConfiguration NamedFolder()
{
    FolderConfiguration folder;
    folder.setName("Letters"_q);
    return folder;
}

template <class Type>
void ExpectKnownAs(char const* name)
{
    QVariant const variant = QVariant::fromValue(Type());
    EXPECT_TRUE(variant.canConvert<Type>()) << name;
    EXPECT_STREQ(variant.typeName(), name);
}

TEST(MetaTypes, RecordsAndEnumerationsGoIntoVariantsUnderTheirFullNames)
{
    ExpectKnownAs<AuthenticationConfiguration>("sync::config::AuthenticationConfiguration");
    ExpectKnownAs<FileConfiguration>("sync::config::FileConfiguration");
    ExpectKnownAs<FileLink>("sync::config::FileLink");
    ExpectKnownAs<FolderConfiguration>("sync::config::FolderConfiguration");
    ExpectKnownAs<ProductConfiguration>("sync::config::ProductConfiguration");
    ExpectKnownAs<ScheduleEntry>("sync::config::ScheduleEntry");
    ExpectKnownAs<FileConfigurationType>("sync::config::FileConfigurationType");
    ExpectKnownAs<FileSynchronizationStatus>("sync::config::FileSynchronizationStatus");
    ExpectKnownAs<FileSynchronizationSubStatus>("sync::config::FileSynchronizationSubStatus");
    ExpectKnownAs<FileSyncOption>("sync::config::FileSyncOption");
    ExpectKnownAs<FilePrivileges>("sync::config::FilePrivileges");
    ExpectKnownAs<FolderPrivileges>("sync::config::FolderPrivileges");
    ExpectKnownAs<sync::interf::FileConfigOrderByEnum>("sync::interf::FileConfigOrderByEnum");
}

TEST(MetaTypes, VariantKeepsTheRecord)
{
    QVariant const variant = QVariant::fromValue(NamedFolder());
    EXPECT_EQ(variant.value<FolderConfiguration>().getName(), "Letters"_q);
}

TEST(MetaTypes, QueuedSignalsCarryRecords)
{
    Teller teller;
    Listener listener;
    QObject::connect(&teller, &Teller::FolderTold, &listener, &Listener::HearFolder, Qt::QueuedConnection);
    QObject::connect(&teller, &Teller::FilesTold, &listener, &Listener::HearFiles, Qt::QueuedConnection);
    QObject::connect(&teller, &Teller::StatusTold, &listener, &Listener::HearStatus, Qt::QueuedConnection);
    Q_EMIT teller.FolderTold(NamedFolder());
    Q_EMIT teller.FilesTold({FileConfiguration(), FileConfiguration()});
    Q_EMIT teller.StatusTold(FileSyncStatusLinkDiscovered);
    QCoreApplication::sendPostedEvents(&listener);
    EXPECT_EQ(listener.name, "Letters"_q);
    EXPECT_EQ(listener.files, 2);
    EXPECT_EQ(listener.status, 3);
}

TEST(MetaTypes, QueuedSignalsThatAreConnectedByTextCarryRecords)
{
    RegisterMetaTypes(); // Qt 6 looks the types up by their names
    Teller teller;
    Listener listener;
    ASSERT_TRUE(QObject::connect(&teller,
                                 SIGNAL(FolderTold(sync::config::FolderConfiguration)),
                                 &listener,
                                 SLOT(HearFolder(sync::config::FolderConfiguration)),
                                 Qt::QueuedConnection));
    Q_EMIT teller.FolderTold(NamedFolder());
    QCoreApplication::sendPostedEvents(&listener);
    EXPECT_EQ(listener.name, "Letters"_q);
}

TEST(MetaTypes, OperationOfAManagerIsQueuedByItsText)
{
    auto const store = std::make_shared<RecordingStore>();
    ProductConfigManager products(store);
    ASSERT_TRUE(QMetaObject::invokeMethod(
        &products, "Update", Qt::QueuedConnection, Q_ARG(sync::config::ProductConfiguration, ProductConfiguration())));
    EXPECT_EQ(store->Executions().size(), 0U);
    QCoreApplication::sendPostedEvents(&products);
    EXPECT_EQ(store->Executions().size(), 1U);
}

/// The operations of a manager whose result Qt does not know by its text.
QStringList UnknownResults(QObject const& manager)
{
    QStringList unknown;
    QMetaObject const& meta = *manager.metaObject();
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).returnType() == QMetaType::UnknownType)
            unknown.append(QString::fromLatin1(meta.method(i).name()));
    }
    return unknown;
}

TEST(MetaTypes, ResultsOfOperationsAreKnownOnceThereIsAManager)
{
    auto const store = std::make_shared<RecordingStore>();
    EXPECT_EQ(UnknownResults(AuthenticationConfigManager(store)), QStringList());
    EXPECT_EQ(UnknownResults(ProductConfigManager(store)), QStringList());
    EXPECT_EQ(UnknownResults(ScheduleEntryManager(store)), QStringList());
    EXPECT_EQ(UnknownResults(ServerConfigManager(store)), QStringList());
    // Its text has no namespace in Qt 5, and the name without one belongs to the client.
    QStringList const unqualified = QT_VERSION_MAJOR == 5 ? QStringList("AddFolderAndParent"_q) : QStringList();
    EXPECT_EQ(UnknownResults(FolderConfigManager(store, nullptr)), unqualified);
}

TEST(MetaTypes, RegistrationWithoutAManagerMakesTypesKnownByName)
{
    RegisterMetaTypes();
    EXPECT_NE(MetaTypeNamed("sync::config::FileConfiguration"), QMetaType::UnknownType);
    EXPECT_NE(MetaTypeNamed("sync::config::FileLink"), QMetaType::UnknownType);
    EXPECT_NE(MetaTypeNamed("QVector<sync::config::ScheduleEntry>"), QMetaType::UnknownType);
    EXPECT_NE(MetaTypeNamed("sync::config::FilePrivileges"), QMetaType::UnknownType);
    EXPECT_NE(MetaTypeNamed("sync::interf::FileConfigOrderByEnum"), QMetaType::UnknownType);
}

TEST(MetaTypes, ManagersGiveEnumerationsNoTexts)
{
    FolderConfigManager const folders(std::make_shared<RecordingStore>(), nullptr);
    EXPECT_FALSE((QMetaType::hasRegisteredConverterFunction<FolderSynchronizationStatus, QString>()));
}

QString TextOfProperty(QObject const& record, char const* property)
{
    return record.property(property).toString();
}

TEST(EnumerationTexts, AreTheNamesOfValues)
{
    RegisterEnumerationTexts();
    FolderConfiguration folder;
    EXPECT_EQ(TextOfProperty(folder, "SyncStatus"), "initial"_q);
    EXPECT_EQ(TextOfProperty(folder, "FolderOption"), "top files only"_q);
    folder.setPrivileges(FolderPrivileges(FolderPrivilegeView | FolderPrivilegeDelete | 64));
    EXPECT_EQ(TextOfProperty(folder, "Privileges"), "view, delete, 64"_q);
    folder.setSyncStatus(FolderSynchronizationStatus(9));
    EXPECT_EQ(TextOfProperty(folder, "SyncStatus"), "9"_q);
    EXPECT_EQ(TextOfProperty(ScheduleEntry(), "SyncScheduleType"), "0"_q);
    EXPECT_EQ(QVariant::fromValue(FileSyncStatusNotSynced).toString(), "not synced"_q);
    EXPECT_EQ(QVariant::fromValue(FileConfigurationTypeBase).toString(), "base"_q);
    EXPECT_EQ(QVariant::fromValue(FileSyncOptionRepathRequired).toString(), "repath required"_q);
    EXPECT_EQ(QVariant::fromValue(FilePrivilegeShare).toString(), "share"_q);
}

TEST(EnumerationTexts, LeaveAConversionOfTheClientAlone)
{
    ASSERT_TRUE((QMetaType::registerConverter<FolderSynchronizationStatus, QString>(
        [](FolderSynchronizationStatus value) { return "status %1"_q.arg(value); })));
    RegisterEnumerationTexts();
    EXPECT_EQ(TextOfProperty(FolderConfiguration(), "SyncStatus"), "status 1"_q);
    EXPECT_EQ(TextOfProperty(FolderConfiguration(), "FolderOption"), "top files only"_q);
}

} // namespace
} // namespace meta_types_test

#include "MetaTypesTest.moc"
