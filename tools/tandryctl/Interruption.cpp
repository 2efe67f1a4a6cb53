#include "Interruption.h"

#include <csignal>
#include <cstddef>

namespace tandryctl {

namespace {

constexpr std::array<int, 2> Signals{SIGINT, SIGTERM};

volatile std::sig_atomic_t received = 0;

void Receive(int signal)
{
    received = signal;
}

} // namespace

Interruption::Interruption()
{
    received = 0;
    struct sigaction action = {};
    action.sa_handler = Receive;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    for (std::size_t i = 0; i < Signals.size(); ++i) {
        ::sigaction(Signals[i], nullptr, &_before[i]);
        if (_before[i].sa_handler != SIG_IGN)
            ::sigaction(Signals[i], &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t i = 0; i < Signals.size(); ++i)
        ::sigaction(Signals[i], &_before[i], nullptr);
}

bool Interruption::IsRequested()
{
    return received != 0;
}

void Interruption::TakeAsHandled()
{
    received = 0;
}

void Interruption::EndProcess()
{
    if (received != 0)
        ::raise(received);
}

} // namespace tandryctl
