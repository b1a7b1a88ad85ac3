#include "transport/http_client.h"

#include <algorithm>
#include <array>
#include <optional>

#include "text/case.h"
#include "text/code_page.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/numbers.h"
#include "text/percent.h"
#include "transport/retry_after.h"

namespace quorvel {
namespace {

constexpr int timeout_seconds = 4;
constexpr std::size_t read_size = 2048;
constexpr int max_port = 65535;
constexpr int unauthorized = 401, too_many_requests = 429, unavailable = 503;
constexpr std::size_t max_host_length = 253, max_status_length = 100;  // characters of each that are told

/// One of HttpLimits is exceeded.
class LimitExceeded : public Failure {
 public:
  using Failure::Failure;
};

struct HeaderField {
  std::string name;  // lower case
  std::string_view value;
};

std::optional<HeaderField> header_field(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return {};
  return HeaderField{lower_case(line.substr(0, colon)), trim(line.substr(colon + 1))};
}

std::vector<std::string_view> header_lines(std::string_view header) {
  std::vector<std::string_view> lines;
  for (std::size_t start = 0, end; (end = header.find('\n', start)) != std::string_view::npos; start = end + 1) {
    const std::string_view line = header.substr(start, end + 1 - start);
    lines.push_back(trim(line.substr(0, line.size() < 2 ? 0 : line.size() - 2)));
  }
  return lines;
}

/// Empty when there is no such field.
std::string_view value_of(const std::vector<std::string_view>& lines, std::string_view name) {
  for (const std::string_view line : lines) {
    const std::optional<HeaderField> field = header_field(line);
    if (field && field->name == name) return field->value;
  }
  return {};
}

int status_of(std::string_view status_line) {
  const std::size_t blank = status_line.find(' ');
  return blank == std::string_view::npos ? 0 : leading_number(status_line.substr(blank + 1));
}

/// Each line is sent by a write of its own.
std::vector<std::string> request_lines(const Address& address, std::string_view cookie,
                                       std::optional<std::string_view> form) {
  std::vector<std::string> lines = {(form ? "POST " : "GET ") + address.path + " HTTP/1.0\r\n",
                                    "Host: " + address.host + "\r\n", "Accept: */*\r\n"};
  if (form) {
    lines.emplace_back("Content-Type: application/x-www-form-urlencoded\r\n");
    lines.push_back("Content-Length: " + std::to_string(form->size()) + "\r\n");
  }
  if (!cookie.empty()) lines.push_back("Cookie: " + std::string(cookie) + "\r\n");
  lines.emplace_back("\r\n");
  if (form && !form->empty()) lines.emplace_back(*form);
  return lines;
}

}  // namespace

/// What has been received of one answer.
struct HttpClient::Answer {
  std::string header;
  std::string chunk;  // what the last read brought
  std::string body;   // decoded
  std::size_t received = 0;
  int expected = -1;  // bytes, by the header; only reported, never relied on
  bool in_header = true;

  /// By its own count or, without one, by its form: many servers end without TLS's closing notice, and then only this
  /// tells a whole answer from one that was cut.
  bool is_complete() const {
    if (in_header) return false;
    return expected < 0 ? is_whole_list(body) : received == static_cast<std::size_t>(expected);
  }
};

bool HttpClient::spliturl(std::string_view url, Address& address) {
  std::string_view rest = trim(url);
  address.port = 80;
  if (const std::size_t scheme_end = rest.find("://"); scheme_end != std::string_view::npos) {
    const std::string scheme = lower_case(rest.substr(0, scheme_end));
    if (scheme != "http" && scheme != "https") return false;
    address.secure = scheme == "https";
    if (address.secure) address.port = 443;
    rest.remove_prefix(scheme_end + 3);
  }
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  std::string_view host = rest.substr(0, slash);
  address.path = slash == rest.size() ? "/" : rest.substr(slash);
  if (const std::size_t colon = host.find(':'); colon != std::string_view::npos) {
    address.port = leading_number(host.substr(colon + 1));
    host = host.substr(0, colon);
    if (address.port == 0 || address.port > max_port) return false;
  }
  address.file = address.path.substr(address.path.rfind('/') + 1);
  address.file.erase(std::min(address.file.find('?'), address.file.size()));
  if (address.file.empty()) address.file = "/";
  if (!host.empty()) last_host_ = host;
  address.host = last_host_;
  return !address.host.empty();
}

std::string HttpClient::URLEncode(std::string_view text) {
  return query_encoded(to_code_page(text));
}

std::string HttpClient::GetData(std::string& url, std::string_view cookie) {
  return fetch(url, cookie, std::nullopt);
}

std::string HttpClient::PostData(std::string& url, std::string_view form, std::string_view cookie) {
  return fetch(url, cookie, form);
}

std::string HttpClient::fetch(std::string& url, std::string_view cookie, std::optional<std::string_view> form) {
  in_progress_ = true;
  cancel_ = false;
  socket_.on_wait = [this] {
    ui_.process_events();
    return !cancel_;
  };
  const std::string asked = url;
  std::string body;
  patience_.limit = limits.patience;
  do {
    url = asked;
    body = attempt(url, cookie, form);
  } while (refused_ && patience_.wait_after_refusal(named_wait_, trouble_));
  in_progress_ = false;
  return body;
}

/// While the service is waited for; false when the transfer is cancelled meanwhile.
bool HttpClient::goes_on_after(std::chrono::milliseconds slice) {
  deadline_ += slice;
  ui_.process_events();
  return !consume_cancel("HTTP: Connection canceled");
}

std::string HttpClient::attempt(std::string& url, std::string_view cookie, std::optional<std::string_view> form) {
  deadline_ = clock_.instant() + limits.time;
  trouble_.clear();
  refused_ = false;
  std::string body;
  try {
    body = redirected(url, cookie, form);
    if (body.empty() && trouble_.empty()) trouble_ = host() + " sent an empty answer";
  } catch (const LimitExceeded& exceeded) {
    socket_.disconnect();
    trouble_ = "The answer from " + host() + " was given up: " + exceeded.what();
  } catch (const Failure& failure) {
    socket_.disconnect();
    fail(std::string("Error in modHTTP.") + (form ? "PostData" : "GetData") +
             "()\r\nError Code: 0 Error Text: " + failure.what(),
         "The answer from " + host() + " cannot be used: " + failure.what());
  }
  return body;
}

std::string HttpClient::redirected(std::string& url, std::string_view cookie, std::optional<std::string_view> form) {
  Address address;  // outlives a redirect: a bare path stays with the last host and its security
  std::string body;
  for (int redirects = 0;; ++redirects) {
    if (redirects > limits.redirects) {
      throw LimitExceeded("it redirects more than " + std::to_string(limits.redirects) + " times");
    }
    if (!spliturl(url, address)) {
      fail("HTTP: The specified address is invalid", "The address " + url.substr(0, max_host_length) + " is invalid");
      return {};
    }
    const Outcome outcome = exchange(url, address, request_lines(address, cookie, form), body);
    if (outcome != Outcome::Redirect) return body;
  }
}

HttpClient::Outcome HttpClient::exchange(std::string& url, const Address& address,
                                         const std::vector<std::string>& request, std::string& body) {
  on_status("HTTP: Connecting to " + address.host + "...");
  ui_.catch_up();
  if (!patience_.wait_for_turn()) return Outcome::Nothing;
  check_deadline();
  if (!connect(address) || !send(address, request)) return Outcome::Nothing;
  return receive(url, body);
}

bool HttpClient::connect(const Address& address) {
  socket_.set_timeout(timeout_seconds);
  try {
    socket_.set_secure(address.secure);
  } catch (const Failure& failure) {
    fail("HTTP: Unable to initialize security interface", failure.what());
    return false;
  }
  if (socket_.connect(address.host, address.port) == 0) return true;
  if (!consume_cancel("HTTP: Connection canceled")) {
    fail("HTTP: Unable to connect to " + address.host + " (error " + std::to_string(socket_.last_error()) + ")",
         "No connection to " + host() + ": " + socket_.last_error_string());
  }
  return false;
}

bool HttpClient::send(const Address& address, const std::vector<std::string>& request) {
  on_status("HTTP: Sending Request...");
  for (const std::string& line : request) {
    if (socket_.write(line) == static_cast<std::ptrdiff_t>(line.size())) continue;
    if (!consume_cancel("HTTP: Download canceled")) {
      fail("HTTP: Unable to send request to " + address.host,
           "The request could not be sent to " + host() + ": " + socket_.last_error_string());
    }
    socket_.disconnect();
    return false;
  }
  return true;
}

HttpClient::Outcome HttpClient::receive(std::string& url, std::string& body) {
  on_status("HTTP: Receiving data...");
  Answer answer;
  std::array<char, read_size> buffer{};
  for (;;) {
    if (cancel_) {
      socket_.disconnect();
      consume_cancel("HTTP: Download canceled");
      return Outcome::Nothing;
    }
    const std::ptrdiff_t count = socket_.read(buffer.data(), buffer.size());
    if (count == 0 || (count < 0 && !cancel_ && answer.is_complete())) {
      socket_.disconnect();
      on_status("HTTP: Downloaded " + std::to_string(answer.received) + " bytes");
      body = std::move(answer.body);
      return Outcome::Body;
    }
    if (count < 0) {
      if (!consume_cancel("HTTP: Download canceled")) {
        fail("HTTP: Unable to receive data from server (error " + std::to_string(socket_.last_error()) +
                 socket_.last_error_string() + ")",
             "The answer from " + host() + " did not arrive: " + socket_.last_error_string());
      }
      socket_.disconnect();
      return Outcome::Nothing;
    }
    answer.chunk.assign(buffer.data(), static_cast<std::size_t>(count));
    if (answer.in_header) {
      const Outcome outcome = read_header(answer, url);
      if (outcome != Outcome::Body) {
        socket_.disconnect();
        return outcome;
      }
    }
    if (!answer.in_header) {
      answer.received += answer.chunk.size();
      answer.body += from_code_page(answer.chunk);
      if (answer.body.size() > limits.body) {
        throw LimitExceeded("its body is longer than " + std::to_string(limits.body) + " bytes");
      }
    }
    const std::string of = answer.expected < 1 ? "" : " of " + std::to_string(answer.expected);
    on_status("HTTP: Got " + std::to_string(answer.received) + of + " bytes");
    ui_.process_events();
    check_deadline();
  }
}

/// Takes the last chunk as a part of the header. When it completes the header, the chunk becomes what follows it.
HttpClient::Outcome HttpClient::read_header(Answer& answer, std::string& url) {
  const std::size_t looked_at = answer.header.size() - std::min<std::size_t>(answer.header.size(), 3);
  answer.header += answer.chunk;
  const std::size_t blank_line = answer.header.find("\r\n\r\n", looked_at);
  if (std::min(blank_line, answer.header.size()) > limits.header) {
    throw LimitExceeded("its header is longer than " + std::to_string(limits.header) + " bytes");
  }
  if (blank_line == std::string::npos) return Outcome::Body;
  answer.chunk = answer.header.substr(blank_line + 4);
  answer.header.erase(blank_line + 2);
  answer.in_header = false;

  const std::vector<std::string_view> lines = header_lines(answer.header);
  const int status = status_of(lines.front());
  if (status >= 300 && status <= 303) {
    on_status("HTTP: Following " + std::to_string(status) + " redirect...");
    for (std::size_t i = 1; i < lines.size(); ++i) {
      const std::optional<HeaderField> field = header_field(lines[i]);
      if (!field || field->name != "location") continue;
      url = field->value;
      return Outcome::Redirect;
    }
  }
  refused_ = status == too_many_requests || status == unavailable;
  if (refused_) {
    const auto now = std::chrono::floor<std::chrono::seconds>(clock_.utc());
    named_wait_ = time_to_wait(value_of(lines, "retry-after"), value_of(lines, "date"), now);
  } else {
    patience_.renew();
  }
  if ((status < 200 || status > 299) && status != unauthorized) {
    const std::string_view line = lines.front();
    fail("HTTP: Unhandled return code (" + std::to_string(status) + ")",
         host() + " answered \"" + from_code_page(line.substr(0, max_status_length)) + "\"");
    return Outcome::Nothing;
  }
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::optional<HeaderField> field = header_field(lines[i]);
    if (field && field->name == "content-length") answer.expected = to_number(field->value);
  }
  return Outcome::Body;
}

void HttpClient::check_deadline() const {
  if (clock_.instant() < deadline_) return;
  throw LimitExceeded("it takes longer than " + std::to_string(limits.time.count() / 1000) + " seconds");
}

bool HttpClient::consume_cancel(std::string_view message) {
  if (!cancel_) return false;
  cancel_ = false;
  fail(message, "The transfer was cancelled");
  return true;
}

std::string HttpClient::host() const {
  return last_host_.substr(0, max_host_length);
}

void HttpClient::fail(std::string_view status, const std::string& trouble) {
  on_status(status);
  trouble_ = trouble;
}

}  // namespace quorvel
