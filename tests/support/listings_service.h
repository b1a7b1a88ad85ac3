#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "loopback.h"

namespace quorvel::testing {

/// One thing the service sends: `bytes`, after waiting `pause`, and that as often as told.
struct Piece {
  std::string bytes;
  std::chrono::milliseconds pause{0};
  std::size_t times = 1;
};

/// Turns a request target ("/search/shows?q=x") and the complete good answer into the pieces really sent.
/// Runs on the service's thread; the connection closes after the last piece.
using Script = std::function<std::vector<Piece>(const std::string& target, const std::string& good_answer)>;

/// A listings service on loopback that answers from files, one connection after another, and misbehaves on demand.
/// "/search/shows?q=RAW" answers search/RAW.json, or "[]" without such a file; "/shows/ID/episodes" answers
/// episodes/ID.json; everything else is 404.
class ListingsService {
 public:
  /// Port 0 takes a free one, an empty folder name is the tests' own shows.
  /// Throws when the port is taken, the folder is missing or the identity is unusable.
  explicit ListingsService(const std::optional<TlsIdentity>& tls = {}, std::uint16_t port = 0,
                           const std::filesystem::path& shows = {});
  /// Returns at once, whatever a client or a pausing piece is doing.
  ~ListingsService();

  /// "http://127.0.0.1:PORT", with TLS "https://localhost:PORT".
  std::string base() const;
  std::uint16_t port() const { return listener_.port(); }
  /// Every complete request so far, byte for byte up to and including the blank line; recorded before it is answered.
  std::vector<std::string> requests() const;
  /// From the next request on; an empty script behaves again.
  void misbehave(Script script);

 private:
  void serve();
  void converse(Peer& client);
  std::string good_answer(const std::string& target) const;

  const std::filesystem::path shows_;
  const bool secure_;
  Listener listener_;
  mutable std::mutex mutex_;  // guards all below
  std::vector<std::string> requests_;
  Script script_;
  bool stopping_ = false;
  std::shared_ptr<Peer> client_;  // the one being served
  std::thread thread_;
};

namespace scripts {

Script redirect_to(const std::string& location,
                   int status = 302);           // the first request only; later ones are answered well
Script status(int code);                        // that status with the good answer's body
Script truncated(std::size_t bytes_of_body);    // Content-Length still promises the whole body
Script split_at(std::size_t position);          // in two pieces, cut at any byte, a moment apart
Script no_blank_line();                         // the header lines and nothing more
Script slow(std::chrono::milliseconds a_byte);  // byte by byte, each after that wait
Script body(const std::string& bytes);          // a good answer with exactly this body

}  // namespace scripts
}  // namespace quorvel::testing
