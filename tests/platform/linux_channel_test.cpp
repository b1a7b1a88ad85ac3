#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <list>

#include "child_process.h"
#include "file_tools.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/socket_channel.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

const std::string own = "quorvel-" + std::to_string(geteuid());

void ignore(const std::string&) {}

TEST(SocketChannel, OutlivesACopyThatCrashed) {
  const TemporaryFolder folder;
  const std::string socket = folder / (own + ".socket"), kept = folder / "kept";
  {
    SocketChannel channel(folder.path());
    {
      SocketChannel crashing(folder.path());
      crashing.receive(ignore);
      EXPECT_THROW(channel.receive(ignore), Failure);
      fs::create_hard_link(socket, kept);
    }
    fs::rename(kept, socket);  // as if it had not been removed
    EXPECT_THAT([&] { channel.send("x"); }, ::testing::ThrowsMessage<Failure>("The running copy of Quorvel has ended"));
    channel.receive(ignore);
    EXPECT_EQ(fs::status(socket).permissions(), fs::perms(0600));
  }
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(SocketChannel, IsNotHarmedByGarbageOrSilence) {
  const TemporaryFolder folder;
  SocketChannel channel(folder.path());
  const EventLoop events("");
  channel.receive([](const std::string& text) { ADD_FAILURE() << text; });
  sockaddr_un address{AF_UNIX, {}};
  (folder / (own + ".socket")).copy(address.sun_path, sizeof(address.sun_path) - 1);
  std::list<Descriptor> clients;
  const std::string garbage[] = {"\xFF\xFF\xFF\xFF", {"\0\0\0\1ab", 6}, {"\0\0\0\5ab", 6}, ""};
  for (std::size_t i = 0; i < 100; ++i) {  // more than are served at once
    const int client = clients.emplace_back(socket(AF_UNIX, SOCK_STREAM, 0)).get();
    ASSERT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(send(client, garbage[i % 4].data(), garbage[i % 4].size(), 0), std::ssize(garbage[i % 4]));
  }
  for (const Descriptor& client : clients) {
    char answer = 0;
    while (recv(client.get(), &answer, 1, MSG_DONTWAIT) < 0 && errno == EAGAIN) events.process();
    EXPECT_EQ(answer, 0);
  }
}

TEST(SocketChannel, UsesOnlyAFolderOfTheUsersOwn) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "open");
  fs::permissions(folder / "open", fs::perms::all);
  for (const std::string& given : {std::string("relative"), folder / "none", folder / "open"}) {
    SocketChannel channel(given, folder.path());
    channel.receive(ignore);
    EXPECT_TRUE(fs::exists(folder / (own + "/" + own + ".socket"))) << given;
  }
  // Those that others might reach are passed over, by a copy that comes later as well when they are gone by then.
  if (geteuid() != 0 || chown((folder / own).c_str(), 65534, 65534) != 0)
    fs::permissions(folder / own, fs::perms(0750));
  fs::create_symlink(own, folder / (own + "-2"));
  write_file(folder / (own + "-3"), "in the way");
  SocketChannel running("", folder.path()), later("", folder.path());
  running.receive(ignore);
  EXPECT_TRUE(fs::exists(folder / (own + "-4/" + own + ".socket")));
  fs::remove_all(folder / own);
  EXPECT_FALSE(later.become_running_copy());
  EXPECT_THROW(SocketChannel("", "/proc").become_running_copy(), Failure) << "where no folder can be made";
}

}  // namespace
}  // namespace quorvel::testing
