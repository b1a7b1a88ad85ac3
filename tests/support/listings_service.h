#pragma once

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "listings_answer.h"

namespace quorvel::testing {

// What differs between systems. No program that a test starts may inherit a socket: it would keep the connection open
// after the service has closed it. A client that hangs up early must not end the test by a signal.
#ifdef _WIN32
using Socket = SOCKET;
inline constexpr int no_signal = 0;
inline Socket not_inherited(Socket socket) {
  return SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0) ? socket : INVALID_SOCKET;
}
inline Socket new_socket() {
  static WSADATA data;
  static const int started = WSAStartup(MAKEWORD(2, 2), &data);
  return started == 0 ? not_inherited(socket(AF_INET, SOCK_STREAM, 0)) : INVALID_SOCKET;
}
inline Socket next_client(Socket listener) {
  return not_inherited(accept(listener, nullptr, nullptr));
}
#else
using Socket = int;
inline constexpr int no_signal = MSG_NOSIGNAL;
inline Socket new_socket() {
  return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}
inline Socket next_client(Socket listener) {
  return accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
}
inline void closesocket(Socket socket) {
  close(socket);
}
#endif

/// A listings service on loopback for whole programs, one connection after another. They are to end before it does.
class ListingsService {
 public:
  /// Throws when the folder is missing.
  explicit ListingsService(const std::filesystem::path& shows = QUORVEL_SHOWS_DIR) : shows_(canonical(shows)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    if (bind(listener_, generic_, size) != 0 || listen(listener_, SOMAXCONN) != 0 ||
        getsockname(listener_, generic_, &size) != 0) {
      throw std::runtime_error("The listings service cannot listen");
    }
    thread_ = std::thread(&ListingsService::serve, this);
  }
  ~ListingsService() {
    stopping_ = true;
    const Socket last = new_socket();  // ends the wait for a client
    if (connect(last, generic_, sizeof address_) != 0) std::abort();
    thread_.join();
    closesocket(last);
    closesocket(listener_);
  }

  int port() const { return ntohs(address_.sin_port); }
  std::string base() const { return "http://127.0.0.1:" + std::to_string(port()); }
  /// Byte for byte, up to and including the blank line; each is kept before it is answered.
  std::vector<std::string> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }
  /// From the next answer on, each byte is sent after that wait.
  void slow_down(std::chrono::milliseconds a_byte) { wait_ = a_byte; }

 private:
  void serve() {
    while (!stopping_) {
      const Socket client = next_client(listener_);
      if (!stopping_) converse(client);
      closesocket(client);
    }
  }
  void converse(Socket client) {
    std::string request;
    for (char bytes[4096]; !request.ends_with("\r\n\r\n");) {
      const auto size = recv(client, bytes, sizeof bytes, 0);
      if (size <= 0) return;
      request.append(bytes, static_cast<std::size_t>(size));
    }
    std::unique_lock lock(mutex_);
    requests_.push_back(request);
    lock.unlock();
    const std::string answer = listings_answer(request, shows_);
    const std::chrono::milliseconds wait = wait_;
    const std::size_t step = wait.count() > 0 ? 1 : answer.size();
    for (std::size_t at = 0; at < answer.size(); at += step) {
      std::this_thread::sleep_for(wait);
      if (send(client, answer.data() + at, static_cast<int>(step), no_signal) != static_cast<int>(step)) return;
    }
  }

  const std::filesystem::path shows_;
  const Socket listener_ = new_socket();
  sockaddr_in address_{};
  sockaddr* const generic_ = reinterpret_cast<sockaddr*>(&address_);
  std::atomic<std::chrono::milliseconds> wait_{};
  std::atomic<bool> stopping_ = false;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace quorvel::testing
