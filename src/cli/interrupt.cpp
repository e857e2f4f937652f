#include "cli/interrupt.h"

#include <csignal>
#include <initializer_list>

namespace tarnova {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void note(int) {
    interrupted = 1;
}

}  // namespace

void watchInterrupts() {
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM})
        sigaction(signal, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is an error of its writer
}

bool wasInterrupted() {
    return interrupted != 0;
}

}  // namespace tarnova
