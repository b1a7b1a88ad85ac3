#include "platform/curl/curl_socket_control.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include "listings_service.h"
#include "platform/system.h"
#include "variable.h"

namespace quorvel::testing {
namespace {

/// All that comes until the connection ends, in reads so small that TLS has to hold the rest back; and how it ends.
std::string read_to_end(SocketControl& socket) {
  std::string got;
  char buffer[7];
  std::ptrdiff_t size = 0;
  while ((size = socket.read(buffer, sizeof buffer)) > 0) got.append(buffer, static_cast<std::size_t>(size));
  return got + (size == 0 ? "|closed" : "|error");
}

TEST(CurlSocketControl, TellsClosingWaitingAndFailingApart) {
  auto service = std::make_unique<ListingsService>();
  const int port = service->port();
  CurlSocketControl socket, waiting;
  for (CurlSocketControl* const each : {&socket, &waiting}) {
    char byte = 0;
    EXPECT_EQ(each->read(&byte, 1) + each->write("x"), -1) << "not connected";
    each->set_timeout(1);
    const Variable proxy("all_proxy", "http://127.0.0.1:9");  // nobody there, so asking it would fail
    ASSERT_EQ(each->connect("127.0.0.1", port), 0) << each->last_error_string();
  }
  const std::string request = "GET /shows/108/episodes HTTP/1.0\r\n\r\n";
  EXPECT_EQ(socket.write(request.substr(0, 5)), 5);
  EXPECT_EQ(read_to_end(socket), "|error") << "the service waits for the rest";
  EXPECT_EQ(socket.last_error(), CURLE_OPERATION_TIMEDOUT);
  std::string more_than_fits;
  more_than_fits.resize(50'000'000);
  EXPECT_LT(waiting.write(more_than_fits), 50'000'000) << "the service is busy with the other client";
  EXPECT_EQ(waiting.last_error(), CURLE_OPERATION_TIMEDOUT);
  EXPECT_EQ(socket.write(request.substr(5)), static_cast<std::ptrdiff_t>(request.size()) - 5);
  EXPECT_EQ(read_to_end(socket), listings_answer(request) + "|closed");
  EXPECT_EQ(service->requests(), std::vector{request});
  while (socket.write("x") == 1) continue;  // until the system knows; and no signal ends the program
  waiting.disconnect();
  service.reset();
  EXPECT_EQ(socket.connect("127.0.0.1", port), CURLE_COULDNT_CONNECT);
  EXPECT_EQ(socket.connect("127.0.0.1/@x", port), CURLE_URL_MALFORMAT);
  EXPECT_NE(socket.last_error_string(), "");
}

struct Https : ::testing::Test {
  void SetUp() override {
    if (!Variable::get("QUORVEL_TLS_good")) GTEST_SKIP() << "support/tls_peers_main.cpp runs these";
  }
  /// What the system's own connection gets from a server, in whose place `authority` vouches.
  static std::string answer(const std::string& server, const std::string& authority) {
    const Variable trusted("SSL_CERT_FILE", authority);
    const std::unique_ptr<SocketControl> socket = system_socket();
    socket->set_secure(true);
    if (socket->connect("localhost", std::stoi(Variable::get("QUORVEL_TLS_" + server).value())) != 0) return "refused";
    socket->write("GET / HTTP/1.0\r\n\r\n");
    return read_to_end(*socket);
  }
  const std::string authority = QUORVEL_CERTIFICATES_DIR "/authority.pem";
  const std::string good = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n[]";
};

TEST_F(Https, AnAnswerArrivesByteForByte) {
  EXPECT_TRUE(answer("good", authority).starts_with(good + "|"));
}

TEST_F(Https, OnlyTheRightServerIsAcceptedAndOnlyAWholeAnswer) {
  EXPECT_EQ(answer("good", authority), good + "|closed");
  EXPECT_EQ(answer("silent", authority), good + "|error");
  EXPECT_EQ(answer("good", ""), "refused");
  for (const char* const server : {"other_host", "expired", "stranger"}) {
    EXPECT_EQ(answer(server, authority), "refused") << server;
  }
}

}  // namespace
}  // namespace quorvel::testing
