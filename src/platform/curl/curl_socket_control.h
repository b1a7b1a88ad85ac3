#pragma once

#include <memory>
#include <string>

#include "platform/curl/curl_support.h"
#include "platform/socket_control.h"

namespace quorvel {

/// libcurl as a socket: it connects, speaking TLS when asked, and then only sends and receives. Through a proxy, it is
/// connected by it. The error codes are libcurl's.
class CurlSocketControl : public SocketControl {
 public:
  /// `ca_file`: certificates, as PEM, to trust instead of the system's; libcurl then looks at the server's by itself,
  /// and refuses it where the file cannot be read. Without `proxy_for` no proxy is used, whatever the environment says.
  /// Throws Failure when libcurl cannot be used.
  explicit CurlSocketControl(std::string ca_file = {}, curl::ProxyFor proxy_for = {});
  ~CurlSocketControl() override;
  CurlSocketControl(const CurlSocketControl&) = delete;
  CurlSocketControl& operator=(const CurlSocketControl&) = delete;

  /// 4 seconds unless set; at least one second.
  void set_timeout(int seconds) override;
  void set_secure(bool secure) override;

  /// Closes an earlier connection first.
  int connect(const std::string& host, int port) override;

  /// Fewer than all when the connection failed or timed out, with the reason in last_error(); 0 without a connection.
  std::ptrdiff_t write(std::string_view bytes) override;

  /// -1 as well when a TLS connection ends without its closing notice: something may be missing then.
  std::ptrdiff_t read(char* buffer, std::size_t size) override;
  void disconnect() override;

  /// The last failure since the last connect(); 0 and empty when there was none.
  int last_error() const override { return error_; }
  std::string last_error_string() const override { return error_text_; }
  std::string version() const override;

 private:
  struct Connection;

  void set_error(int code, const std::string& text = {});

  std::string ca_file_;
  curl::ProxyFor proxy_for_;
  int timeout_seconds_ = 4;
  bool secure_ = false;
  int error_ = 0;
  std::string error_text_;
  std::unique_ptr<Connection> connection_;
};

}  // namespace quorvel
