#pragma once

#include <QString>

namespace sync::config {

/// Parts of file names; the client defines their meaning. Each source file that includes this header has its own copy
/// of them.
const QString SyncTempMarker = QStringLiteral(".{SyncTemp}");
const QString SyncBackupMarker = QStringLiteral(".{SyncBackup}");
const QString BaseMarker = QStringLiteral("BASE");
const QString TmpMarker = QStringLiteral("TMP");
const QString DeltaMarker = QStringLiteral("DELTA");

} // namespace sync::config
