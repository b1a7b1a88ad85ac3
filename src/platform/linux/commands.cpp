#include "platform/commands.h"

#include <fcntl.h>
#include <glib.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "platform/linux/descriptor.h"
#include "text/failure.h"

namespace quorvel::commands {
namespace {

constexpr int slice_ms = 100;
constexpr int slices_of_grace = 20;  // from the wish to end to the kill

struct SpawnSettings {
  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};

  SpawnSettings() {
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    posix_spawnattr_init(&attributes);
    // We live on when a pipe is closed; what a program does then is its own choice.
    sigset_t usual;
    sigemptyset(&usual);
    sigaddset(&usual, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> environment_with(const Environment& variables) {
  std::vector<std::string> all;
  for (char** each = environ; *each != nullptr; ++each) {
    const std::string_view entry = *each;
    bool is_ours = false;
    for (const auto& [name, value] : variables) is_ours |= entry.starts_with(name + "=");
    if (!is_ours) all.emplace_back(entry);
  }
  for (const auto& [name, value] : variables) all.push_back(name + "=" + value);
  return all;
}

/// Comes back when the process has ended, or after a moment. Where the system has no handle for processes, after a
/// moment.
void wait_a_slice(const Descriptor& process) {
  pollfd end{process.get(), POLLIN, 0};
  poll(&end, process ? 1 : 0, process ? slice_ms : slice_ms / 10);
}

}  // namespace

std::vector<std::string> words_of(const std::string& text) {
  int count = 0;
  g_auto(GStrv) words = nullptr;
  g_autoptr(GError) error = nullptr;
  if (g_shell_parse_argv(text.c_str(), &count, &words, &error) == FALSE) throw Failure(error->message);
  return {words, words + count};
}

Ending run(const std::vector<std::string>& words, const Environment& variables, const std::function<bool()>& goes_on) {
  std::vector<std::string> arguments = words, environment = environment_with(variables);
  const SpawnSettings settings;
  pid_t pid = 0;
  const int error = posix_spawnp(&pid, words.front().c_str(), &settings.actions, &settings.attributes,
                                 pointers(arguments).data(), pointers(environment).data());
  if (error != 0) return {{}, std::generic_category().message(error)};
  const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  int slices_after_end = 0;
  for (int status = 0;;) {
    const pid_t ended = waitpid(pid, &status, WNOHANG);
    if (ended == pid && WIFEXITED(status)) return {WEXITSTATUS(status), {}};
    if (ended == pid) return {{}, "It was ended by signal " + std::to_string(WTERMSIG(status))};
    if (ended < 0) return {{}, std::generic_category().message(errno)};
    wait_a_slice(process);
    if (slices_after_end == 0 && goes_on()) continue;
    if (++slices_after_end == 1) kill(pid, SIGTERM);
    if (slices_after_end == slices_of_grace) kill(pid, SIGKILL);
  }
}

}  // namespace quorvel::commands
