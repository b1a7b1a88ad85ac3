#include "platform/curl/curl_socket_control.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>
#include <vector>

#include "../support/certificates.h"
#include "../support/temporary_folder.h"

namespace quorvel::testing {
namespace {

class Listener {
 public:
  Listener() {
    auto* const name = reinterpret_cast<sockaddr*>(&address_);
    socklen_t size = sizeof address_;
    require(bind(socket_, name, size) == 0 && listen(socket_, 1) == 0 && getsockname(socket_, name, &size) == 0);
  }
  ~Listener() { close(socket_); }
  int port() const { return ntohs(address_.sin_port); }
  int accept() const { return ::accept(socket_, nullptr, nullptr); }

 private:
  int socket_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address_{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
};

TEST(CurlSocketControl, TellsClosingWaitingAndFailingApart) {
  setenv("all_proxy", "http://127.0.0.1:9", 1);  // nobody there, so asking it would fail
  auto listener = std::make_unique<Listener>();
  const int port = listener->port();
  CurlSocketControl socket;
  socket.set_timeout(1);
  char buffer[8];
  EXPECT_EQ(socket.read(buffer, 8) + socket.write("x"), -1);
  ASSERT_EQ(socket.connect("127.0.0.1", port), 0) << socket.last_error_string();
  unsetenv("all_proxy");
  const int peer = listener->accept();
  listener.reset();
  EXPECT_EQ(socket.write("hello"), 5);
  EXPECT_EQ(read(peer, buffer, 8), 5);
  EXPECT_EQ(socket.read(buffer, 8), -1);
  EXPECT_EQ(socket.last_error(), CURLE_OPERATION_TIMEDOUT);
  EXPECT_EQ(write(peer, "bytes", 5), 5);
  shutdown(peer, SHUT_WR);
  EXPECT_EQ(socket.read(buffer, 3), 3);
  EXPECT_EQ(socket.read(buffer + 3, 5), 2);
  EXPECT_EQ(std::string(buffer, 5), "bytes");
  EXPECT_EQ(socket.read(buffer, 8), 0);
  const std::vector<char> more_than_fits(50'000'000);
  EXPECT_LT(socket.write({more_than_fits.data(), more_than_fits.size()}), 50'000'000);
  EXPECT_EQ(socket.last_error(), CURLE_OPERATION_TIMEDOUT);
  close(peer);
  const auto old = std::signal(SIGPIPE, SIG_DFL);
  EXPECT_EQ(socket.write("x") + socket.write("x"), 0);
  (void)std::signal(SIGPIPE, old);
  EXPECT_EQ(socket.connect("127.0.0.1", port), CURLE_COULDNT_CONNECT);
  EXPECT_EQ(socket.connect("127.0.0.1/@x", port), CURLE_URL_MALFORMAT);
  EXPECT_NE(socket.last_error_string(), "");
}

/// What the last read answers when a TLS server sends five bytes and then closes, with or without saying so.
std::ptrdiff_t last_read(bool closing_notice) {
  const TestAuthority authority;
  const TlsIdentity identity = authority.issue("127.0.0.1");
  const TemporaryFolder folder;
  std::ofstream(folder / "authority") << authority.pem();
  std::ofstream(folder / "identity") << identity.key_pem << identity.certificate_pem;
  const auto context = owned(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  require(SSL_CTX_use_certificate_file(context.get(), (folder / "identity").c_str(), SSL_FILETYPE_PEM) == 1);
  require(SSL_CTX_use_PrivateKey_file(context.get(), (folder / "identity").c_str(), SSL_FILETYPE_PEM) == 1);
  const Listener listener;
  std::thread server([&] {
    const auto tls = owned(SSL_new(context.get()), SSL_free);
    const int peer = listener.accept();
    if (SSL_set_fd(tls.get(), peer) == 1 && SSL_accept(tls.get()) == 1) SSL_write(tls.get(), "bytes", 5);
    if (closing_notice) SSL_shutdown(tls.get());
    close(peer);
  });
  CurlSocketControl socket(folder / "authority");
  socket.set_secure(true);
  EXPECT_EQ(socket.connect("127.0.0.1", listener.port()), 0) << socket.last_error_string();
  server.join();
  char buffer[3];
  EXPECT_EQ(socket.read(buffer, 3) + socket.read(buffer, 3), 5);
  return socket.read(buffer, 3);
}

TEST(CurlSocketControl, ATlsConnectionMustEndWithItsNotice) {
  EXPECT_EQ(last_read(true), 0);
  EXPECT_EQ(last_read(false), -1);
}

}  // namespace
}  // namespace quorvel::testing
