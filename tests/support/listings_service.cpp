#include "listings_service.h"

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#endif

#include <fstream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace quorvel::testing {
namespace {

const std::string blank_line = "\r\n\r\n";

// No program that a test starts may inherit a socket: it would keep the connection open after the service has closed
// it.
#ifdef _WIN32

using Socket = SOCKET;

Socket not_inherited(Socket socket) {
  SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
  return socket;
}

Socket new_socket() {
  static WSADATA data;
  static const int started = WSAStartup(MAKEWORD(2, 2), &data);
  return started == 0 ? not_inherited(socket(AF_INET, SOCK_STREAM, 0)) : INVALID_SOCKET;
}

Socket next_client(Socket listener) {
  return not_inherited(accept(listener, nullptr, nullptr));
}

void block_signals() {}  // there are none

#else

using Socket = int;

Socket new_socket() {
  return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

Socket next_client(Socket listener) {
  return accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
}

void closesocket(Socket socket) {
  close(socket);
}

/// In this thread: they are for others, and a client that hangs up early must not end the test by one.
void block_signals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

#endif

constexpr auto no_socket = static_cast<Socket>(-1);

/// The file's bytes; empty when there is none or the name would lead out of the folder.
std::optional<std::string> recorded(const std::filesystem::path& folder, const std::string& name) {
  std::ifstream file(folder / (name + ".json"), std::ios::binary);
  if (name.find('/') != std::string::npos || name.find("..") != std::string::npos || !file) return {};
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Whether the client, which has nothing more to say, hangs up within that time.
bool hangs_up_within(std::chrono::microseconds time, Socket client) {
  fd_set clients;
  FD_ZERO(&clients);
  FD_SET(client, &clients);
  timeval left{0, static_cast<decltype(timeval::tv_usec)>(time.count())};
  return select(static_cast<int>(client) + 1, &clients, nullptr, nullptr, &left) != 0;
}

}  // namespace

std::string target_of(const std::string& request) {
  return request.starts_with("GET ") ? request.substr(4, request.find_first_of(" \r", 4) - 4) : "";
}

std::string listings_answer(const std::string& request, const std::filesystem::path& shows) {
  const std::string search = "/search/shows?q=", show = "/shows/", episodes = "/episodes", target = target_of(request);
  std::optional<std::string> body;
  if (target.starts_with(search)) {
    body = recorded(shows / "search", target.substr(search.size())).value_or("[]");
  } else if (target.starts_with(show) && target.ends_with(episodes)) {
    const std::string rest = target.substr(show.size());
    body = recorded(shows / "episodes", rest.substr(0, rest.rfind(episodes)));
  }
  const std::string status = body ? "200 OK" : "404 Not Found";
  if (!body) body = R"({"name":"Not Found","status":404})";
  return "HTTP/1.1 " + status +
         "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body->size()) + blank_line + *body;
}

struct ListingsService::System {
  explicit System(const std::filesystem::path& folder) : shows(std::filesystem::canonical(folder)) {
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener, generic(), size) != 0 || listen(listener, SOMAXCONN) != 0 ||
        getsockname(listener, generic(), &size) != 0) {
      throw std::runtime_error("The listings service cannot listen");
    }
    thread = std::thread(&System::serve, this);
  }

  ~System() {
    std::unique_lock lock(mutex);
    stopping = true;
    if (client != no_socket) shutdown(client, 2);  // in both directions, which ends whatever is waited for there
    lock.unlock();
    const Socket last = new_socket();  // ends the wait for the next client
    connect(last, generic(), sizeof address);
    thread.join();
    closesocket(last);
    closesocket(listener);
  }

  void serve() {
    block_signals();
    for (std::unique_lock lock(mutex, std::defer_lock);; lock.unlock()) {
      const Socket next = next_client(listener);
      lock.lock();
      client = next;
      if (!stopping) {
        lock.unlock();
        converse();
        lock.lock();
      }
      closesocket(std::exchange(client, no_socket));
      if (stopping) return;
    }
  }

  void converse() {
    std::string request;
    for (char byte = 0; !request.ends_with(blank_line); request += byte) {
      if (recv(client, &byte, 1, 0) != 1) return;
    }
    const std::string answer = listings_answer(request, shows);
    std::unique_lock lock(mutex);
    requests.push_back(request);
    const std::chrono::microseconds wait = a_byte;
    lock.unlock();
    const std::size_t step = wait.count() > 0 ? 1 : answer.size();
    for (std::size_t at = 0; at < answer.size(); at += step) {
      if (wait.count() > 0 && hangs_up_within(wait, client)) return;
      if (send(client, answer.data() + at, static_cast<int>(step), 0) != static_cast<int>(step)) return;
    }
  }

  sockaddr* generic() { return reinterpret_cast<sockaddr*>(&address); }

  const std::filesystem::path shows;
  const Socket listener = new_socket();
  sockaddr_in address{};
  std::mutex mutex;  // guards all below
  std::vector<std::string> requests;
  std::chrono::microseconds a_byte{0};
  Socket client = no_socket;  // being served; set by the service's own thread
  bool stopping = false;
  std::thread thread;
};

ListingsService::ListingsService(const std::filesystem::path& shows) : system_(new System(shows)) {}

ListingsService::~ListingsService() = default;

int ListingsService::port() const {
  return ntohs(system_->address.sin_port);
}

std::vector<std::string> ListingsService::requests() const {
  const std::lock_guard lock(system_->mutex);
  return system_->requests;
}

void ListingsService::slow_down(std::chrono::microseconds a_byte) {
  const std::lock_guard lock(system_->mutex);
  system_->a_byte = a_byte;
}

}  // namespace quorvel::testing
