#include "platform/curl/curl_web_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "listings_service.h"

namespace quorvel::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/// Status, body, and for how long to wait; or the failure.
std::string got(WebClient& client, const std::string& url) try {
  const WebAnswer answer = client.get(url);
  return std::to_string(answer.status) + "|" + answer.body + "|" + answer.retry_after;
} catch (const Failure& failure) {
  return failure.what();
}

TEST(CurlWebClient, GetsWhatTheServerMeansOrNamesItInTheFailure) {
  auto service = std::make_unique<ListingsService>();
  const std::string base = service->base(), ok = "HTTP/1.1 200 OK\r\n", host = "The answer from 127.0.0.1 ";
  CurlWebClient client("Quorvel/3 (+http://q)", {},
                       [&](bool, const std::string& name) { return name == "far.example" ? base : ""; });
  EXPECT_EQ(got(client, base + "/search/shows?q=none"), "200|[]|");
  for (const char* const header : {" HTTP/1.1\r\n", "\r\nUser-Agent: Quorvel/3 (+http://q)\r\n", "gzip"}) {
    EXPECT_THAT(service->requests().back(), HasSubstr(header));
  }
  const auto answered = [&](const std::string& answer) {
    service->answer_with([=](const std::string& request) {
      return target_of(request) == "/moved" ? "HTTP/1.1 301 Moved\r\nContent-Length: 0\r\nLocation: to?a\r\n\r\n"
                                            : answer;
    });
    return got(client, base + "/moved");
  };
  const std::string packed("\x1F\x8B\x08\0\0\0\0\0\0\x03\xCBH\xCD\xC9\xC9\x07\0\x86\xA6\x10\x36\x05\0\0\0", 25);
  EXPECT_EQ(answered(ok + "Content-Encoding: gzip\r\n\r\n" + packed), "200|hello|");
  EXPECT_EQ(got(client, "http://far.example/"), "200|hello|");
  EXPECT_THAT(service->requests().back(), StartsWith("GET http://far.example/ "));
  EXPECT_EQ(answered("HTTP/1.1 429 No\r\nRetry-After: 7\r\n\r\nx"), "429|x|7");
  EXPECT_THAT(answered(ok + "Content-Length: 9\r\n\r\nhalf"), StartsWith(host + "did not arrive: "));
  EXPECT_EQ(answered(ok + "\r\n" + std::string((std::size_t{32} << 20U) + 1, 'x')),
            host + "was given up: its body is longer than 33554432 bytes");
  EXPECT_EQ(answered("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: /moved\r\n\r\n"),
            host + "was given up: it redirects more than 10 times");
  EXPECT_EQ(answered("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: ftp://127.0.0.1/\r\n\r\n"),
            "The address ftp://127.0.0.1/ is invalid");
  service->slow_down(std::chrono::milliseconds(30));
  int waits = 0;
  client.on_wait = [&] { return ++waits < 3; };
  EXPECT_EQ(got(client, base), "The transfer was cancelled");
  std::string meanwhile;
  client.on_wait = [&, waits = 0]() mutable {
    if (waits++ == 0) meanwhile = got(client, base + "/meanwhile");
    return true;
  };
  EXPECT_EQ(answered(ok + "\r\nhello"), "200|hello|");
  EXPECT_EQ(meanwhile, "200|hello|");
  client.on_wait = [] { return true; };
  std::promise<void> asked;
  CurlWebClient slow("Quorvel", {}, [&](bool, const std::string&) { return asked.get_future().wait(), base; });
  slow.on_wait = [&] { return asked.set_value(), false; };
  EXPECT_EQ(got(slow, base), "The transfer was cancelled");
  CurlWebClient unsure("Quorvel", base, {});
  EXPECT_EQ(got(unsure, base), "No connection to 127.0.0.1: The certificates of " + base + " cannot be read");
  service.reset();
  EXPECT_THAT(got(client, base), StartsWith("No connection to 127.0.0.1: "));
}

}  // namespace
}  // namespace quorvel::testing
