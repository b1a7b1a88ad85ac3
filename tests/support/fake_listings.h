#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "listings_answer.h"
#include "platform/socket_control.h"
#include "text/failure.h"

namespace quorvel::testing {

/// The listings service behind a socket that no network is needed for: it answers from the recorded answers, keeps
/// every request, and fails or misbehaves on demand.
class FakeListings : public SocketControl {
 public:
  /// What the reads of one connection bring, one after another: bytes, or nothing for an error. Then the peer has
  /// closed.
  using Reads = std::vector<std::optional<std::string>>;
  /// Those reads for a target, such as "/search/shows?q=x", and the right answer to it.
  using Script = std::function<Reads(const std::string& target, const std::string& right)>;

  static Reads ok(const std::string& body) { return {"HTTP/1.1 200 OK\r\n\r\n" + body}; }

  /// Port 1, so that a real connection made by mistake fails.
  std::string base() const { return "http://127.0.0.1:1"; }
  /// Byte for byte, each kept when its answer is first read.
  const std::vector<std::string>& requests() const { return requests_; }
  /// From the next request on; an empty script behaves again.
  void misbehave(Script script) { script_ = std::move(script); }

  /// Called before everything that the socket is to do, such as "connect host:80"; where it returns false, that fails.
  std::function<bool(const std::string& call)> works = [](const std::string&) { return true; };

  void set_timeout(int seconds) override { works("timeout " + std::to_string(seconds)); }
  void set_secure(bool secure) override {
    if (!works(secure ? "tls" : "tcp")) throw Failure("no TLS");
  }
  int connect(const std::string& host, int port) override {
    sent_.clear();
    reads_.clear();
    return works("connect " + host + ":" + std::to_string(port)) ? 0 : 7;
  }
  std::ptrdiff_t write(std::string_view bytes) override {
    const std::size_t count = works("write") ? bytes.size() : bytes.size() - 1;
    sent_ += bytes.substr(0, count);
    return static_cast<std::ptrdiff_t>(count);
  }
  std::ptrdiff_t read(char* buffer, std::size_t size) override {
    if (!works("read " + std::to_string(size))) return -1;
    if (!sent_.empty()) answer();
    if (next_ == reads_.size()) return 0;
    const std::optional<std::string>& bytes = reads_[next_];
    if (!bytes) return -1;
    const std::size_t count = bytes->copy(buffer, size, at_);
    at_ += count;
    if (at_ == bytes->size()) ++next_, at_ = 0;
    return static_cast<std::ptrdiff_t>(count);
  }
  void disconnect() override { works("close"); }
  int last_error() const override { return 28; }
  std::string last_error_string() const override { return "late"; }

 private:
  void answer() {
    requests_.push_back(std::exchange(sent_, {}));
    const std::string& request = requests_.back();
    const std::string right = listings_answer(request);
    reads_ = script_ ? script_(target_of(request), right) : Reads{right};
    next_ = at_ = 0;
  }

  std::string sent_;  // on this connection, and not yet answered
  std::vector<std::string> requests_;
  Script script_;
  Reads reads_;
  std::size_t next_ = 0, at_ = 0;  // the read that comes next, and how much of it is gone
};

}  // namespace quorvel::testing
