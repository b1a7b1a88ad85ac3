#include "platform/curl/curl_socket_control.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <vector>

#include "loopback.h"
#include "variable.h"

namespace quorvel::testing {
namespace {

TEST(CurlSocketControl, TellsClosingWaitingAndFailingApart) {
  auto listener = std::make_unique<Listener>();
  const int port = listener->port();
  CurlSocketControl socket;
  socket.set_timeout(1);
  char buffer[8];
  EXPECT_EQ(socket.read(buffer, 8) + socket.write("x"), -1);
  {
    const Variable proxy("all_proxy", "http://127.0.0.1:9");  // nobody there, so asking it would fail
    ASSERT_EQ(socket.connect("127.0.0.1", port), 0) << socket.last_error_string();
  }
  std::shared_ptr<Peer> peer = listener->accept();
  listener.reset();
  EXPECT_EQ(socket.write("hello"), 5);
  std::string heard(5, '\0');
  for (char& byte : heard) EXPECT_TRUE(peer->read(byte));
  EXPECT_EQ(heard, "hello");
  EXPECT_EQ(socket.read(buffer, 8), -1);
  EXPECT_EQ(socket.last_error(), CURLE_OPERATION_TIMEDOUT);
  EXPECT_TRUE(peer->write("bytes"));
  peer->end();
  EXPECT_EQ(socket.read(buffer, 3), 3);
  EXPECT_EQ(socket.read(buffer + 3, 5), 2);
  EXPECT_EQ(std::string(buffer, 5), "bytes");
  EXPECT_EQ(socket.read(buffer, 8), 0);
  const std::vector<char> more_than_fits(50'000'000);
  EXPECT_LT(socket.write({more_than_fits.data(), more_than_fits.size()}), 50'000'000);
  EXPECT_EQ(socket.last_error(), CURLE_OPERATION_TIMEDOUT);
  peer.reset();
  EXPECT_EQ(socket.write("x") + socket.write("x"), 0);  // and no signal ends the program
  EXPECT_EQ(socket.connect("127.0.0.1", port), CURLE_COULDNT_CONNECT);
  EXPECT_EQ(socket.connect("127.0.0.1/@x", port), CURLE_URL_MALFORMAT);
  EXPECT_NE(socket.last_error_string(), "");
}

}  // namespace
}  // namespace quorvel::testing
