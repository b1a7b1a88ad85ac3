#include "platform/curl/curl_socket_control.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include "child_process.h"
#include "listings_service.h"
#include "temporary_folder.h"

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
  const Variable proxy("all_proxy", "http://127.0.0.1:9");  // nobody there, so asking it would fail
  CurlSocketControl socket;
  EXPECT_EQ(read_to_end(socket), "|error");
  EXPECT_EQ(socket.write("x") + socket.last_error(), CURLE_SEND_ERROR) << "not connected";
  socket.set_timeout(1);
  ASSERT_EQ(socket.connect("127.0.0.1", port), 0) << socket.last_error_string();
  const std::string request = "GET /nothing HTTP/1.0\r\n\r\n";
  EXPECT_EQ(socket.write(request.substr(0, 5)), 5);
  EXPECT_EQ(read_to_end(socket), "|error") << "the service waits for the rest";
  EXPECT_EQ(socket.last_error(), CURLE_OPERATION_TIMEDOUT);
  socket.set_secure(true);
  EXPECT_EQ(socket.connect("127.0.0.1", port), CURLE_OPERATION_TIMEDOUT) << "the service waits here, too";
  socket.set_secure(false);
  ASSERT_EQ(socket.connect("127.0.0.1", port), 0) << socket.last_error_string();
  EXPECT_EQ(socket.write(request.substr(0, 5)), 5);
  int waits = 0;
  socket.on_wait = [&] { return ++waits < 3; };
  EXPECT_EQ(read_to_end(socket), "|error");
  EXPECT_EQ(socket.last_error() + waits, CURLE_ABORTED_BY_CALLBACK + 3);
  socket.on_wait = [] { return true; };
  service->slow_down(std::chrono::milliseconds(1));
  EXPECT_EQ(socket.write(request.substr(5)), static_cast<std::ptrdiff_t>(request.size()) - 5);
  EXPECT_EQ(read_to_end(socket), listings_answer(request) + "|closed");
  while (socket.write("x") == 1) continue;  // until the system knows; and no signal ends the program
  CurlSocketControl through(
      {}, [&](bool, const std::string& host) { return host == "far.example" ? service->base() : ""; });
  EXPECT_NE(through.connect("far.example", 443), 0) << "it is no proxy";
  EXPECT_TRUE(service->requests().back().starts_with("CONNECT far.example:443 HTTP/1.1\r\n"));
  through.on_wait = [] { return false; };
  EXPECT_EQ(through.connect("far.example", 443), CURLE_ABORTED_BY_CALLBACK);
  service.reset();
  EXPECT_EQ(socket.connect("127.0.0.1", port), CURLE_COULDNT_CONNECT);
  EXPECT_EQ(socket.connect("::1", port), CURLE_COULDNT_CONNECT);
  for (const std::string& host : {std::string("127.0.0.1\0", 10), std::string("a b"), std::string("user@127.0.0.1/")}) {
    EXPECT_EQ(socket.connect(host, port), CURLE_URL_MALFORMAT) << host;
  }
  EXPECT_NE(socket.last_error_string(), "");
  socket.on_wait = [] { return false; };
  EXPECT_EQ(socket.connect("127.0.0.1", port), CURLE_ABORTED_BY_CALLBACK);
}

const std::string authority = QUORVEL_CERTIFICATES_DIR "/authority.pem";
const std::string request = "GET /search/shows?q=none HTTP/1.0\r\n\r\n", good = listings_answer(request) + "|";

/// What the system's own connection gets from a server of tls_peers_main.cpp, for which `trusted` vouches.
std::string tls_answer(const std::string& server, const std::string& trusted = authority) {
  const Variable file("SSL_CERT_FILE", trusted);
  const std::unique_ptr<SocketControl> socket = system_socket();
  socket->set_secure(true);
  if (socket->connect("localhost", std::stoi(Variable::get("QUORVEL_TLS_" + server))) != 0) return "refused|";
  socket->write(request);
  return read_to_end(*socket);
}

struct Https : ::testing::Test {
  void SetUp() override {
    if (Variable::get("QUORVEL_TLS_good").empty()) GTEST_SKIP() << "tls-peers runs this";
  }
};

TEST_F(Https, OnlyTheRightServerIsAcceptedAndItsAnswerArrivesByteForByte) {
  EXPECT_TRUE(tls_answer("good").starts_with(good));
  EXPECT_EQ(tls_answer("other_host") + tls_answer("expired") + tls_answer("stranger") + tls_answer("good", "nowhere"),
            "refused|refused|refused|refused|");
}

TEST_F(Https, AnAnswerThatMayBeCutIsToldFromAWholeOneAndTheSystemVouchesByItself) {
  EXPECT_EQ(tls_answer("good") + tls_answer("silent"), good + "closed" + good + "error");
  EXPECT_EQ(tls_answer("good", ""), "refused|");
}

TEST_F(Https, TheWebClientTrustsTheRightServerAloneAndIsNotLedToWhereNothingIsEncrypted) {
  const std::string base = "https://localhost:" + Variable::get("QUORVEL_TLS_modern");
  const auto got = [&](const std::string& target, const std::string& trusted) {
    const Variable file("SSL_CERT_FILE", trusted);
    try {
      return system_web_client("")->get(base + target).body;
    } catch (const Failure& failure) {
      return failure.what() + std::string("|");
    }
  };
  EXPECT_EQ(got("/search/shows?q=none", authority), "[]");
  EXPECT_EQ(got("/leave", authority),
            "The answer from localhost was given up: it leads to 127.0.0.1 without encryption|");
  EXPECT_EQ(got("/", "nowhere"), "No connection to localhost: The certificates of nowhere cannot be read|");
  EXPECT_TRUE(got("/", QUORVEL_CERTIFICATES_DIR "/stranger.pem").starts_with("No connection to localhost: "));
}

TEST_F(Https, TheWholeProgramGetsItsListingsThoughTheServerEndsWithoutItsNotice) {
  const TemporaryFolder folder;
  write_file(folder / "harbour.lights.s01e02.mkv", "x");
  // A name that only the system's own characters can write.
  std::filesystem::copy_file(path_of(authority), path_of(folder / "日.pem"));
  auto environment = user_at(folder.path(), "https://localhost:" + Variable::get("QUORVEL_TLS_silent"));
  environment["SSL_CERT_FILE"] = folder / "日.pem";
  const Start start{QUORVEL_CLI, {"-w" + folder.path(), folder / "harbour.lights.s01e02.mkv"}, {}, environment};
  EXPECT_EQ(ChildProcess(start).status(), 0);
  EXPECT_EQ(contents(folder / "The Harbour Lights - 1x02 - The Pilot Boat.mkv"), "x");
}

}  // namespace
}  // namespace quorvel::testing
