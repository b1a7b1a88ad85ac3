#include "listings_service.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <system_error>
#include <utility>

namespace quorvel::testing {
namespace {

const std::string kBlankLine = "\r\n\r\n";

std::shared_ptr<SSL_CTX> tls_context(const TlsIdentity& identity) {
  auto context = owned(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  const auto text = owned(BIO_new_mem_buf(identity.certificate_pem.c_str(), -1), BIO_free_all);
  const auto key_text = owned(BIO_new_mem_buf(identity.key_pem.c_str(), -1), BIO_free_all);
  const auto certificate = owned(PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), X509_free);
  const auto key = owned(PEM_read_bio_PrivateKey(key_text.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
  require(SSL_CTX_use_certificate(context.get(), certificate.get()));
  require(SSL_CTX_use_PrivateKey(context.get(), key.get()));
  return context;
}

}  // namespace

// The sockets close on exec: a child of the test that held a connection would keep its end from the client.
ListingsService::ListingsService(const std::optional<TlsIdentity>& tls, std::uint16_t port,
                                 const std::filesystem::path& shows)
    : shows_(std::filesystem::canonical(shows.empty() ? QUORVEL_SHOWS_DIR : shows)),
      tls_(tls ? tls_context(*tls) : nullptr),
      listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const int on = 1;
  setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  if (bind(listener_, generic, size) || listen(listener_, SOMAXCONN) || getsockname(listener_, generic, &size)) {
    const int error = errno;
    close(listener_);
    throw std::system_error(error, std::generic_category(), "port " + std::to_string(port));
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread(&ListingsService::serve, this);
}

ListingsService::~ListingsService() {
  std::unique_lock lock(mutex_);
  stopping_ = true;
  shutdown(listener_, SHUT_RDWR);  // whatever the thread waits for on either socket ends by this
  shutdown(client_, SHUT_RDWR);
  lock.unlock();
  thread_.join();
  close(listener_);
}

void ListingsService::serve() {
  // A client that hangs up early must not end the test by SIGPIPE, and other signals are for the main thread.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
  for (std::unique_lock lock(mutex_); !stopping_; close(std::exchange(client_, -1))) {
    lock.unlock();
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    lock.lock();
    client_ = client;
    if (stopping_) continue;
    lock.unlock();
    converse(client);
    lock.lock();
  }
}

void ListingsService::converse(int client) {
  const int on = 1;
  setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);  // each piece leaves by itself
  BIO* const plain = BIO_new_socket(client, BIO_NOCLOSE);
  const auto stream = owned(tls_ ? BIO_push(BIO_new_ssl(tls_.get(), 0), plain) : plain, BIO_free_all);
  std::string request;
  for (char byte = 0; !request.ends_with(kBlankLine); request += byte) {
    if (BIO_read(stream.get(), &byte, 1) != 1) return;
  }
  const std::string target = request.starts_with("GET ") ? request.substr(4, request.find_first_of(" \r", 4) - 4) : "";
  const std::string good = good_answer(target);
  std::unique_lock lock(mutex_);
  requests_.push_back(request);
  const Script script = script_;
  lock.unlock();
  for (const auto& [bytes, pause, times] : script ? script(target, good) : std::vector<Piece>{{good}}) {
    const int size = static_cast<int>(bytes.size());
    for (std::size_t i = 0; i < times; ++i) {
      // A client that hung up ends the pause too, so that the next one is not kept waiting.
      pollfd hangup{client, POLLRDHUP, 0};
      if (pause.count() > 0 && poll(&hangup, 1, static_cast<int>(pause.count())) != 0) return;
      if (size > 0 && BIO_write(stream.get(), bytes.data(), size) != size) return;
    }
  }
}

}  // namespace quorvel::testing
