#pragma once

#include <QString>

namespace sync::config {

/// Parts of file names that the client gives a meaning to. Each source file that includes them has its own copy.
const QString SyncTempMarker = QStringLiteral(".{SyncTemp}");
const QString SyncBackupMarker = QStringLiteral(".{SyncBackup}");
const QString BaseMarker = QStringLiteral("BASE");
const QString TmpMarker = QStringLiteral("TMP");
const QString DeltaMarker = QStringLiteral("DELTA");

} // namespace sync::config
