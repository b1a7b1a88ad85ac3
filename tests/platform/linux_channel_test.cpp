#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>

#include "child_process.h"
#include "file_tools.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/socket_channel.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

std::string name(const char* end) {
  return "quorvel-" + std::to_string(geteuid()) + end;
}

/// Becomes the running copy, which hears nothing, and tells so by a file.
const SecondProcess hang("hang", [](const std::string& folder) -> int {
  SocketChannel channel(folder);
  channel.receive([](const std::string&) {});
  write_file(folder + "/ready", "x");
  for (;;) pause();
});

TEST(SocketChannel, OutlivesACopyThatCrashed) {
  const TemporaryFolder folder;
  ChildProcess hung(hang.start(folder.path()));
  while (!fs::exists(folder / "ready")) std::this_thread::yield();
  {
    SocketChannel channel(folder.path(), "/tmp", std::chrono::milliseconds(100));
    const auto reason = [&] {
      try {
        channel.send("file");
      } catch (const Failure& failure) {
        return std::string(failure.what());
      }
      return std::string();
    };
    EXPECT_THROW(channel.receive([](const std::string&) {}), Failure);
    EXPECT_EQ(
        reason(),
        "Quorvel is already running but does not answer. Close it or wait until it has finished, then try again.");
    hung.kill();
    hung.status();
    EXPECT_TRUE(fs::exists(folder / name(".socket")));
    EXPECT_EQ(reason(), "The running copy of Quorvel has ended");
    channel.receive([](const std::string&) {});
    EXPECT_EQ(fs::status(folder / name(".socket")).permissions(), fs::perms(0600));
  }
  fs::remove(folder / "ready");
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(SocketChannel, IsNotHarmedByGarbageOrSilence) {
  const TemporaryFolder folder;
  SocketChannel channel(folder.path());
  const EventLoop events("");
  int taken = 0;
  channel.receive([&](const std::string&) { ++taken; });
  std::vector<std::unique_ptr<Descriptor>> clients;
  const std::string garbage[] = {"\xFF\xFF\xFF\xFF", {"\x01\x00\x00\x01", 4}, {"\0\0\0\1ab", 6}, {"\0\0\0\5ab", 6}, ""};
  for (std::size_t i = 0; i < 100; ++i) {  // more than are served at once
    clients.push_back(std::make_unique<Descriptor>(socket(AF_UNIX, SOCK_STREAM, 0)));
    sockaddr_un address{AF_UNIX, {}};
    (folder / name(".socket")).copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(connect(clients.back()->get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const std::string& bytes = garbage[i % 5];
    ASSERT_EQ(send(clients.back()->get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }
  for (const auto& client : clients) {
    char answer = 0;
    ssize_t got = -1;
    while ((got = recv(client->get(), &answer, 1, MSG_DONTWAIT)) < 0 && errno == EAGAIN) events.process();
    EXPECT_LE(got, 0);
  }
  EXPECT_EQ(taken, 0);
}

TEST(SocketChannel, UsesOnlyAFolderOfTheUsersOwn) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "open");
  fs::permissions(folder / "open", fs::perms::all);
  const std::string own = folder / name("");
  for (const std::string& given : {std::string(), std::string("relative"), folder / "none", folder / "open"}) {
    SocketChannel channel(given, folder.path());
    channel.receive([](const std::string&) {});
    EXPECT_TRUE(fs::exists(own + "/" + name(".socket"))) << given;
  }
  fs::permissions(own, fs::perms(0750));
  EXPECT_THROW(SocketChannel("", folder.path()).become_running_copy(), Failure);
  fs::remove(own);
  fs::create_directory(folder / "elsewhere");
  fs::permissions(folder / "elsewhere", fs::perms(0700));
  fs::create_symlink("elsewhere", own);
  EXPECT_THROW(SocketChannel("", folder.path()).become_running_copy(), Failure);
}

}  // namespace
}  // namespace quorvel::testing
