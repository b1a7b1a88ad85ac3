#pragma once

#include <functional>
#include <optional>
#include <regex>
#include <utility>
#include <vector>

#include "file_tools.h"
#include "platform/socket_control.h"
#include "text/failure.h"

namespace quorvel::testing {

/// What a request asks for, such as "/search/shows?q=x"; empty unless it is a GET.
inline std::string target_of(const std::string& request) {
  return request.substr(4, request.find(' ', 4) - 4);
}

/// The show as one of the recorded searches has it; empty when none does.
inline std::string show_answer(const std::string& id, const std::filesystem::path& shows) {
  const std::string begin = "{\"id\":" + id + ",";
  for (const auto& file : std::filesystem::directory_iterator(shows / "search")) {
    const std::string text = contents(text_of(file.path()));
    const std::size_t at = text.find("\"show\":" + begin);
    if (at == std::string::npos) continue;
    const std::size_t start = text.find('{', at);
    int depth = 0;
    for (std::size_t end = start; end < text.size(); ++end) {
      depth += text[end] == '{' ? 1 : text[end] == '}' ? -1 : 0;
      if (depth == 0) return text.substr(start, end + 1 - start);
    }
  }
  return {};
}

/// The whole right answer to a request: for "/search/shows?q=RAW" the file search/RAW.json below the folder, or "[]"
/// without such a file; for "/shows/ID/episodes" episodes/ID.json; for "/shows/ID" the show as a search has it; 404 for
/// everything else.
inline std::string listings_answer(const std::string& request, const std::filesystem::path& shows = QUORVEL_SHOWS_DIR) {
  const std::string episodes =
      std::regex_replace(target_of(request), std::regex("/shows/(.*)/episodes"), "episodes/$1");
  const std::string name = std::regex_replace(episodes, std::regex("/search/shows.q="), "search/");
  const bool is_show = std::regex_match(name, std::regex("/shows/\\d+"));
  const std::string found = is_show ? show_answer(name.substr(7), shows) : contents(text_of(shows / (name + ".json")));
  const std::string body = found.empty() ? "[]" : found;
  const char* const status = found.empty() && !name.starts_with("search/") ? "404 Not Found" : "200 OK";
  return std::string("HTTP/1.1 ") + status +
         "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

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
    sent_ += bytes;
    return static_cast<std::ptrdiff_t>(bytes.size()) - (works("write") ? 0 : 1);
  }
  std::ptrdiff_t read(char* buffer, std::size_t size) override {
    if (!works("read " + std::to_string(size))) return -1;
    if (!sent_.empty()) {
      const std::string request = requests_.emplace_back(std::exchange(sent_, {})), right = listings_answer(request);
      reads_ = script_ ? script_(target_of(request), right) : Reads{right};
      at_ = 0;
    }
    if (reads_.empty()) return 0;
    if (!reads_.front()) return -1;
    const std::size_t count = reads_.front()->copy(buffer, size, at_);
    at_ += count;
    if (at_ == reads_.front()->size()) reads_.erase(reads_.begin()), at_ = 0;
    return static_cast<std::ptrdiff_t>(count);
  }
  void disconnect() override { works("close"); }
  int last_error() const override { return 28; }
  std::string last_error_string() const override { return "late"; }

 private:
  std::string sent_;  // on this connection, and not yet answered
  std::vector<std::string> requests_;
  Script script_;
  Reads reads_;         // that are to come
  std::size_t at_ = 0;  // how much of the first of them is gone
};

}  // namespace quorvel::testing
