#include "platform/linux/socket_channel.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <list>
#include <optional>
#include <utility>

#include "platform/linux/descriptor.h"
#include "platform/linux/folders.h"
#include "platform/system.h"
#include "text/failure.h"

namespace quorvel {
namespace {

using Time = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds retry_interval(20);
constexpr guint receiver_patience = 3000, accept_again = 50;  // milliseconds
constexpr std::size_t max_clients = 64, header_size = 4, chunk_size = 1U << 16;
constexpr char taken = 'y', not_taken = 'n';

std::string reason() {
  return std::strerror(errno);
}

std::string header(std::size_t size) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(size >> shift & 0xFF);
  return bytes;
}

std::size_t size_in(const std::string& header) {
  std::size_t size = 0;
  for (std::size_t i = 0; i < header_size; ++i) size = size << 8 | static_cast<unsigned char>(header[i]);
  return size;
}

bool is_own_user(int socket) {
  ucred peer{};
  socklen_t size = sizeof(peer);
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

int new_socket() {
  return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

const sockaddr* plain(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

int milliseconds_to(Time::time_point end) {
  return std::max(0, static_cast<int>(std::chrono::ceil<milliseconds>(end - Time::now()).count()));
}

/// False when `until` comes first.
bool wait_for(int socket, short events, Time::time_point until) {
  pollfd waiting{socket, events, 0};
  return TEMP_FAILURE_RETRY(poll(&waiting, 1, milliseconds_to(until))) > 0;
}

bool send_all(int socket, std::string_view bytes, Time::time_point until) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno != EAGAIN || !wait_for(socket, POLLOUT, until)) {
      return false;
    }
  }
  return true;
}

/// The one byte; empty when the peer has closed or `until` comes first.
std::optional<char> receive_answer(int socket, Time::time_point until) {
  char answer = 0;
  return wait_for(socket, POLLIN, until) && recv(socket, &answer, 1, 0) == 1 ? std::optional(answer) : std::nullopt;
}

/// Whether `path` is a folder of this user's in which others, by `forbidden` permissions, can do nothing.
bool is_own_folder(const std::string& path, mode_t forbidden) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid() &&
         (found.st_mode & forbidden) == 0;
}

/// `given`, or where that is of no use the first of some folders in `shared` that is the user's own, or the first that
/// can be made. Others may have taken names there, so those that are not the user's are passed over by every copy.
std::string usable_folder(const std::string& given, const std::string& shared) {
  if (given.starts_with('/') && is_own_folder(given, 022)) return given;
  constexpr int names = 100;
  const std::string first = shared + "/quorvel-" + std::to_string(geteuid());
  for (const bool make : {false, true}) {
    for (int number = 1; number <= names; ++number) {
      std::string path = number == 1 ? first : first + "-" + std::to_string(number);
      if (make) mkdir(path.c_str(), 0700);
      if (is_own_folder(path, 077)) return path;
    }
  }
  throw Failure("There is no folder for the window's socket: neither " + first + " nor one with a number from 2 to " +
                std::to_string(names) + " behind that belongs to you and lets nobody else in");
}

}  // namespace

/// The folder with the socket and the lock, and the lock once it is this copy's.
class SocketChannel::Place {
 public:
  Place(const std::string& given, const std::string& shared)
      : path_(usable_folder(given, shared)), folder_(open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (!folder_) throw Failure("The folder " + path_ + " cannot be opened: " + reason());
    address_.sun_family = AF_UNIX;
    // By the descriptor, because the address has no room for long paths.
    const std::string path = "/proc/self/fd/" + std::to_string(folder_.get()) + "/" + socket_name_;
    std::copy(path.begin(), path.end(), address_.sun_path);
  }
  ~Place() {
    if (lock_) unlinkat(folder_.get(), lock_name_.c_str(), 0);
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  const sockaddr_un& address() const { return address_; }

  /// Whether this copy is the running one, which it becomes when no other is.
  bool claim() {
    while (!lock_) {
      auto lock = std::make_unique<Descriptor>(
          openat(folder_.get(), lock_name_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
      if (!*lock) fail("opened");
      if (flock(lock->get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) return false;
        fail("used");
      }
      // A copy that was just ending may have removed the file between the two calls; then somebody else may have it.
      struct stat held {};
      struct stat named {};
      const bool is_named = fstat(lock->get(), &held) == 0 &&
                            fstatat(folder_.get(), lock_name_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
                            held.st_dev == named.st_dev && held.st_ino == named.st_ino;
      if (is_named) lock_ = std::move(lock);
    }
    return true;
  }

  void remove_socket() const { unlinkat(folder_.get(), socket_name_.c_str(), 0); }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw Failure("The lock " + path_ + "/" + lock_name_ + " cannot be " + what + ": " + reason());
  }

  const std::string name_ = "quorvel-" + std::to_string(geteuid());
  const std::string socket_name_ = name_ + ".socket", lock_name_ = name_ + ".lock";
  const std::string path_;
  const Descriptor folder_;
  std::unique_ptr<Descriptor> lock_;
  sockaddr_un address_{};
};

/// The listening socket and those who are sending. The main loop's calls hold it, so that it outlives a handler that
/// ends the channel.
class SocketChannel::Receiver : public std::enable_shared_from_this<Receiver> {
 public:
  explicit Receiver(std::function<void(const std::string&)> handle)
      : handle_(std::move(handle)), socket_(new_socket()) {}

  void listen(const sockaddr_un& address) {
    // The mode of the descriptor becomes that of the file.
    if (!socket_ || fchmod(socket_.get(), 0600) != 0 || bind(socket_.get(), plain(address), sizeof(address)) != 0 ||
        ::listen(socket_.get(), SOMAXCONN) != 0) {
      throw Failure("Cannot listen to other copies of the program: " + reason());
    }
    watch();
  }

  void close() {
    if (watch_ != 0) g_source_remove(std::exchange(watch_, 0));
    clients_.clear();
  }

 private:
  struct Client {
    explicit Client(int socket) : socket(socket) {}
    ~Client() {
      for (const guint source : {readable, timer}) {
        if (source != 0) g_source_remove(source);
      }
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    const Descriptor socket;
    std::string bytes;
    guint readable = 0, timer = 0;
  };
  using Clients = std::list<std::shared_ptr<Client>>;

  /// What a source of the main loop holds: the receiver, and the client it watches.
  struct Call {
    std::shared_ptr<Receiver> receiver;
    std::weak_ptr<Client> client;
  };
  static void end_call(gpointer call) { delete static_cast<Call*>(call); }

  void watch() {
    watch_ = g_unix_fd_add_full(
        G_PRIORITY_DEFAULT, socket_.get(), G_IO_IN,
        [](gint, GIOCondition, gpointer call) -> gboolean {
          return static_cast<Call*>(call)->receiver->accept_clients() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        new Call{shared_from_this(), {}}, end_call);
  }

  /// False when no more can be served for now; it goes on after a while.
  bool accept_clients() {
    while (clients_.size() < max_clients) {
      const int socket = accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
      if (socket < 0 && errno == EAGAIN) return true;
      if (socket < 0) break;
      add(std::make_shared<Client>(socket));
    }
    watch_ = g_timeout_add_full(
        G_PRIORITY_DEFAULT, accept_again,
        [](gpointer call) -> gboolean {
          static_cast<Call*>(call)->receiver->watch();
          return G_SOURCE_REMOVE;
        },
        new Call{shared_from_this(), {}}, end_call);
    return false;
  }

  void add(const std::shared_ptr<Client>& client) {
    if (!is_own_user(client->socket.get())) return;
    clients_.push_back(client);
    client->readable = g_unix_fd_add_full(
        G_PRIORITY_DEFAULT, client->socket.get(), G_IO_IN,
        [](gint, GIOCondition, gpointer call) -> gboolean {
          read_from(static_cast<Call*>(call));
          return G_SOURCE_CONTINUE;
        },
        new Call{shared_from_this(), client}, end_call);
    client->timer = g_timeout_add_full(
        G_PRIORITY_LOW, receiver_patience,  // what has arrived meanwhile is read first
        [](gpointer call) -> gboolean {
          Call* const held = static_cast<Call*>(call);
          if (const std::shared_ptr<Client> late = held->client.lock()) held->receiver->drop(late);
          return G_SOURCE_REMOVE;
        },
        new Call{shared_from_this(), client}, end_call);
  }

  static void read_from(const Call* call) {
    const std::shared_ptr<Receiver> receiver = call->receiver;
    const std::shared_ptr<Client> client = call->client.lock();
    if (client == nullptr) return;
    std::array<char, chunk_size> chunk{};
    const ssize_t got = recv(client->socket.get(), chunk.data(), chunk.size(), 0);
    if (got < 0 && errno == EAGAIN) return;
    if (got <= 0) return receiver->drop(client);
    client->bytes.append(chunk.data(), static_cast<std::size_t>(got));
    if (client->bytes.size() < header_size) return;
    const std::size_t size = size_in(client->bytes);
    if (size > max_text || client->bytes.size() > header_size + size) return receiver->drop(client);
    if (client->bytes.size() == header_size + size) receiver->take(client);
  }

  void take(const std::shared_ptr<Client>& client) {
    drop(client);  // the socket stays open until the answer is sent
    const std::string text = client->bytes.substr(header_size);
    char answer = taken;
    try {
      handle_(text);
    } catch (const std::exception&) {
      answer = not_taken;  // the sender reports it to its user
    }
    ::send(client->socket.get(), &answer, 1, MSG_NOSIGNAL);
  }

  void drop(const std::shared_ptr<Client>& client) {
    for (guint* const source : {&client->readable, &client->timer}) {
      if (*source != 0) g_source_remove(std::exchange(*source, 0));
    }
    clients_.remove(client);
  }

  const std::function<void(const std::string&)> handle_;
  const Descriptor socket_;
  guint watch_ = 0;
  Clients clients_;
};

SocketChannel::SocketChannel(std::string folder, std::string shared_folder, milliseconds patience)
    : folder_(std::move(folder)), shared_folder_(std::move(shared_folder)), patience_(patience) {}

SocketChannel::~SocketChannel() {
  SocketChannel::stop();
}

SocketChannel::Place& SocketChannel::place() {
  if (place_ == nullptr) place_ = std::make_unique<Place>(folder_, shared_folder_);
  return *place_;
}

bool SocketChannel::become_running_copy() {
  return place().claim();
}

void SocketChannel::send(const std::string& text) {
  if (text.size() > max_text) throw Failure("The text is too long to be handed to the running copy");
  const Time::time_point until = Time::now() + patience_;
  const std::string message = header(text.size()) + text;
  while (Time::now() < until) {
    const Descriptor socket(new_socket());
    if (!socket) throw Failure("Cannot talk to the running copy: " + reason());
    const bool connected = connect(socket.get(), plain(place().address()), sizeof(sockaddr_un)) == 0;
    if (connected && !is_own_user(socket.get())) throw Failure("Somebody else's program answers in Quorvel's place");
    const bool sent = connected && send_all(socket.get(), message, until);
    const std::optional<char> answer = sent ? receive_answer(socket.get(), until) : std::nullopt;
    if (answer == taken) return;
    if (answer) throw Failure(refused_text);
    if (place().claim()) throw Failure("The running copy of Quorvel has ended");
    // It is starting, ending, or has more senders than it can listen to.
    poll(nullptr, 0, static_cast<int>(retry_interval.count()));
  }
  throw Failure(unanswered_text);
}

void SocketChannel::receive(std::function<void(const std::string&)> handle) {
  stop();
  if (!place().claim()) throw Failure("Another copy of Quorvel is already running");
  place().remove_socket();  // a crashed copy's
  auto receiver = std::make_shared<Receiver>(std::move(handle));
  receiver->listen(place().address());
  receiver_ = std::move(receiver);
}

void SocketChannel::stop() {
  if (receiver_ == nullptr) return;
  place().remove_socket();
  std::exchange(receiver_, nullptr)->close();
}

std::unique_ptr<InstanceChannel> system_instance_channel(const std::string&, const std::string&,
                                                         milliseconds patience) {
  return std::make_unique<SocketChannel>(standard_folders::runtime().value_or(""), "/tmp", patience);
}

}  // namespace quorvel
