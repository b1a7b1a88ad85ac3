#include <spawn.h>
#include <sys/wait.h>

#include "test_window.h"

extern char** environ;

namespace quorvel::testing {
namespace {

/// The built program, started with these arguments.
class Program {
 public:
  explicit Program(const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(QUORVEL_PROGRAM)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    if (posix_spawn(&id_, QUORVEL_PROGRAM, nullptr, nullptr, argv.data(), environ) != 0) std::abort();
  }
  ~Program() {
    if (!ended()) kill(id_, SIGKILL), waitpid(id_, nullptr, 0);
  }
  Program(const Program&) = delete;

  bool ended() {
    int status = 0;
    if (!status_ && waitpid(id_, &status, WNOHANG) == id_) status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return status_.has_value();
  }
  int status() {
    wait_until([this] { return ended(); });
    return *status_;
  }

 private:
  pid_t id_ = 0;
  std::optional<int> status_;
};

class WholeProgram : public TestWindow {};

TEST_F(WholeProgram, ASecondStartHandsItsFolderOverAndTheUpdaterClosesTheFirst) {
  setenv("QUORVEL_API_BASE", service.base().c_str(), 1);
  const std::string early = file("harbour.lights.s01e01.avi"), late = file("Lights/harbour.lights.s01e02.avi");
  Program first({early});
  wait_until([&] { return !exists(early); });
  Program second({(folder / "in/Lights").string()});
  EXPECT_EQ(second.status(), 0);
  wait_until([&] { return !exists(late); });
  EXPECT_TRUE(exists("in/The Harbour Lights - 1x01 - Slack Water.avi"));
  const auto renamed = std::filesystem::directory_iterator(folder / "in/Lights")->path().filename().string();
  EXPECT_TRUE(renamed.starts_with("The Harbour Lights - 1x02 - ")) << renamed;
  const auto channel = system_instance_channel();
  ASSERT_TRUE(channel->other_is_running());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0);
  EXPECT_FALSE(channel->other_is_running());
}

}  // namespace
}  // namespace quorvel::testing
