#include "core/TimedCache.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <QVector>

#include <atomic>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using sync::core::TimedCache;
using tandry::test::FakeClock;

static_assert(std::has_virtual_destructor_v<TimedCache<int>>);
static_assert(!std::is_copy_constructible_v<TimedCache<int>>);

class TimedCacheTest : public testing::Test
{
protected:
    FakeClock clock;
    int refills = 0;
    /// Its value is the number of refills.
    TimedCache<int> cache{[this] { return ++refills; }, 1000, &FakeClock::Now};
};

TEST_F(TimedCacheTest, ConstructionDoesNotRefill)
{
    EXPECT_EQ(refills, 0);
}

TEST_F(TimedCacheTest, FirstGetValueRefills)
{
    EXPECT_EQ(cache.GetValue(), 1);
    EXPECT_EQ(refills, 1);
}

TEST_F(TimedCacheTest, RefillAtTheEpochIsCached)
{
    FakeClock::Move(-FakeClock::Start);
    cache.GetValue();
    EXPECT_EQ(cache.GetValue(), 1);
}

TEST_F(TimedCacheTest, GetValueAfterClearRefillsOnce)
{
    cache.GetValue();
    cache.Clear();
    EXPECT_EQ(refills, 1);
    EXPECT_EQ(cache.GetValue(), 2);
    EXPECT_EQ(cache.GetValue(), 2);
}

TEST_F(TimedCacheTest, ClearOfAnEmptyCacheDoesNothing)
{
    cache.Clear();
    EXPECT_EQ(cache.GetValue(), 1);
}

TEST_F(TimedCacheTest, RefillAfterTheClockWasSetBackIsCached)
{
    cache.GetValue();
    FakeClock::Move(-3'600'000);
    EXPECT_EQ(cache.GetValue(), 2);
    FakeClock::Move(1'999);
    EXPECT_EQ(cache.GetValue(), 2);
    FakeClock::Move(1);
    EXPECT_EQ(cache.GetValue(), 3);
}

TEST_F(TimedCacheTest, HitDoesNotExtendTheLifetime)
{
    cache.GetValue();
    FakeClock::Move(1'500);
    EXPECT_EQ(cache.GetValue(), 1);
    FakeClock::Move(500);
    EXPECT_EQ(cache.GetValue(), 2);
}

TEST_F(TimedCacheTest, LifetimeStartsBeforeTheRefill)
{
    TimedCache<int> slow(
        [this] {
            FakeClock::Move(1'500);
            return ++refills;
        },
        1000,
        &FakeClock::Now);
    EXPECT_EQ(slow.GetValue(), 1);
    FakeClock::Move(499);
    EXPECT_EQ(slow.GetValue(), 1);
    FakeClock::Move(1);
    EXPECT_EQ(slow.GetValue(), 2);
}

TEST_F(TimedCacheTest, EmptyRefillIsCached)
{
    TimedCache<QVector<int>> empty(
        [this] {
            ++refills;
            return QVector<int>();
        },
        1000,
        &FakeClock::Now);
    EXPECT_TRUE(empty.GetValue().isEmpty());
    FakeClock::Move(1'999);
    EXPECT_TRUE(empty.GetValue().isEmpty());
    EXPECT_EQ(refills, 1);
}

TEST_F(TimedCacheTest, RefillThatThrowsLeavesTheCacheUsable)
{
    TimedCache<int> throwing(
        [this] {
            if (++refills == 1)
                throw std::runtime_error("refill");
            return refills;
        },
        1000,
        &FakeClock::Now);
    EXPECT_THROW(throwing.GetValue(), std::runtime_error);
    EXPECT_EQ(throwing.GetValue(), 2);
}

TEST_F(TimedCacheTest, ClearReleasesTheValue)
{
    auto value = std::make_shared<int>(1);
    TimedCache<std::shared_ptr<int>> holder([&] { return value; }, 1000, &FakeClock::Now);
    holder.GetValue();
    EXPECT_EQ(value.use_count(), 2);
    holder.Clear();
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(TimedCacheTest, ReturnedValueIsUnaffectedByClearAndRefill)
{
    TimedCache<QVector<int>> listing([this] { return QVector<int>(3, ++refills); }, 1000, &FakeClock::Now);
    QVector<int> const copy = listing.GetValue();
    listing.Clear();
    EXPECT_EQ(listing.GetValue(), QVector<int>(3, 2));
    EXPECT_EQ(copy, QVector<int>(3, 1));
}

TEST_F(TimedCacheTest, HitReturnsASharedCopyThatDetachesOnWrite)
{
    TimedCache<QVector<int>> listing([this] { return QVector<int>(3, ++refills); }, 1000, &FakeClock::Now);
    QVector<int> copy = listing.GetValue();
    EXPECT_EQ(copy.constData(), listing.GetValue().constData());
    copy[0] = 99;
    EXPECT_EQ(listing.GetValue(), QVector<int>(3, 1));
}

TEST_F(TimedCacheTest, UsesTheSystemClockByDefault)
{
    TimedCache<int> real([this] { return ++refills; });
    EXPECT_EQ(real.GetValue(), 1);
    real.Clear();
    EXPECT_EQ(real.GetValue(), 2);
}

struct AgeCase
{
    char const* name;
    int rateMsec;
    qint64 age;
    bool fresh;
};

void PrintTo(AgeCase const& age, std::ostream* out)
{
    *out << age.name;
}

class TimedCacheAgeTest : public TimedCacheTest, public testing::WithParamInterface<AgeCase>
{};

TEST_P(TimedCacheAgeTest, ValueIsFreshUpToTheRateInWholeSeconds)
{
    TimedCache<int> aging([this] { return ++refills; }, GetParam().rateMsec, &FakeClock::Now);
    aging.GetValue();
    FakeClock::Move(GetParam().age);
    EXPECT_EQ(aging.GetValue(), GetParam().fresh ? 1 : 2);
}

INSTANTIATE_TEST_SUITE_P(Ages,
                         TimedCacheAgeTest,
                         testing::Values(AgeCase{"AtOnce", 1000, 0, true},
                                         AgeCase{"AtTheRate", 1000, 1000, true},
                                         AgeCase{"JustUnderTwoSeconds", 1000, 1999, true},
                                         AgeCase{"TwoSeconds", 1000, 2000, false},
                                         AgeCase{"TwoAndAHalfSeconds", 1000, 2500, false},
                                         AgeCase{"ADay", 1000, 86'400'000, false},
                                         AgeCase{"ClockBackByTheRate", 1000, -1000, true},
                                         AgeCase{"ClockBackByJustUnderTwoSeconds", 1000, -1999, true},
                                         AgeCase{"ClockBackByTwoSeconds", 1000, -2000, false},
                                         AgeCase{"ClockBackByAnHour", 1000, -3'600'000, false},
                                         AgeCase{"RateUnderASecondCountsAsZero", 999, 999, true},
                                         AgeCase{"RateUnderASecondEndsAtASecond", 999, 1000, false},
                                         AgeCase{"RateIsCutToWholeSeconds", 2500, 2999, true},
                                         AgeCase{"RateCutToTwoSecondsEndsAtThree", 2500, 3000, false}),
                         [](auto const& param) { return std::string(param.param.name); });

TEST_F(TimedCacheTest, ThreadsNeverSeeAHalfWrittenValue)
{
    constexpr int Length = 1'000;
    std::atomic<int> filled = 0;
    TimedCache<std::vector<int>> listing([&] { return std::vector<int>(Length, ++filled); }, 1000, &FakeClock::Now);

    std::atomic<int> broken = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 500; ++i) {
                if (thread == 0 && i % 5 == 0)
                    listing.Clear();
                if (thread == 1)
                    FakeClock::Move(700);
                std::vector<int> const value = listing.GetValue();
                // Empty if another thread cleared the cache between the refill and the return.
                if (!value.empty() && value != std::vector<int>(Length, value.front()))
                    ++broken;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(broken, 0);
    EXPECT_GT(filled, 1);
}

TEST_F(TimedCacheTest, ChangedEpochRefillsOnceWhateverTheAge)
{
    static std::atomic<quint64> epoch;
    epoch = 7;
    TimedCache<int> counted([this] { return ++refills; }, 1000, &FakeClock::Now, [] { return epoch.load(); });
    EXPECT_EQ(counted.GetValue(), 1);
    EXPECT_EQ(counted.GetValue(), 1);
    ++epoch;
    EXPECT_EQ(counted.GetValue(), 2);
    EXPECT_EQ(counted.GetValue(), 2);
}

TEST_F(TimedCacheTest, ValueWhoseEpochEndsDuringItsRefillIsOutdated)
{
    static std::atomic<quint64> epoch;
    epoch = 0;
    TimedCache<int> counted(
        [this] {
            if (++refills == 1)
                ++epoch;
            return refills;
        },
        1000,
        &FakeClock::Now,
        [] { return epoch.load(); });
    EXPECT_EQ(counted.GetValue(), 1);
    EXPECT_EQ(counted.GetValue(), 2);
    EXPECT_EQ(counted.GetValue(), 2);
}

} // namespace
