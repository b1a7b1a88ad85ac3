#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <system_error>

#include "loopback.h"

namespace quorvel::testing {
namespace {

std::shared_ptr<SSL_CTX> tls_context(const TlsIdentity& identity) {
  auto context = owned(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  const auto text = owned(BIO_new_mem_buf(identity.certificate_pem.c_str(), -1), BIO_free_all);
  const auto key_text = owned(BIO_new_mem_buf(identity.key_pem.c_str(), -1), BIO_free_all);
  const auto certificate = owned(PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), X509_free);
  const auto key = owned(PEM_read_bio_PrivateKey(key_text.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
  require(SSL_CTX_use_certificate(context.get(), certificate.get()));
  require(SSL_CTX_use_PrivateKey(context.get(), key.get()));
  SSL_CTX_set_quiet_shutdown(context.get(), identity.gives_notice ? 0 : 1);
  return context;
}

class SocketPeer : public Peer {
 public:
  SocketPeer(int socket, SSL_CTX* tls) : socket_(socket) {
    const int on = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);  // each piece leaves by itself
    BIO* const plain = BIO_new_socket(socket_, BIO_NOCLOSE);
    stream_ = owned(tls != nullptr ? BIO_push(BIO_new_ssl(tls, 0), plain) : plain, BIO_free_all);
  }
  ~SocketPeer() override {
    stream_.reset();
    close(socket_);
  }
  bool read(char& byte) override { return BIO_read(stream_.get(), &byte, 1) == 1; }
  bool write(const std::string& bytes) override {
    const int size = static_cast<int>(bytes.size());
    return size == 0 || BIO_write(stream_.get(), bytes.data(), size) == size;
  }
  bool hangs_up_within(std::chrono::milliseconds time) override {
    pollfd hangup{socket_, POLLRDHUP, 0};
    return poll(&hangup, 1, static_cast<int>(time.count())) != 0;
  }
  void end() override { shutdown(socket_, SHUT_WR); }
  void cut() override { shutdown(socket_, SHUT_RDWR); }

 private:
  const int socket_;
  std::shared_ptr<BIO> stream_;
};

}  // namespace

// The sockets close on exec: a child of the test that held a connection would keep its end from the client.
struct Listener::System {
  std::shared_ptr<SSL_CTX> tls;
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ~System() { close(socket); }
};

Listener::Listener(std::uint16_t port, const std::optional<TlsIdentity>& tls) : system_(std::make_unique<System>()) {
  if (tls) system_->tls = tls_context(*tls);
  const int on = 1;
  setsockopt(system_->socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  if (bind(system_->socket, generic, size) != 0 || listen(system_->socket, SOMAXCONN) != 0 ||
      getsockname(system_->socket, generic, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "port " + std::to_string(port));
  }
  port_ = ntohs(address.sin_port);
}

Listener::~Listener() = default;

std::shared_ptr<Peer> Listener::accept() {
  const int client = accept4(system_->socket, nullptr, nullptr, SOCK_CLOEXEC);
  return client < 0 ? nullptr : std::make_shared<SocketPeer>(client, system_->tls.get());
}

void Listener::stop() {
  shutdown(system_->socket, SHUT_RDWR);
}

void serve_undisturbed() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace quorvel::testing
