#pragma once

#include "Session.h"

#include "tools/carry/Export.h"
#include "tools/carry/PathMaps.h"

#include <QIODevice>
#include <QStringList>

#include <functional>
#include <vector>

namespace tandryctl {

/// Writes records of the store to a device, all of one state, with a progress line. Throws if the store fails, and what
/// `deviceFailure` returns if the device does.
tandry::carry::RecordCounts ExportRecords(Session& session,
                                          tandry::carry::ExportOptions const& options,
                                          QIODevice& device,
                                          std::function<Failure()> const& deviceFailure);

/// What an import has written.
struct ImportedRecords
{
    tandry::carry::RecordCounts counts;
    qint64 movedPaths = 0;
};

/// Puts the records that the device has into the store, all or none, with a progress line. Throws on failure; `name` is
/// the device's in messages.
ImportedRecords ImportRecords(Session& session,
                              QIODevice& device,
                              QString const& name,
                              std::vector<tandry::carry::PathMap> const& maps = {});

} // namespace tandryctl
