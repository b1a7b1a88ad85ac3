#include "platform/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace quorvel::console {
namespace {

// A signal handler can reach nothing but a static.
volatile std::sig_atomic_t interrupt_count = 0;

void on_interrupt(int) {
  interrupt_count = interrupt_count + 1;
}

void write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void write_out(std::string_view text) {
  write_all(STDOUT_FILENO, text);
}

void write_error(std::string_view text) {
  write_all(STDERR_FILENO, text);
}

bool out_is_terminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

bool error_is_terminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

int width() {
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::optional<std::string> read_line() {
  if (::isatty(STDIN_FILENO) != 1) return std::nullopt;
  std::string line;
  for (std::array<char, 1> byte{}; ::read(STDIN_FILENO, byte.data(), 1) == 1;) {
    if (byte[0] == '\n') return line;
    line += byte[0];
  }
  return std::nullopt;
}

void count_interrupts() {
  struct sigaction action {};
  action.sa_handler = on_interrupt;  // without SA_RESTART, so that it ends a question
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
}

int interrupts() {
  return interrupt_count;
}

}  // namespace quorvel::console
