#pragma once

#include "config/ScheduleEntry.h"
#include "config/columns/Column.h"

#include <tuple>

namespace sync::config {

/// The columns of `Schedules`. Its times are wall-clock times, where folders and files have UTC.
template <>
struct TableColumns<ScheduleEntry>
{
    using Record = ScheduleEntry;

    static constexpr auto list = std::make_tuple(column::Integer<&Record::id>("id", column::GivenByStore),
                                                 column::Integer<&Record::folderConfigId>("folderConfigurationId"),
                                                 column::LocalTime<&Record::startTime>("startTime"),
                                                 column::LocalTime<&Record::expireTime>("expireTime"),
                                                 column::Enumeration<&Record::syncScheduleType>("syncScheduleType"),
                                                 column::Integer<&Record::syncInterval>("syncInterval"));
};

} // namespace sync::config
