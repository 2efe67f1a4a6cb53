#pragma once

#include <QThread>

#include <memory>
#include <utility>

namespace tandry::test {

/// Runs a function on a thread whose stack has 512 KiB, as the threads of several systems have by default, and returns
/// what the function returned. An overflow ends the test program.
template <class Function>
auto OnSmallStack(Function&& function)
{
    decltype(function()) result;
    std::unique_ptr<QThread> const thread(QThread::create([&] { result = function(); }));
    thread->setStackSize(512 * 1024);
    thread->start();
    thread->wait();
    return result;
}

} // namespace tandry::test
