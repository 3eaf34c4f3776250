#include "tools/gridkit/terminal/interruption.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace {

// A signal handler has nothing but a global to write to.
volatile std::sig_atomic_t last_signal = 0;

void mark(int signal) {
  last_signal = signal;
}

}  // namespace

void watch_for_interruption() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = mark;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    ::sigaction(signal, &action, nullptr);
  }
  std::signal(SIGXFSZ, SIG_IGN);
}

bool is_interrupted() {
  return last_signal != 0;
}

void stop_if_interrupted() {
  if (is_interrupted()) throw Interrupted();
}

void end_by_signal() {
  const int signal = last_signal;
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(1);
}
