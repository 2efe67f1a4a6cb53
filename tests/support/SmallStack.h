#pragma once

#include <QThread>

#include <memory>
#include <utility>

namespace tandry::test {

/// Runs a function on a thread with a stack of 512 KiB, the default of several systems, and returns its result. A stack
/// overflow ends the test program.
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
