#include "models/TaskThreads.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace task_threads_test {

namespace {

using sync::models::TaskThreads;

TEST(ATaskThread, RunsTasksInTheirOrderOnOneThread)
{
    std::vector<int> order;
    std::set<std::thread::id> ids;
    std::promise<void> ended;
    TaskThreads threads(1);
    for (int task = 0; task < 100; ++task) {
        threads.Start([&, task] {
            order.push_back(task);
            ids.insert(std::this_thread::get_id());
            if (task == 99)
                ended.set_value();
        });
    }
    ended.get_future().wait();
    EXPECT_EQ(ids.size(), 1U);
    EXPECT_EQ(ids.count(std::this_thread::get_id()), 0U);
    ASSERT_EQ(order.size(), 100U);
    for (int task = 0; task < 100; ++task)
        EXPECT_EQ(order[static_cast<std::size_t>(task)], task);
}

TEST(ATaskThread, StartsAnotherOneWhenItIsBusy)
{
    std::promise<void> first;
    std::promise<void> second;
    TaskThreads threads(2);
    threads.Start([&] { second.get_future().wait(); });
    threads.Start([&] { first.set_value(); });
    first.get_future().wait();
    second.set_value();
}

TEST(ATaskThread, EndsItsTaskAndRunsNoOtherWhenItsOwnerIsDestroyed)
{
    auto const held = std::make_shared<int>(0);
    std::promise<void> begun;
    std::promise<void> goOn;
    bool hasRun = false;
    std::thread opener;
    {
        TaskThreads threads(1);
        threads.Start([&begun, &goOn, held] {
            begun.set_value();
            goOn.get_future().wait();
        });
        threads.Start([&hasRun, held] { hasRun = true; });
        begun.get_future().wait();
        opener = std::thread([&goOn, held] {
            while (held.use_count() > 3) // until the destructor has given up the second task
                std::this_thread::yield();
            goOn.set_value();
        });
    }
    opener.join();
    EXPECT_FALSE(hasRun);
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace

} // namespace task_threads_test
