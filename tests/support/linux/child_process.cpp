#include "child_process.h"

#include <fcntl.h>
#include <glib.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <optional>
#include <stdexcept>
#include <thread>

namespace quorvel::testing {

struct ChildProcess::System {
  pid_t id = -1;
  std::optional<int> status{};
};

struct Conversation::System {
  int terminal = -1;
  pid_t id = -1;
  std::string shown{};

  /// False at the end.
  bool read() {
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(terminal, buffer.data(), buffer.size());
    if (count > 0) shown.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }
};

namespace {

void redirect(const std::string& file, int mode, int descriptor) {
  const int opened = open(file.empty() ? "/dev/null" : file.c_str(), mode | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (opened < 0 || dup2(opened, descriptor) < 0) _exit(126);
}

[[noreturn]] void become(const Start& start) {
  if (!start.folder.empty() && chdir(start.folder.c_str()) != 0) _exit(126);
  for (const auto& [name, value] : start.environment) set_variable(name, value);
  std::vector<char*> arguments{const_cast<char*>(start.program.c_str())};
  for (const std::string& argument : start.arguments) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execv(start.program.c_str(), arguments.data());
  _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const Start& start) : system_(std::make_unique<System>()) {
  if (access(start.program.c_str(), X_OK) != 0) throw std::runtime_error("no program " + start.program);
  system_->id = fork();
  if (system_->id < 0) throw std::runtime_error("no process for " + start.program);
  if (system_->id > 0) return;
  redirect("", O_RDONLY, STDIN_FILENO);
  redirect(start.out, O_WRONLY, STDOUT_FILENO);
  redirect(start.error, O_WRONLY, STDERR_FILENO);
  become(start);
}

ChildProcess::~ChildProcess() {
  kill();
  status();
}

void ChildProcess::kill() {
  if (!system_->status) ::kill(system_->id, SIGKILL);
}

int ChildProcess::status() {
  if (system_->status) return *system_->status;
  int status = 0;
  if (waitpid(system_->id, &status, 0) != system_->id) throw std::runtime_error("no such process");
  system_->status = WIFEXITED(status) ? WEXITSTATUS(status) : killed;
  return *system_->status;
}

Conversation::Conversation(const Start& start) : system_(std::make_unique<System>()) {
  system_->id = forkpty(&system_->terminal, nullptr, nullptr, nullptr);
  if (system_->id == 0) become(start);
}

Conversation::~Conversation() {
  close(system_->terminal);
}

bool Conversation::shows(const std::string& text) {
  while (system_->shown.find(text) == std::string::npos) {
    if (!system_->read()) return false;
  }
  return true;
}

void Conversation::type(const std::string& keys) {
  if (::write(system_->terminal, keys.data(), keys.size()) < 0) throw std::runtime_error("no terminal");
}

int Conversation::status() {
  while (system_->read()) continue;
  int status = 0;
  waitpid(system_->id, &status, 0);
  return WEXITSTATUS(status);
}

EventLoop::EventLoop(const std::string&) {}

EventLoop::~EventLoop() = default;

void EventLoop::process() const {
  if (g_main_context_iteration(nullptr, FALSE) == FALSE) std::this_thread::yield();
}

void kill_this_process() {
  ::kill(getpid(), SIGKILL);
  std::abort();
}

void set_variable(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace quorvel::testing
