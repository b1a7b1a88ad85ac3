#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace quorvel {

/// One TCP connection, with TLS when asked; every call blocks, but never longer than the time-out.
class SocketControl {
 public:
  virtual ~SocketControl() = default;

  /// Called many times a second while a call waits; where it returns false, that call fails at once.
  std::function<bool()> on_wait = [] { return true; };

  virtual void set_timeout(int seconds) = 0;

  /// TLS for the next connection; the server's certificate and host name are verified.
  /// Throws Failure when asked for TLS where there is none.
  virtual void set_secure(bool secure) = 0;

  /// 0 on success, else an error code.
  virtual int connect(const std::string& host, int port) = 0;

  /// The number of bytes sent; fewer than all on error.
  virtual std::ptrdiff_t write(std::string_view bytes) = 0;

  /// The number of bytes placed into `buffer`, at most `size`; 0 when the peer has closed, -1 on error.
  virtual std::ptrdiff_t read(char* buffer, std::size_t size) = 0;

  /// Closes the connection; does nothing when there is none.
  virtual void disconnect() = 0;

  virtual int last_error() const = 0;
  virtual std::string last_error_string() const = 0;

  /// The name and version of the library behind it; empty when there is none.
  virtual std::string version() const { return {}; }
};

}  // namespace quorvel
