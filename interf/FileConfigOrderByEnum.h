#pragma once

#include "MetaTypeDeclaration.h"

namespace sync::interf {

/// Sort order of a file listing, ascending, or descending with `Desc`. Any other value sorts like
/// `FileConfigOrderById`.
///
/// Clients store the numbers: never renumber.
enum FileConfigOrderByEnum : int
{
    FileConfigOrderById = 0,
    FileConfigOrderByIdDesc = 1,
    FileConfigOrderByName = 2,
    FileConfigOrderByNameDesc = 3,
    FileConfigOrderByFolderConfigurationId = 4,
    FileConfigOrderByFolderConfigurationIdDesc = 5,
    FileConfigOrderByClientPath = 6,
    FileConfigOrderByClientPathDesc = 7,
    FileConfigOrderByServerPath = 8,
    FileConfigOrderByServerPathDesc = 9,
    FileConfigOrderByCheckSum = 10,
    FileConfigOrderByCheckSumDesc = 11,
    FileConfigOrderByCreatedDateTime = 12,
    FileConfigOrderByCreatedDateTimeDesc = 13,
    FileConfigOrderByLastModifiedDateTime = 14,
    FileConfigOrderByLastModifiedDateTimeDesc = 15,
    FileConfigOrderBySyncStatus = 16,
    FileConfigOrderBySyncStatusDesc = 17,
    FileConfigOrderByLastOperationType = 18,
    FileConfigOrderByLastOperationTypeDesc = 19,
    FileConfigOrderBySize = 20,
    FileConfigOrderBySizeDesc = 21,
};

} // namespace sync::interf

TANDRY_DECLARE_METATYPE(sync::interf::FileConfigOrderByEnum)
