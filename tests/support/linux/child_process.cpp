#include "child_process.h"

#include <fcntl.h>
#include <glib.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <thread>

namespace quorvel::testing {

struct ChildProcess::System {
  pid_t id = -1;
  int terminal = -1;
  std::string shown{};

  ~System() {
    ::kill(id, SIGKILL);
    waitpid(id, nullptr, 0);
    close(terminal);
  }
};

ChildProcess::ChildProcess(const Start& start) {
  if (access(start.program.c_str(), X_OK) != 0) throw std::runtime_error("no program " + start.program);
  int terminal = -1;
  const pid_t id = start.terminal ? forkpty(&terminal, nullptr, nullptr, nullptr) : fork();
  if (id < 0) throw std::runtime_error("no process for " + start.program);
  if (id > 0) {
    system_.reset(new System{id, terminal});
    return;
  }
  // Whoever runs the tests in the background may have had them ignored.
  for (const int interrupt : {SIGINT, SIGTERM, SIGHUP}) (void)std::signal(interrupt, SIG_DFL);
  int descriptor = STDIN_FILENO;
  for (const std::string& file : {std::string(), start.out, start.error}) {
    const int opened = open(file.empty() ? "/dev/null" : file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (!start.terminal && dup2(opened, descriptor++) < 0) _exit(126);
  }
  if (!start.folder.empty() && chdir(start.folder.c_str()) != 0) _exit(126);
  for (const auto& [name, value] : start.environment) set_variable(name, value);
  std::vector<char*> arguments{const_cast<char*>(start.program.c_str())};
  for (const std::string& argument : start.arguments) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execv(start.program.c_str(), arguments.data());
  _exit(127);
}

void ChildProcess::kill() const {
  ::kill(system_->id, SIGKILL);
}

int ChildProcess::status() const {
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(system_->id), &info, WEXITED | WNOWAIT) != 0) throw std::runtime_error("no end");
  return info.si_code == CLD_EXITED ? info.si_status : -1;
}

bool ChildProcess::shows(const std::string& text) const {
  char buffer[4096];
  while (system_->shown.find(text) == std::string::npos) {
    const ssize_t count = read(system_->terminal, buffer, sizeof buffer);
    if (count <= 0) return false;
    system_->shown.append(buffer, static_cast<std::size_t>(count));
  }
  return true;
}

void ChildProcess::type(const std::string& keys) const {
  if (write(system_->terminal, keys.data(), keys.size()) < 0) throw std::runtime_error("no terminal");
}

EventLoop::EventLoop(const std::string&) {}

void EventLoop::process() const {
  if (g_main_context_iteration(nullptr, FALSE) == FALSE) std::this_thread::yield();
}

void set_variable(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace quorvel::testing
