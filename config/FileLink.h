#pragma once

#include "config/TandryConfigurationExport.h"

#include <QString>
#include <QTypeInfo>

namespace sync::config {

/// A link from a file to another file. A plain value.
class TANDRY_CONFIGURATION_EXPORT FileLink
{
public:
    FileLink();
    FileLink(FileLink const& other);
    FileLink& operator=(FileLink const& other);
    virtual ~FileLink();

    /// Whether the link names a file by id, by server id or by path. Only such a link is stored.
    bool IsValid() const;

    /// Row of the linked file in `FileConfiguration`, -1 when not known.
    int fileId = -1;
    /// Path of the linked file, absolute or from the folder of the linking file.
    QString path;
    /// The client's own; stored as it stands.
    QString refId;
    QString serverFileId;
};

} // namespace sync::config

Q_DECLARE_TYPEINFO(sync::config::FileLink, Q_MOVABLE_TYPE);
