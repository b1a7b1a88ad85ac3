#include "child_process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "become.h"
#include "platform/linux/key_file_store.h"
#include "variable.h"

namespace quorvel::testing {

struct ChildProcess::System {
  pid_t id = -1;
  std::optional<int> status{};
  rusage used{};
};

namespace {

constexpr const char* second = "QUORVEL_TEST_SECOND_PROCESS";

void redirect(const std::string& file, int mode, int descriptor) {
  const int opened = open(file.empty() ? "/dev/null" : file.c_str(), mode | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (opened < 0 || dup2(opened, descriptor) < 0) _exit(126);
}

}  // namespace

void become(const Start& start) {
  if (!start.folder.empty() && chdir(start.folder.c_str()) != 0) _exit(126);
  for (const auto& [name, value] : start.environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> arguments{const_cast<char*>(start.program.c_str())};
  for (const std::string& argument : start.arguments) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execv(start.program.c_str(), arguments.data());
  _exit(127);
}

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
  if (wait4(system_->id, &status, 0, &system_->used) != system_->id) throw std::runtime_error("no such process");
  system_->status = WIFEXITED(status) ? WEXITSTATUS(status) : killed;
  return *system_->status;
}

std::uint64_t ChildProcess::most_memory() const {
  return static_cast<std::uint64_t>(system_->used.ru_maxrss) * 1024;
}

Start second_process(const std::string& name, const std::string& told) {
  return {.program = "/proc/self/exe",
          .arguments = {"--gtest_filter=SecondProcess." + name},
          .environment = {{second, told}}};
}

std::string told_by_first() {
  return Variable::get(second).value_or("");
}

void kill_this_process() {
  ::kill(getpid(), SIGKILL);
  std::abort();
}

std::map<std::string, std::string> user_at(const std::string& home, const std::string& api_base) {
  return {{"HOME", home},        {"XDG_CONFIG_HOME", ""}, {"XDG_DATA_HOME", ""},
          {"LC_ALL", "C.UTF-8"}, {"SSL_CERT_FILE", ""},   {"QUORVEL_API_BASE", api_base}};
}

std::unique_ptr<KeyValueStore> settings_of(Files& files, const std::string& home) {
  return std::make_unique<KeyFileStore>(files, home + "/.config/Quorvel/settings.ini");
}

std::unique_ptr<KeyValueStore> settings_in(Files& files, const std::string& folder) {
  return std::make_unique<KeyFileStore>(files, folder + "/settings/settings.ini");
}

std::string data_folder_of(const std::string& home) {
  return home + "/.local/share/Quorvel";
}

}  // namespace quorvel::testing
