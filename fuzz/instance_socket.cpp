#include <glib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "fuzz_support.h"
#include "platform/linux/socket_channel.h"
#include "support/temporary_folder.h"

using namespace quorvel;

/// What another program writes into the socket: the handler gets a text only when it was announced to the byte.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const testing::TemporaryFolder folder;
  static std::vector<std::string> texts;
  static SocketChannel& channel = *[] {
    auto* const opened = new SocketChannel(folder.path(), folder.path());  // outlives the run
    opened->receive([](const std::string& text) { texts.push_back(text); });
    return opened;
  }();
  (void)channel;
  texts.clear();
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  (folder / ("quorvel-" + std::to_string(geteuid()) + ".socket")).copy(address.sun_path, sizeof(address.sun_path) - 1);
  const int peer = socket(AF_UNIX, SOCK_STREAM, 0);
  fuzz::check(connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0, "the copy listens");
  fuzz::check(send(peer, data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size), "it has room");
  shutdown(peer, SHUT_WR);
  char answer = 0;
  ssize_t got = -1;
  while ((got = recv(peer, &answer, 1, MSG_DONTWAIT)) < 0 && errno == EAGAIN) g_main_context_iteration(nullptr, TRUE);
  close(peer);
  std::uint64_t announced = 0;
  for (std::size_t i = 0; i < 4 && i < size; ++i) announced = announced << 8U | data[i];
  const bool exact = size >= 4 && announced == size - 4;
  fuzz::check(texts.size() == (exact ? 1U : 0U) && (got == 1) == exact, "only a whole text is taken and answered");
  if (exact) fuzz::check(texts[0] == fuzz::text_of(data + 4, size - 4), "as it was sent");
  return 0;
}
