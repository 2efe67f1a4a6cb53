#include "models/Readings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>

#include <gtest/gtest.h>

namespace {

using sync::models::Readings;

class ReadingsOfAModel : public testing::Test
{
protected:
    QObject model;
    int readings = 0;
    bool succeeds = true;
};

TEST_F(ReadingsOfAModel, TellWhetherTheStoreAnswers)
{
    Readings own(model, [&] { return succeeds; });
    EXPECT_TRUE(own.Refresh());
    succeeds = false;
    EXPECT_FALSE(own.Refresh());
}

TEST_F(ReadingsOfAModel, AreMadeOnceMoreForAllThatAreAskedForMeanwhile)
{
    Readings* own = nullptr;
    Readings all(model, [&] {
        if (++readings == 1) {
            EXPECT_TRUE(own->Refresh());
            EXPECT_TRUE(own->Refresh());
            EXPECT_EQ(readings, 1) << "not in the middle of this one";
        }
        return readings == 2;
    });
    own = &all;
    EXPECT_TRUE(all.Refresh()) << "the answer of the last one";
    EXPECT_EQ(readings, 2);
}

TEST_F(ReadingsOfAModel, OfABranchAreMadeAtOnceAndFollowedByThoseThatAreAskedForMeanwhile)
{
    int branches = 0;
    Readings* own = nullptr;
    Readings all(model, [&] {
        if (++readings == 1) {
            own->Open([&] { return ++branches > 0; });
            EXPECT_EQ(branches, 1);
        }
        return true;
    });
    own = &all;
    EXPECT_TRUE(all.Refresh());
    EXPECT_EQ(readings, 1);
    all.Open([&] {
        EXPECT_TRUE(all.Refresh());
        EXPECT_EQ(readings, 1);
        return true;
    });
    EXPECT_EQ(readings, 2);
}

TEST_F(ReadingsOfAModel, ThatTakeTimeLetOthersWait)
{
    Readings all(model, [&] {
        ++readings;
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 2) {
        }
        return true;
    });
    for (int change = 0; change < 3; ++change)
        all.Follow();
    EXPECT_EQ(readings, 1);
    while (readings < 2)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(readings, 2) << "one for all changes";
    EXPECT_TRUE(all.Refresh()) << "what a client asks for is read at once";
    EXPECT_EQ(readings, 3);
}

} // namespace
