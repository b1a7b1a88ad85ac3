#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/log.h"
#include "platform/socket_control.h"
#include "platform/user_interface.h"
#include "transport/patience.h"

namespace quorvel {

/// One address, taken apart.
struct Address {
  bool secure = false;
  std::string host;
  int port = 80;
  std::string path;  // from the first "/" after the host on, query included
  std::string file;  // the last component of the path, without the query; "/" when that is empty
  bool operator==(const Address&) const = default;
};

/// Far above every real answer. One that exceeds a limit is abandoned.
struct HttpLimits {
  std::size_t body = std::size_t{32} << 20U;  // bytes of decoded text, some 30,000 episodes
  std::size_t header = std::size_t{64} << 10U;
  int redirects = 50;
  std::chrono::milliseconds time = std::chrono::minutes(3);      // with all redirects; checked after each read
  std::chrono::milliseconds patience = std::chrono::minutes(1);  // of waiting for a service that refuses requests
};

/// Fetches resources by HTTP/1.0, one request at a time, and follows redirects. Pending events of the user interface
/// run before connecting, while the network is waited for, and after each read.
///
/// A request that is refused because there are too many (429, 503) is sent again as Patience says.
class HttpClient {
 public:
  HttpClient(SocketControl& socket, UserInterface& ui, Clock& clock, Log& log, Pace& pace)
      : socket_(socket), ui_(ui), clock_(clock), patience_(pace, clock, log) {
    patience_.on_slice = [this](std::chrono::milliseconds slice) { return goes_on_after(slice); };
  }

  /// The body of the answer, one character a byte of the code page. Empty on every failure: bad address, refused or
  /// unverified connection, time-out, cancel, a status that is neither 2xx nor 401, or an exceeded limit; trouble()
  /// says which. After a redirect `url` is the new address. `cookie` may be empty.
  std::string GetData(std::string& url, std::string_view cookie);

  /// The same as a POST of `form`, which is sent as it is.
  std::string PostData(std::string& url, std::string_view form, std::string_view cookie);

  /// False when the address cannot be used: a scheme other than http and https, port 0 or above 65535, or no host where
  /// no earlier address named one either. An address without a scheme leaves `address.secure` as it is.
  bool spliturl(std::string_view url, Address& address);

  /// Letters and digits as they are, a blank as "+", every other character as "%" and its code page number.
  static std::string URLEncode(std::string_view text);

  /// Why the last body was empty, a sentence for the user without its full stop.
  const std::string& trouble() const { return trouble_; }

  /// Stops the transfer in progress at its next step; does nothing when there is none.
  void cancel() { cancel_ = in_progress_; }

  HttpLimits limits;

  /// Called with a message at every step.
  std::function<void(std::string_view)> on_status = [](std::string_view) {};

 private:
  struct Answer;
  enum class Outcome { Body, Redirect, Nothing };

  std::string fetch(std::string& url, std::string_view cookie, std::optional<std::string_view> form);
  Outcome exchange(std::string& url, const Address& address, const std::vector<std::string>& request,
                   std::string& body);
  bool connect(const Address& address);
  bool send(const Address& address, const std::vector<std::string>& request);
  Outcome receive(std::string& url, std::string& body);
  Outcome read_header(Answer& answer, std::string& url);
  std::string attempt(std::string& url, std::string_view cookie, std::optional<std::string_view> form);
  bool goes_on_after(std::chrono::milliseconds slice);
  std::string redirected(std::string& url, std::string_view cookie, std::optional<std::string_view> form);
  bool consume_cancel(std::string_view message);
  void fail(std::string_view status, const std::string& trouble);
  std::string host() const;
  void check_deadline() const;

  SocketControl& socket_;
  UserInterface& ui_;
  Clock& clock_;
  Patience patience_;
  bool refused_ = false;                    // the last request, because there are too many
  std::chrono::milliseconds named_wait_{};  // by the service; 0 when it named none
  bool in_progress_ = false;
  bool cancel_ = false;
  std::string trouble_;
  std::chrono::steady_clock::time_point deadline_;
  std::string last_host_;  // for an address that names none, such as a redirect to a bare path
};

}  // namespace quorvel
