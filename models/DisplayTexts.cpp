#include "models/DisplayTexts.h"

#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ScheduleEntry.h"

#include <QCoreApplication>
#include <QStringList>

#include <initializer_list>
#include <utility>

namespace sync::models {

namespace {

using namespace sync::config;

/// The context of the translations.
class DisplayTexts
{
    Q_DECLARE_TR_FUNCTIONS(sync::models::DisplayTexts)

public:
    static QString FolderStatus(int value)
    {
        switch (value) {
        case FolderStatusInitial:
            return tr("Initial");
        case FolderStatusOutOfSync:
            return tr("Out of sync");
        case FolderStatusPlaced:
            return tr("Placed");
        default:
            return {};
        }
    }

    static QString FolderOption(int value)
    {
        return value == FolderOptionTopFilesOnly ? tr("Top files only") : QString();
    }

    static QString FileStatus(int value)
    {
        switch (value) {
        case FileSyncStatusSyncing:
            return tr("Syncing");
        case FileSyncStatusNotSynced:
            return tr("Not synced");
        case FileSyncStatusLinkDiscovered:
            return tr("Link discovered");
        default:
            return {};
        }
    }

    static QString FileType(int value)
    {
        switch (value) {
        case FileConfigurationTypeFile:
            return tr("File");
        case FileConfigurationTypeGenerated:
            return tr("Generated");
        case FileConfigurationTypeBase:
            return tr("Base");
        default:
            return {};
        }
    }

    static QString FileOptions(int value)
    {
        return Bits(value, {{FileSyncOptionRepathRequired, tr("Repath required")}});
    }

    static QString Privileges(int value)
    {
        return Bits(value,
                    {{FolderPrivilegeView, tr("View")},
                     {FolderPrivilegeDownload, tr("Download")},
                     {FolderPrivilegeUpdate, tr("Update")},
                     {FolderPrivilegeDelete, tr("Delete")},
                     {FolderPrivilegeShare, tr("Share")}});
    }

private:
    static QString Bits(int value, std::initializer_list<std::pair<int, QString>> names)
    {
        QStringList words;
        auto unnamed = static_cast<unsigned>(value);
        for (auto const& [bit, word] : names) {
            if ((unnamed & static_cast<unsigned>(bit)) != 0)
                words.append(word);
            unnamed &= ~static_cast<unsigned>(bit);
        }
        if (unnamed != 0)
            words.append(QString::number(unnamed));
        return value == 0 ? tr("None") : words.join(tr(", ", "between names of bits"));
    }
};

QString NameOfFile(QString const& column, int value)
{
    if (column == QLatin1String("syncStatus"))
        return DisplayTexts::FileStatus(value);
    if (column == QLatin1String("fileType"))
        return DisplayTexts::FileType(value);
    if (column == QLatin1String("syncOption"))
        return DisplayTexts::FileOptions(value);
    return column == QLatin1String("privileges") ? DisplayTexts::Privileges(value) : QString();
}

QString NameOf(QString const& table, QString const& column, int value)
{
    if (table == QLatin1String("FileConfiguration"))
        return NameOfFile(column, value);
    if (table != QLatin1String("FolderConfiguration"))
        return {};
    if (column == QLatin1String("syncStatus"))
        return DisplayTexts::FolderStatus(value);
    if (column == QLatin1String("folderOption"))
        return DisplayTexts::FolderOption(value);
    return column == QLatin1String("privileges") ? DisplayTexts::Privileges(value) : QString();
}

} // namespace

QString DisplayText(QString const& table, QString const& column, int value)
{
    QString const name = NameOf(table, column, value);
    return name.isEmpty() ? QString::number(value) : name;
}

} // namespace sync::models
