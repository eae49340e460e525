#include "app/TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t endingSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
        sigaddset(&ending, signal);
    return ending;
}

} // namespace

void TerminationSignals::block() {
    const sigset_t ending = endingSignals();
    ::pthread_sigmask(SIG_BLOCK, &ending, nullptr);
}

TerminationSignals::TerminationSignals(QObject* parent) : QObject(parent) {
    const sigset_t ending = endingSignals();
    // Blocked in this thread, and so in every thread that it starts.
    if (::pthread_sigmask(SIG_BLOCK, &ending, nullptr) != 0) return;
    _descriptor = ::signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
    if (_descriptor < 0) {
        ::pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
        return;
    }
    _notifier = std::make_unique<QSocketNotifier>(_descriptor, QSocketNotifier::Read);
    connect(_notifier.get(), &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo info{};
        if (::read(_descriptor, &info, sizeof info) == sizeof info) Q_EMIT received();
    });
}

TerminationSignals::~TerminationSignals() {
    _notifier.reset();
    if (_descriptor >= 0) ::close(_descriptor);
}
