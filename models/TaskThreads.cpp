#include "models/TaskThreads.h"

#include <utility>

namespace sync::models {

TaskThreads::TaskThreads(int maxThreads)
    : _maxThreads(static_cast<std::size_t>(maxThreads))
{}

TaskThreads::~TaskThreads()
{
    {
        std::lock_guard<std::mutex> const lock(_mutex);
        _isEnding = true;
        _tasks.clear();
    }
    _changed.notify_all();
    for (std::thread& thread : _threads)
        thread.join();
}

void TaskThreads::Start(std::function<void()> task)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    _tasks.push_back(std::move(task));
    if (_idleThreads < _tasks.size() && _threads.size() < _maxThreads)
        _threads.emplace_back([this] { Work(); });
    _changed.notify_one();
}

void TaskThreads::Work()
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (true) {
        ++_idleThreads;
        _changed.wait(lock, [this] { return _isEnding || !_tasks.empty(); });
        --_idleThreads;
        if (_isEnding)
            return;
        std::function<void()> task = std::move(_tasks.front());
        _tasks.pop_front();
        lock.unlock();
        task();
        task = nullptr; // what it holds ends here
        lock.lock();
    }
}

} // namespace sync::models
