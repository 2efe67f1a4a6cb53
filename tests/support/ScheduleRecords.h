#pragma once

#include "config/ScheduleEntry.h"

#include <gtest/gtest.h>

namespace tandry::test {

/// Expects a schedule for all folders, of type 0 and without times.
inline void ExpectDefaultSchedule(sync::config::ScheduleEntry const& entry, int id = -1, int interval = 30)
{
    EXPECT_EQ(entry.getId(), id);
    EXPECT_EQ(entry.getFolderConfigId(), 0);
    EXPECT_TRUE(entry.getStartTime().isNull());
    EXPECT_TRUE(entry.getExpireTime().isNull());
    EXPECT_EQ(entry.getSyncScheduleType(), 0);
    EXPECT_EQ(entry.getSyncInterval(), interval);
}

} // namespace tandry::test
