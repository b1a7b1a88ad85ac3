#include <winsock2.h>

#include <stdexcept>
#include <utility>

#include "listings_service.h"

namespace quorvel::testing {
namespace {

void start_sockets() {
  static WSADATA data;
  static const int result = WSAStartup(MAKEWORD(2, 2), &data);
  if (result != 0) throw std::runtime_error("no sockets");
}

SOCKET new_listener() {
  start_sockets();
  return socket(AF_INET, SOCK_STREAM, 0);
}

}  // namespace

// Without TLS: the system's own library would have to be given the certificate by its store.
ListingsService::ListingsService(const std::optional<TlsIdentity>& tls, std::uint16_t port,
                                 const std::filesystem::path& shows)
    : shows_(std::filesystem::canonical(shows.empty() ? QUORVEL_SHOWS_DIR : shows)),
      tls_(nullptr),
      listener_(static_cast<int>(new_listener())) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  int size = sizeof address;
  const auto listener = static_cast<SOCKET>(listener_);
  if (tls || bind(listener, generic, size) || listen(listener, SOMAXCONN) || getsockname(listener, generic, &size)) {
    closesocket(listener);
    throw std::runtime_error("cannot serve on port " + std::to_string(port));
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread(&ListingsService::serve, this);
}

ListingsService::~ListingsService() {
  std::unique_lock lock(mutex_);
  stopping_ = true;
  closesocket(static_cast<SOCKET>(listener_));  // whatever the thread waits for on either socket ends by this
  if (client_ >= 0) shutdown(static_cast<SOCKET>(client_), SD_BOTH);
  lock.unlock();
  thread_.join();
}

void ListingsService::serve() {
  for (std::unique_lock lock(mutex_); !stopping_;) {
    lock.unlock();
    const SOCKET client = accept(static_cast<SOCKET>(listener_), nullptr, nullptr);
    lock.lock();
    if (client == INVALID_SOCKET) continue;
    client_ = static_cast<int>(client);
    lock.unlock();
    converse(client_);
    lock.lock();
    closesocket(static_cast<SOCKET>(std::exchange(client_, -1)));
  }
}

void ListingsService::converse(int client) {
  const auto stream = static_cast<SOCKET>(client);
  const BOOL on = TRUE;
  setsockopt(stream, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  std::string request;
  for (char byte = 0; !request.ends_with("\r\n\r\n"); request += byte) {
    if (recv(stream, &byte, 1, 0) != 1) return;
  }
  const std::string target = request.starts_with("GET ") ? request.substr(4, request.find_first_of(" \r", 4) - 4) : "";
  const std::string good = good_answer(target);
  std::unique_lock lock(mutex_);
  requests_.push_back(request);
  const Script script = script_;
  lock.unlock();
  for (const Piece& piece : script ? script(target, good) : std::vector<Piece>{{good}}) {
    // A client that hung up ends the pause too, so that the next one is not kept waiting.
    WSAPOLLFD hangup{stream, POLLRDNORM, 0};
    if (piece.pause.count() > 0 && WSAPoll(&hangup, 1, static_cast<int>(piece.pause.count())) != 0) return;
    const int size = static_cast<int>(piece.bytes.size());
    if (size > 0 && send(stream, piece.bytes.data(), size, 0) != size) return;
  }
}

}  // namespace quorvel::testing
