#include "listings_service.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <fstream>
#include <system_error>
#include <utility>

namespace quorvel::testing {
namespace {

const std::string kBlankLine = "\r\n\r\n";

std::string answer_of(const std::string& status, const std::string& body) {
  return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
         kBlankLine + body;
}

/// The file's bytes; nothing when there is none or the name would lead out of the folder.
std::optional<std::string> recorded(const std::filesystem::path& folder, const std::string& name) {
  std::ifstream file(folder / (name + ".json"), std::ios::binary);
  if (name.find('/') != std::string::npos || name.find("..") != std::string::npos || !file) return {};
  return std::string(std::istreambuf_iterator<char>(file), {});
}

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

/// A script that sends what `change` makes of the good answer, in one piece.
template <class Change>
Script whole(Change change) {
  return [change](const std::string&, const std::string& good) { return std::vector<Piece>{{change(good)}}; };
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

std::string ListingsService::base() const {
  return (tls_ ? "https://localhost:" : "http://127.0.0.1:") + std::to_string(port_);
}

std::vector<std::string> ListingsService::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void ListingsService::misbehave(Script script) {
  const std::lock_guard lock(mutex_);
  script_ = std::move(script);
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

std::string ListingsService::good_answer(const std::string& target) const {
  const std::string search = "/search/shows?q=", shows = "/shows/", episodes = "/episodes";
  std::optional<std::string> body;
  if (target.starts_with(search)) {
    body = recorded(shows_ / "search", target.substr(search.size())).value_or("[]");
  } else if (target.starts_with(shows) && target.ends_with(episodes)) {
    const std::string rest = target.substr(shows.size());
    body = recorded(shows_ / "episodes", rest.substr(0, rest.rfind(episodes)));
  }
  return body ? answer_of("200 OK", *body) : answer_of("404 Not Found", R"({"name":"Not Found","status":404})");
}

Script scripts::redirect_to(const std::string& location, int status) {
  const std::string answer = "HTTP/1.1 " + std::to_string(status) + " Moved\r\nLocation: " + location + kBlankLine;
  const auto first = std::make_shared<std::atomic<bool>>(true);
  return whole([=](const std::string& good) { return first->exchange(false) ? answer : good; });
}

Script scripts::status(int code) {
  const std::string line = "HTTP/1.1 " + std::to_string(code) + " As Told";
  return whole([line](const std::string& good) { return line + good.substr(good.find("\r\n")); });
}

Script scripts::truncated(std::size_t bytes_of_body) {
  return whole([=](const std::string& good) { return good.substr(0, good.find(kBlankLine) + 4 + bytes_of_body); });
}

Script scripts::split_at(std::size_t position) {
  return [=](const std::string&, const std::string& good) {
    const std::size_t cut = std::min(position, good.size());
    return std::vector<Piece>{{good.substr(0, cut)}, {good.substr(cut), std::chrono::milliseconds(20)}};
  };
}

Script scripts::no_blank_line() {
  return whole([](const std::string& good) { return good.substr(0, good.find(kBlankLine) + 2); });
}

Script scripts::slow(std::chrono::milliseconds a_byte) {
  return [=](const std::string&, const std::string& good) {
    std::vector<Piece> pieces;
    for (const char byte : good) pieces.push_back({std::string(1, byte), a_byte});
    return pieces;
  };
}

Script scripts::body(const std::string& bytes) {
  return whole([=](const std::string&) { return answer_of("200 OK", bytes); });
}

}  // namespace quorvel::testing
