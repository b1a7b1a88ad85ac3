#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quorvel::testing {

/// What a request asks for, such as "/search/shows?q=x"; empty unless it is a GET.
std::string target_of(const std::string& request);

/// The whole right answer to a request: for "/search/shows?q=RAW" the file search/RAW.json below the folder, or "[]"
/// without such a file; for "/shows/ID/episodes" episodes/ID.json; 404 for everything else.
std::string listings_answer(const std::string& request, const std::filesystem::path& shows = QUORVEL_SHOWS_DIR);

/// A listings service on loopback for whole programs, one connection after another.
class ListingsService {
 public:
  /// Throws std::runtime_error when the folder is missing or there is no port.
  explicit ListingsService(const std::filesystem::path& shows = QUORVEL_SHOWS_DIR);
  ~ListingsService();
  ListingsService(const ListingsService&) = delete;
  ListingsService& operator=(const ListingsService&) = delete;

  int port() const;
  std::string base() const { return "http://127.0.0.1:" + std::to_string(port()); }
  /// Byte for byte, up to and including the blank line; each is kept before it is answered.
  std::vector<std::string> requests() const;
  /// From the next request on, each byte of an answer is sent after that wait, which is shorter than a second.
  void slow_down(std::chrono::microseconds a_byte);

 private:
  struct System;
  std::unique_ptr<System> system_;
};

}  // namespace quorvel::testing
