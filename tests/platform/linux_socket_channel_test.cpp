#include "platform/linux/socket_channel.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>

#include "../support/temporary_folder.h"
#include "platform/linux/descriptor.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

/// Another copy of the program; 0 when `work` comes to its end, 1 when it throws.
pid_t start_copy(const std::function<void()>& work) {
  const pid_t copy = fork();
  if (copy != 0) return copy;
  alarm(40);
  try {
    work();
    _exit(0);
  } catch (const Failure&) {
    _exit(1);
  }
}

int result(pid_t copy) {
  int status = 0;
  waitpid(copy, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void run_until(const std::function<bool()>& done) {
  while (!done()) g_main_context_iteration(nullptr, TRUE);
}

std::string name(const char* end) {
  return "quorvel-" + std::to_string(geteuid()) + end;
}

std::string every_byte() {
  std::string bytes(1'000'000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  return bytes;
}

TEST(SocketChannel, OfFiftyStartedAtOnceOneRunsAndHearsAllOthers) {
  const TemporaryFolder folder;
  int gate[2];
  ASSERT_EQ(pipe(gate), 0);
  std::vector<pid_t> copies;
  copies.reserve(50);
  for (int i = 0; i < 50; ++i) {
    copies.push_back(start_copy([&, i] {
      close(gate[1]);
      char start = 0;
      while (read(gate[0], &start, 1) > 0) continue;
      SocketChannel channel(folder.path());
      if (channel.other_is_running()) return channel.send("file " + std::to_string(i));
      Texts heard;
      channel.receive([&](const std::string& text) { heard.push_back(text); });
      run_until([&] { return heard.size() == 49; });
      std::sort(heard.begin(), heard.end());
      std::ofstream(folder / "heard") << std::unique(heard.begin(), heard.end()) - heard.begin();
      kill(getpid(), SIGKILL);  // crashes, and leaves socket and lock behind
    }));
  }
  close(gate[0]);
  close(gate[1]);
  int crashed = 0;
  for (const pid_t copy : copies) {
    const int code = result(copy);
    EXPECT_LE(code, 0);
    crashed += code == -1 ? 1 : 0;
  }
  int heard = 0;
  std::ifstream(folder / "heard") >> heard;
  EXPECT_EQ(heard, 49);
  EXPECT_EQ(crashed, 1);

  EXPECT_TRUE(fs::exists(folder / name(".socket")));
  {
    SocketChannel next(folder.path()), other(folder.path());
    EXPECT_FALSE(next.other_is_running());
    EXPECT_TRUE(other.other_is_running());
    EXPECT_THROW(other.receive([](const std::string&) {}), Failure);
    Texts texts;
    next.receive([&](const std::string& text) { texts.push_back(text); });
    EXPECT_EQ(fs::status(folder / name(".socket")).permissions(), fs::perms(0600));
    const pid_t sender = start_copy([&] { SocketChannel(folder.path()).send(every_byte()); });
    run_until([&] { return !texts.empty(); });
    EXPECT_EQ(result(sender), 0);
    EXPECT_TRUE(texts == Texts{every_byte()});
  }
  fs::remove(folder / "heard");
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(SocketChannel, GivesUpOnACopyThatHangs) {
  const TemporaryFolder folder;
  const pid_t hung = start_copy([&] {
    SocketChannel channel(folder.path());
    channel.receive([](const std::string&) {});
    EXPECT_EQ(raise(SIGSTOP), 0);
  });
  int status = 0;
  ASSERT_EQ(waitpid(hung, &status, WUNTRACED), hung);
  ASSERT_TRUE(WIFSTOPPED(status));
  SocketChannel channel(folder.path(), "/tmp", std::chrono::milliseconds(300));
  ASSERT_TRUE(channel.other_is_running());
  const auto reason = [&] {
    try {
      channel.send("file");
    } catch (const Failure& failure) {
      return std::string(failure.what());
    }
    return std::string();
  };
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(reason(),
            "Quorvel is already running but does not answer. Close it or wait until it has finished, then try again.");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  kill(hung, SIGKILL);
  result(hung);
  EXPECT_EQ(reason(), "The running copy of Quorvel has ended");
  EXPECT_FALSE(channel.other_is_running());
}

TEST(SocketChannel, IsNotHarmedByGarbageSilenceOrItsHandler) {
  const TemporaryFolder folder;
  auto channel = std::make_unique<SocketChannel>(folder.path());
  Texts texts;
  std::function<void()> on_text = [] {};
  channel->receive([&](const std::string& text) {
    texts.push_back(text);
    on_text();
  });
  std::vector<std::unique_ptr<Descriptor>> clients;
  const std::string garbage[] = {"\xFF\xFF\xFF\xFF", {"\x01\x00\x00\x01", 4}, {"\0\0\0\1ab", 6}, {"\0\0\0\5ab", 6}, ""};
  for (int i = 0; i < 100; ++i) {  // more than are served at once
    clients.push_back(std::make_unique<Descriptor>(socket(AF_UNIX, SOCK_STREAM, 0)));
    sockaddr_un address{AF_UNIX, {}};
    (folder / name(".socket")).copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(connect(clients.back()->get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const std::string& bytes = garbage[i % 5];
    ASSERT_EQ(send(clients.back()->get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }
  char answer = 0;
  for (const auto& client : clients) {
    ssize_t got = -1;
    run_until([&] { return (got = recv(client->get(), &answer, 1, MSG_DONTWAIT)) >= 0 || errno == ECONNRESET; });
    EXPECT_LE(got, 0);
  }
  EXPECT_TRUE(texts.empty());
  EXPECT_THROW(channel->send(std::string(SocketChannel::longest_text + 1, 'x')), Failure);

  const auto send = [&] { SocketChannel(folder.path()).send("text"); };
  on_text = [] { throw Failure("refused"); };
  pid_t sender = start_copy(send);
  run_until([&] { return texts.size() == 1; });
  EXPECT_EQ(result(sender), 1);

  pid_t inner = 0;
  on_text = [&] {  // events, another text, and the end of the channel while a text is handled
    if (texts.size() == 3) return channel.reset();
    inner = start_copy(send);
    run_until([&] { return texts.size() == 3; });
  };
  sender = start_copy(send);
  run_until([&] { return texts.size() == 3; });
  EXPECT_EQ(result(sender), 0);
  EXPECT_EQ(result(inner), 0);
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(SocketChannel, UsesOnlyAFolderOfTheUsersOwn) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "open");
  fs::permissions(folder / "open", fs::perms::all);
  for (const std::string& given : {std::string(), std::string("relative"), folder / "none", folder / "open"}) {
    SocketChannel channel(given, folder.path());
    channel.receive([](const std::string&) {});
    EXPECT_TRUE(fs::exists(folder / (name("/") + name(".socket")))) << given;
  }
  const std::string own = folder / name("");
  fs::permissions(own, fs::perms(0750));
  EXPECT_THROW(SocketChannel("", folder.path()).other_is_running(), Failure);
  fs::remove(own);
  fs::create_directory(folder / "elsewhere");
  fs::permissions(folder / "elsewhere", fs::perms(0700));
  fs::create_symlink("elsewhere", own);
  EXPECT_THROW(SocketChannel("", folder.path()).other_is_running(), Failure);
}

}  // namespace
}  // namespace quorvel::testing
