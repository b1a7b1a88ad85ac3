#include <gtest/gtest.h>

#include <cstdlib>

#include "fake_ports.h"
#include "platform/system.h"
#include "transport/http_client.h"
#include "trust.h"

namespace quorvel::testing {
namespace {

std::string variable(const std::string& name) {
  const char* const value = std::getenv(("QUORVEL_TLS_" + name).c_str());
  if (value == nullptr) throw std::runtime_error("the servers of support/tls_peers_main.cpp are not there");
  return value;
}

struct Https : ::testing::Test {
  Events events;
  FakeUi ui{events};
  Lines log;
  std::string status;

  /// The body that a server's answer has, as the system's own connection brings it.
  std::string get(const std::string& server) {
    const std::unique_ptr<SocketControl> socket = system_socket();
    HttpClient http(*socket, ui, log);
    status.clear();
    http.on_status = [this](std::string_view message) { status = message; };
    std::string url = variable(server) + "/shows/108/episodes";
    return http.GetData(url, "");
  }
};

TEST_F(Https, AnAnswerArrivesByteForByte) {
  const Trust trust(variable("AUTHORITY"));
  const std::string base = variable("GOOD"), port = base.substr(base.rfind(':') + 1);
  const std::unique_ptr<SocketControl> socket = system_socket();
  socket->set_secure(true);
  ASSERT_EQ(socket->connect("localhost", std::stoi(port)), 0) << socket->last_error_string();
  const std::string request = "GET /shows/108/episodes HTTP/1.0\r\n\r\n";
  EXPECT_EQ(socket->write(request), static_cast<std::ptrdiff_t>(request.size()));
  const std::string wanted = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\n\r\n[]";
  std::string got;
  char buffer[7];  // TLS holds the rest back
  while (got.size() < wanted.size()) {
    const std::ptrdiff_t size = socket->read(buffer, sizeof buffer);
    ASSERT_GT(size, 0) << got << socket->last_error_string();
    got.append(buffer, static_cast<std::size_t>(size));
  }
  EXPECT_EQ(got, wanted);
}

TEST_F(Https, OnlyACertificateForThisHostFromATrustedAuthorityIsAccepted) {
  const auto refused = [&](const std::string& server) {
    EXPECT_EQ(get(server), "") << server;
    EXPECT_TRUE(status.starts_with("HTTP: Unable to connect to localhost (error ")) << server << ": " << status;
  };
  refused("GOOD");  // nobody vouches for the authority yet
  {
    const Trust trust(variable("AUTHORITY"));
    EXPECT_EQ(get("GOOD"), "[]") << status;
    for (const char* const server : {"OTHER_HOST", "EXPIRED", "STRANGER"}) refused(server);
  }
  refused("GOOD");
}

TEST_F(Https, AnAnswerThatEndsWithoutItsNoticeIsNone) {
  const Trust trust(variable("AUTHORITY"));
  EXPECT_EQ(get("SILENT"), "");
  EXPECT_TRUE(status.starts_with("HTTP: Unable to receive data from server")) << status;
}

}  // namespace
}  // namespace quorvel::testing
