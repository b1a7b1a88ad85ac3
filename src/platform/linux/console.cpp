#include "platform/console.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace quorvel::console {
namespace {

// A signal handler can reach nothing but a static.
volatile std::sig_atomic_t interrupt_count = 0;
std::sig_atomic_t interrupts_told = 0;

constexpr auto interrupting = std::to_array<int>({SIGINT, SIGTERM, SIGHUP});

void on_interrupt(int) {
  interrupt_count = interrupt_count + 1;
}

/// Interrupts wait while it lives, so that none slips in between looking for one and waiting for the user.
class WithoutInterrupts {
 public:
  WithoutInterrupts() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : interrupting) sigaddset(&held, signal);
    ::sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~WithoutInterrupts() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
  WithoutInterrupts(const WithoutInterrupts&) = delete;
  WithoutInterrupts& operator=(const WithoutInterrupts&) = delete;
  const sigset_t& mask_before() const { return before_; }

 private:
  sigset_t before_{};
};

void write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = TEMP_FAILURE_RETRY(::write(descriptor, text.data(), text.size()));
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void open_missing_streams() {
  // The lowest number that is free is taken.
  for (int opened = 0; opened >= 0 && opened <= STDERR_FILENO;) {
    opened = ::open("/dev/null", O_RDWR);
    if (opened > STDERR_FILENO) ::close(opened);
  }
}

void write_out(std::string_view text) {
  write_all(STDOUT_FILENO, text);
}

void write_error(std::string_view text) {
  write_all(STDERR_FILENO, text);
}

bool error_is_terminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

int width() {
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::optional<std::string> read_line() {
  if (::isatty(STDIN_FILENO) != 1) return {};
  const WithoutInterrupts without;
  std::string line;
  while (interrupt_count == interrupts_told) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (::ppoll(&input, 1, nullptr, &without.mask_before()) < 0) continue;  // only here can an interrupt come in
    std::array<char, 1> byte{};
    if (::read(STDIN_FILENO, byte.data(), 1) != 1) return {};
    if (byte[0] == '\n') return line;
    line += byte[0];
  }
  return {};
}

void count_interrupts() {
  struct sigaction action {};
  action.sa_handler = on_interrupt;
  action.sa_flags = SA_RESTART;
  for (const int signal : interrupting) {
    struct sigaction given {};
    // Whoever started the program so that it ignores one, such as nohup, meant it.
    if (::sigaction(signal, nullptr, &given) == 0 && given.sa_handler == SIG_IGN) continue;
    ::sigaction(signal, &action, nullptr);
  }
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &action, nullptr);
}

int interrupts() {
  return interrupts_told = interrupt_count;
}

}  // namespace quorvel::console
