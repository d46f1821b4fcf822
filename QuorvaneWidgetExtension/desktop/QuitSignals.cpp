#include "QuorvaneWidgetExtension/desktop/QuitSignals.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane::desktop {
namespace {

constexpr std::array quitSignals{SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t writeEnd = -1;

/// All that a signal handler may do.
extern "C" void passOn(int /*signal*/) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
}

}  // namespace

QuitSignals::QuitSignals(QObject* parent) : QObject{parent} {
    if (::pipe2(pipe_.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    writeEnd = pipe_[1];
    notifier_ = new QSocketNotifier{pipe_[0], QSocketNotifier::Read, this};
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(pipe_[0], &byte, 1) == 1) Q_EMIT received();
    });
    for (const int signal : quitSignals)
        std::signal(signal, passOn);
}

QuitSignals::~QuitSignals() {
    for (const int signal : quitSignals)
        std::signal(signal, SIG_DFL);
    for (const int end : pipe_) {
        if (end >= 0) ::close(end);
    }
}

}  // namespace quorvane::desktop
