#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/log.h"
#include "platform/native.h"
#include "platform/web_client.h"
#include "support/fake_ports.h"
#include "transport/http_client.h"

/// What the fuzz targets share: ports without a system behind them, and a check that ends the run.
namespace quorvel::fuzz {

using testing::Events, testing::FakeClock, testing::FakeUi;

inline void check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "This does not hold: %s\n", what);
  std::abort();
}

inline std::string_view text_of(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// No character that separates paths or that no file name holds.
inline bool fits_file_name(std::string_view name) {
  return name.find_first_of("\\/*?\"><|[]:") == std::string_view::npos;
}

struct NoLog : Log {
  void debug_log(std::string_view, LogLevel) override {}
};

/// A machine without a network.
struct NoSocket : SocketControl {
  void set_timeout(int) override {}
  void set_secure(bool) override {}
  int connect(const std::string&, int) override { return 1; }
  std::ptrdiff_t write(std::string_view) override { return -1; }
  std::ptrdiff_t read(char*, std::size_t) override { return -1; }
  void disconnect() override {}
  int last_error() const override { return 1; }
  std::string last_error_string() const override { return "no network"; }
};

struct NoWeb : WebClient {
  WebAnswer get(const std::string&) override { throw Failure("no network"); }
};

/// Files in memory; folders are always there.
struct MemoryFiles : Files {
  std::map<std::string, std::string> held;
  std::int64_t changes = 0;

  bool are_real() const override { return false; }
  Kind kind(const std::string& path) const override {
    return held.contains(path) ? Kind::File : path.ends_with("cache") ? Kind::Folder : Kind::Missing;
  }
  std::optional<FileStamp> stamp(const std::string& path) const override {
    const auto found = held.find(path);
    if (found == held.end()) return {};
    return FileStamp{.device = 1, .id = 1, .size = found->second.size(), .modified_ns = changes};
  }
  bool list(const std::string&, const std::function<void(FolderEntry)>&) const override { return false; }
  std::optional<std::string> read(const std::string& path) const override {
    const auto found = held.find(path);
    return found == held.end() ? std::nullopt : std::optional(found->second);
  }
  bool replace(const std::string& path, const std::string& bytes) override {
    ++changes;
    held[path] = bytes;
    return true;
  }
  bool is_link(const std::string&) const override { return false; }
  std::unique_ptr<HeldFile> hold(const std::string&) override { return {}; }
  bool remove(const std::string& path) override { return held.erase(path), true; }
  bool create_folder(const std::string&) override { return false; }
};

/// Brings the bytes in pieces of these sizes, the last size for all that follow; then the peer has closed.
struct FeedSocket : NoSocket {
  std::string bytes;
  std::string sizes = "\xFF";
  std::size_t at = 0, piece = 0;
  int connections = 0;

  int connect(const std::string&, int) override { return ++connections, 0; }
  std::ptrdiff_t write(std::string_view sent) override { return static_cast<std::ptrdiff_t>(sent.size()); }
  std::ptrdiff_t read(char* buffer, std::size_t size) override {
    const std::size_t wanted =
        8 * std::size_t{static_cast<unsigned char>(sizes[std::min(piece++, sizes.size() - 1)])} + 1;
    const std::size_t got = std::string_view(bytes).substr(at).copy(buffer, std::min(size, wanted));
    at += got;
    return static_cast<std::ptrdiff_t>(got);
  }
};

/// A client whose service answers with this body.
struct Service {
  explicit Service(std::string_view body) { socket.bytes = std::string("HTTP/1.1 200 OK\r\n\r\n").append(body); }
  Events events;
  FakeUi ui{events};
  FakeClock clock{events};
  NoLog log;
  FeedSocket socket;
  MemoryFiles files;
  const std::string work_dir;
  Pace pace{clock, files, work_dir};
  HttpClient http{socket, ui, clock, log, pace};
};

}  // namespace quorvel::fuzz
