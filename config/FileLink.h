#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QString>
#include <QTypeInfo>

namespace sync::config {

/// A link from a file to another file. A value.
class TANDRY_CONFIGURATION_EXPORT FileLink
{
public:
    FileLink();
    FileLink(FileLink const& other);
    FileLink& operator=(FileLink const& other);
    virtual ~FileLink();

    /// Whether the link names a file by id, by server id or by path. Only such a link is stored.
    bool IsValid() const;

    /// The id of the linked file's row in `FileConfiguration`; -1 if it is not known.
    int fileId = -1;
    /// The path of the linked file, absolute or relative to the folder of the linking file.
    QString path;
    /// For the client's own use; stored unchanged.
    QString refId;
    /// The linked file's `serverFileId`.
    QString serverFileId;
};

} // namespace sync::config

Q_DECLARE_TYPEINFO(sync::config::FileLink, Q_MOVABLE_TYPE);
TANDRY_DECLARE_METATYPE(sync::config::FileLink)
