#include "config/MetaTypes.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FileLink.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/RecordColumns.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "interf/FileConfigOrderByEnum.h"

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVector>

namespace sync::config {

namespace {

template <class... Types>
bool Register()
{
    (qRegisterMetaType<Types>(), ...);
    return true;
}

template <class... Records>
bool RegisterRecords()
{
    return Register<Records...>() && Register<QVector<Records>...>();
}

template <class Enumeration>
void RegisterText(ValueNames names)
{
    if (QMetaType::hasRegisteredConverterFunction<Enumeration, QString>())
        return;
    QMetaType::registerConverter<Enumeration, QString>([names](Enumeration value) {
        QStringList const words = names.Of(value);
        return words.isEmpty() ? QString::number(value) : words.join(QStringLiteral(", "));
    });
}

template <class Record>
ValueNames NamesOf(char const* column)
{
    return FindRecordColumn<Record>(QLatin1String(column))->valueNames();
}

bool RegisterTexts()
{
    RegisterText<FolderSynchronizationStatus>(NamesOf<FolderConfiguration>("syncStatus"));
    RegisterText<SynchronizationFolderOption>(NamesOf<FolderConfiguration>("folderOption"));
    RegisterText<FolderOperationType>(NamesOf<FolderConfiguration>("lastOperationType"));
    RegisterText<DriveType>(NamesOf<FolderConfiguration>("syncDriveType"));
    RegisterText<FolderSyncOption>(NamesOf<FolderConfiguration>("syncOption"));
    RegisterText<FolderPrivileges>(NamesOf<FolderConfiguration>("privileges"));
    RegisterText<FileConfigurationType>(NamesOf<FileConfiguration>("fileType"));
    RegisterText<FileSynchronizationStatus>(NamesOf<FileConfiguration>("syncStatus"));
    RegisterText<FileSynchronizationSubStatus>({});
    RegisterText<FileSyncOption>(NamesOf<FileConfiguration>("syncOption"));
    RegisterText<FilePrivileges>(NamesOf<FileConfiguration>("privileges"));
    RegisterText<SyncSchedule>(NamesOf<ScheduleEntry>("syncScheduleType"));
    return true;
}

} // namespace

void RegisterMetaTypes()
{
    [[maybe_unused]] static bool const records = RegisterRecords<AuthenticationConfiguration,
                                                                 FileConfiguration,
                                                                 FolderConfiguration,
                                                                 ProductConfiguration,
                                                                 ScheduleEntry,
                                                                 ServerConfiguration>();
    [[maybe_unused]] static bool const others = Register<FileLink,
                                                         QList<FileLink>,
                                                         FolderSynchronizationStatus,
                                                         SynchronizationFolderOption,
                                                         FolderOperationType,
                                                         DriveType,
                                                         FolderSyncOption,
                                                         FolderPrivileges,
                                                         FileConfigurationType,
                                                         FileSynchronizationStatus,
                                                         FileSynchronizationSubStatus,
                                                         FileSyncOption,
                                                         FilePrivileges,
                                                         SyncSchedule,
                                                         sync::interf::FileConfigOrderByEnum>();
}

void RegisterEnumerationTexts()
{
    [[maybe_unused]] static bool const texts = RegisterTexts();
}

} // namespace sync::config
