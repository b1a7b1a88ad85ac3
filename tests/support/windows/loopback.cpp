#include <winsock2.h>

#include <stdexcept>

#include "loopback.h"

namespace quorvel::testing {
namespace {

/// No program that a test starts may hold it open after the test has closed it.
SOCKET not_inherited(SOCKET socket) {
  SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
  return socket;
}

SOCKET new_socket() {
  static WSADATA data;
  static const int started = WSAStartup(MAKEWORD(2, 2), &data);
  if (started != 0) throw std::runtime_error("no sockets");
  return not_inherited(socket(AF_INET, SOCK_STREAM, 0));
}

class SocketPeer : public Peer {
 public:
  explicit SocketPeer(SOCKET socket) : socket_(socket) {
    const BOOL on = TRUE;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  }
  ~SocketPeer() override { closesocket(socket_); }
  bool read(char& byte) override { return recv(socket_, &byte, 1, 0) == 1; }
  bool write(const std::string& bytes) override {
    const int size = static_cast<int>(bytes.size());
    return size == 0 || send(socket_, bytes.data(), size, 0) == size;
  }
  bool hangs_up_within(std::chrono::milliseconds time) override {
    WSAPOLLFD hangup{socket_, POLLRDNORM, 0};
    return WSAPoll(&hangup, 1, static_cast<int>(time.count())) != 0;
  }
  void end() override { shutdown(socket_, SD_SEND); }
  void cut() override { shutdown(socket_, SD_BOTH); }

 private:
  const SOCKET socket_;
};

}  // namespace

struct Listener::System {
  const SOCKET socket = new_socket();
  bool closed = false;
  void close() {
    if (!closed) closesocket(socket);
    closed = true;
  }
  ~System() { close(); }
};

// Without TLS: the system's own library would have to be given the certificate by its store.
Listener::Listener(std::uint16_t port, const std::optional<TlsIdentity>& tls) : system_(std::make_unique<System>()) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  int size = sizeof address;
  if (tls || bind(system_->socket, generic, size) != 0 || listen(system_->socket, SOMAXCONN) != 0 ||
      getsockname(system_->socket, generic, &size) != 0) {
    throw std::runtime_error("cannot serve on port " + std::to_string(port));
  }
  port_ = ntohs(address.sin_port);
}

Listener::~Listener() = default;

std::shared_ptr<Peer> Listener::accept() {
  const SOCKET client = not_inherited(::accept(system_->socket, nullptr, nullptr));
  return client == INVALID_SOCKET ? nullptr : std::make_shared<SocketPeer>(client);
}

void Listener::stop() {
  system_->close();  // a shutdown does not wake who waits for clients
}

void serve_undisturbed() {}  // there are no signals here

}  // namespace quorvel::testing
