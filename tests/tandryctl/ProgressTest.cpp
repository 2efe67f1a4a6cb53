#include "tools/tandryctl/Progress.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

using tandryctl::Progress;

namespace {

QString Formatted(qint64 done, qint64 total, qint64 elapsedMsec)
{
    return Progress::FormatLine(QStringLiteral("recording"), "files", done, total, elapsedMsec);
}

} // namespace

TEST(ProgressLine, AtTheStartHasAnEmptyBarAndNoForecast)
{
    EXPECT_EQ(Formatted(0, 200, 0), QStringLiteral("recording [....................] 0% of 200 files, 0/s"));
}

TEST(ProgressLine, HalfWayShowsRateAndRemainingTime)
{
    EXPECT_EQ(Formatted(100, 200, 2000),
              QStringLiteral("recording [##########..........] 50% of 200 files, 50/s, 2 s to go"));
}

TEST(ProgressLine, AtTheEndIsFull)
{
    EXPECT_EQ(Formatted(200, 200, 2000),
              QStringLiteral("recording [####################] 100% of 200 files, 100/s, 0 s to go"));
}

TEST(ProgressLine, BeyondTheTotalStaysAtTheTotal)
{
    EXPECT_TRUE(Formatted(300, 200, 1000).contains(QStringLiteral("100% of 200")));
}

TEST(ProgressLine, WithoutATotalCounts)
{
    EXPECT_EQ(Formatted(30, 0, 1000), QStringLiteral("recording: 30 files, 30/s"));
}
