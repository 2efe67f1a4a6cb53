#include "models/DisplayTexts.h"

#include "config/FolderConfiguration.h"
#include "config/ScheduleEntry.h"

#include <QCoreApplication>
#include <QStringList>

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

    static QString Privileges(int value)
    {
        QStringList words;
        auto unnamed = static_cast<unsigned>(value);
        auto const add = [&](FolderPrivileges privilege, QString const& word) {
            auto const bit = static_cast<unsigned>(privilege);
            if ((unnamed & bit) != 0)
                words.append(word);
            unnamed &= ~bit;
        };
        add(FolderPrivilegeView, tr("View"));
        add(FolderPrivilegeDownload, tr("Download"));
        add(FolderPrivilegeUpdate, tr("Update"));
        add(FolderPrivilegeDelete, tr("Delete"));
        add(FolderPrivilegeShare, tr("Share"));
        if (unnamed != 0)
            words.append(QString::number(unnamed));
        return value == 0 ? tr("None") : words.join(tr(", ", "between privileges"));
    }
};

QString NameOf(QString const& table, QString const& column, int value)
{
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
