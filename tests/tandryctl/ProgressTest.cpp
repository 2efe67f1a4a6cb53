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

TEST(ProgressLine, IsShorterOnANarrowTerminal)
{
    auto const formatted = [](int columns) {
        return Progress::FormatLine(QStringLiteral("recording"), "files", 1'000'000, 2'000'000, 2000, columns);
    };
    EXPECT_EQ(formatted(100),
              QStringLiteral("recording [##########..........] 50% of 2000000 files, 500000/s, 2 s to go"));
    EXPECT_EQ(formatted(60), QStringLiteral("recording 50% of 2000000 files, 500000/s, 2 s to go"));
    EXPECT_EQ(formatted(40), QStringLiteral("recording 50%, 2 s to go"));
    EXPECT_EQ(formatted(20), QStringLiteral("recording 50%"));
    EXPECT_EQ(formatted(5), QStringLiteral("reco"));
}

TEST(ProgressLine, WithoutATotalIsShorterOnANarrowTerminal)
{
    auto const formatted = [](int columns) {
        return Progress::FormatLine(QStringLiteral("reading"), "files", 123'456, 0, 1000, columns);
    };
    EXPECT_EQ(formatted(33), QStringLiteral("reading: 123456 files, 123456/s"));
    EXPECT_EQ(formatted(31), QStringLiteral("reading: 123456 files"));
}
