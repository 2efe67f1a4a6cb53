#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace sync::models {

/// Runs tasks on threads of its own, which start when they are needed. Unlike with `QThreadPool`, the threads have
/// closed their connections to stores when the destructor returns.
class TaskThreads
{
public:
    explicit TaskThreads(int maxThreads);
    /// Waits for the tasks that are running; the others are not run.
    ~TaskThreads();
    TaskThreads(TaskThreads const&) = delete;
    TaskThreads& operator=(TaskThreads const&) = delete;

    /// Runs a task when a thread is free. Tasks begin in the order in which they were started.
    void Start(std::function<void()> task);

private:
    void Work();

    std::size_t const _maxThreads;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<std::function<void()>> _tasks;
    std::size_t _idleThreads = 0;
    bool _isEnding = false;
    std::vector<std::thread> _threads;
};

} // namespace sync::models
