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
#include <mutex>
#include <stdexcept>
#include <thread>

#include "fake_listings.h"

namespace quorvel::testing {

// What differs between systems. A client that hangs up early must not end the test by a signal.
#ifdef _WIN32
inline constexpr int SOCK_CLOEXEC = 0, MSG_NOSIGNAL = 0, SHUT_RDWR = SD_BOTH;
inline WSADATA sockets;
inline const int started_sockets = WSAStartup(MAKEWORD(2, 2), &sockets);
#else
using SOCKET = int;
inline const auto closesocket = &close;
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
    thread_ = std::jthread([this](const std::stop_token& stop) { serve(stop); });
  }
  ~ListingsService() {
    thread_.request_stop();
    const SOCKET last = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    (void)connect(last, generic_, sizeof address_);  // ends the wait for a client
    thread_.join();
    closesocket(last);
    closesocket(listener_);
  }

  int port() const { return ntohs(address_.sin_port); }
  std::string base() const { return "http://127.0.0.1:" + std::to_string(port()); }
  /// Byte for byte, up to and including the blank line; waits until an answer that has been started is sent.
  std::vector<std::string> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }
  /// From the next request on; an empty one answers right again.
  void answer_with(std::function<std::string(const std::string& request)> answer) {
    const std::lock_guard lock(mutex_);
    answer_ = std::move(answer);
  }
  /// From the next answer on, each byte is sent after that wait.
  void slow_down(std::chrono::milliseconds a_byte) { wait_ = a_byte; }

 private:
  void serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const SOCKET client = accept(listener_, nullptr, nullptr);
      if (!stop.stop_requested()) converse(client);
      shutdown(client, SHUT_RDWR);  // also where a program that a test started has inherited it
      closesocket(client);
    }
  }
  void converse(SOCKET client) {
    std::string request;
    for (char bytes[4096]; !request.ends_with("\r\n\r\n");) {
      const auto size = recv(client, bytes, sizeof bytes, 0);
      if (size <= 0) return;
      request.append(bytes, static_cast<std::size_t>(size));
    }
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    const std::string answer = answer_ ? answer_(request) : listings_answer(request, shows_);
    const std::chrono::milliseconds wait = wait_;
    const std::size_t step = wait.count() > 0 ? 1 : answer.size();
    for (std::size_t at = 0; at < answer.size(); at += step) {
      std::this_thread::sleep_for(wait);
      if (send(client, answer.data() + at, static_cast<int>(step), MSG_NOSIGNAL) != static_cast<int>(step)) return;
    }
  }

  const std::filesystem::path shows_;
  const SOCKET listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address_{};
  sockaddr* const generic_ = reinterpret_cast<sockaddr*>(&address_);
  std::atomic<std::chrono::milliseconds> wait_{};
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::function<std::string(const std::string& request)> answer_;
  std::jthread thread_;
};

}  // namespace quorvel::testing
