#include <gtest/gtest.h>

#include <algorithm>

#include "fake_listings.h"
#include "fake_ports.h"
#include "platform/system.h"
#include "temporary_folder.h"
#include "text/code_page.h"
#include "transport/http_client.h"
#include "transport/retry_after.h"
#include "transport/whole_file.h"

namespace quorvel::testing {
namespace {

using Reads = FakeListings::Reads;

const std::string ok = "HTTP/1.1 200 OK\r\n\r\n";

struct Http : ::testing::Test {
  FakeListings service;
  Events events;
  FakeUi ui{events};
  FakeClock clock{events};
  Lines log;
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  const std::string work_dir = folder / "";
  Pace pace{clock, *files, work_dir};
  HttpClient http{service, ui, clock, log, pace};
  std::string url, steps;                             // all that happened, in order, and the trouble
  std::function<bool()> works = [] { return true; };  // whether the last of them succeeds

  Http() {
    http.on_status = [this](std::string_view message) { steps += std::string(message) + "|"; };
    ui.on_events = [this] { service.works("events"); };
    service.works = [this](const std::string& call) { return steps += call + "|", works(); };
  }
  std::string get(const std::vector<Reads>& answers, const std::string& from = "http://a/") {
    steps.clear();
    url = from;
    service.misbehave([&, next = std::size_t{0}](auto&, auto&) mutable { return answers.at(next++); });
    std::string body = http.GetData(url, "");
    steps += http.trouble();
    return body;
  }
};

TEST_F(Http, WholeFilesKeepWhatTheyAreToKeep) {
  const std::string path = folder / "a";
  EXPECT_TRUE(savefile(*files, path, "long", true) && !savefile(*files, path, "other", true));
  EXPECT_TRUE(savefile(*files, path, "so", false) && loadfile(*files, path) == "song");
  EXPECT_TRUE(savefile(*files, path, "so", false, OldTail::Dropped) && loadfile(*files, path) == "so");
}

TEST_F(Http, AddressesAreTakenApart) {
  const std::pair<const char*, Address> cases[] = {{" http://host/a/b?x=1 ", {false, "host", 80, "/a/b?x=1", "b"}},
                                                   {"HTTPS://host/?a", {true, "host", 443, "/?a", "/"}},
                                                   {"bare:65535", {false, "bare", 65535, "/", "/"}},
                                                   {"ftp://host/", {}},
                                                   {"http://host:65536/", {}}};
  Address found;
  EXPECT_FALSE(http.spliturl("/path", found)) << "no host was ever named";
  for (const auto& [address, expected] : cases) {
    found = {};
    EXPECT_EQ(http.spliturl(address, found), !expected.host.empty()) << address;
    EXPECT_TRUE(expected.host.empty() || found == expected) << address;
  }
  EXPECT_EQ(HttpClient::URLEncode("AZaz09 -/:@[`{é€日\x01"), "AZaz09+%2D%2F%3A%40%5B%60%7B%E9%80%3F%01");
}

TEST_F(Http, ATransferTakesTheseStepsAndABarePathStaysWithTheHost) {
  const std::string to_b = "HTTP: Connecting to b...|events|";
  const std::string sent = "HTTP: Sending Request...|write|write|write|write|HTTP: Receiving data...|read 2048|";
  EXPECT_EQ(get({{"HTTP/1.1 301 Moved\r\nX: y\r\nno colon\r\nLOCATION:  https://b:82/c \r\n\r\n"},
                 {"HTTP/1.1 303 Other\r\nLocation: /d\r\nX: y\r\n\r\n"},
                 {"HTTP/1.1 200 OK\r\nContent-Length\r\nCONTENT-LENGTH: 9\r\n\r\nab", "\xE9"}},
                "http://a:81/"),
            "abé");
  EXPECT_EQ(steps, "HTTP: Connecting to a...|events|timeout 4|tcp|connect a:81|" + sent +
                       "HTTP: Following 301 redirect...|close|" + to_b + "timeout 4|tls|connect b:82|" + sent +
                       "HTTP: Following 303 redirect...|close|" + to_b + "timeout 4|tls|connect b:80|" + sent +
                       "HTTP: Got 2 of 9 bytes|events|read 2048|HTTP: Got 3 of 9 bytes|events|read 2048|close|"
                       "HTTP: Downloaded 3 bytes|");
  url = "https://host/a?q=b";
  service.misbehave({});
  http.GetData(url, "k=v");
  http.PostData(url, "a=b", "k=v");
  const std::string lines = "/a?q=b HTTP/1.0\r\nHost: host\r\nAccept: */*\r\n", cookie = "Cookie: k=v\r\n\r\n";
  EXPECT_EQ(std::vector(service.requests().begin() + 2, service.requests().end()),
            (std::vector<std::string>{"GET /d HTTP/1.0\r\nHost: b\r\nAccept: */*\r\n\r\n", "GET " + lines + cookie,
                                      "POST " + lines +
                                          "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 3\r\n" +
                                          cookie + "a=b"}));
}

TEST_F(Http, EveryAnswerGivesItsBodyOrAReason) {
  const std::string given_up = "|close|The answer from a was given up: ";
  const std::string error = "Error in modHTTP.GetData()\r\nError Code: 0 Error Text: ",
                    no_number = "\"x\" is not a whole number of 32 bits";
  std::string body("xx");
  body.append(11'184'810, static_cast<char>(0x80));  // as long as it may be, with three bytes each
  const std::vector<Reads> redirects(51, {"HTTP/1.1 302 Found\r\nLocation: /again\r\n\r\n"});
  const std::tuple<std::vector<Reads>, std::string, std::string> cases[] = {
      {{{"HTTP/1.1 200 OK\r\n"}}, "", "|close|HTTP: Downloaded 0 bytes|a sent an empty answer"},
      // Ended without a closing notice.
      {{{"HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx", {}}}, "x", "|close|HTTP: Downloaded 1 bytes|"},
      {{{"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n[]", {}}}, "", "|close|The answer from a did not arrive: late"},
      {{{ok + "[x] \n", {}}}, "[x] \n", "|close|HTTP: Downloaded 5 bytes|"},
      {{{ok + "x", {}}},
       "",
       "|HTTP: Unable to receive data from server (error 28late)|close|The answer from a did not arrive: late"},
      {{{"nonsense\xE9\r\n\r\nx"}}, "", "HTTP: Unhandled return code (0)|close|a answered \"nonsenseé\""},
      {{{"HTTP/1.1 300 Many\r\nLocation: ftp://b/\r\n\r\n"}},
       "",
       "|close|HTTP: The specified address is invalid|The address ftp://b/ is invalid"},
      {{{"HTTP/1.1 200 OK\r\n\r", "\nab", "c"}}, "abc", "|close|HTTP: Downloaded 3 bytes|"},
      {{{"HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\n"}},
       "",
       "|close|" + error + no_number + "|The answer from a cannot be used: " + no_number},
      {{{ok + body}}, from_code_page(body), "|close|HTTP: Downloaded 11184812 bytes|"},
      {{{ok + body + "x"}}, "", given_up + "its body is longer than 33554432 bytes"},
      {{{std::string(65'537, 'x')}}, "", given_up + "its header is longer than 65536 bytes"},
      {redirects, "", given_up + "it redirects more than 50 times"}};
  for (const auto& [answers, whole, end] : cases) EXPECT_TRUE(get(answers) == whole && steps.ends_with(end)) << end;
  for (int code = 100; code < 600; ++code) {
    const std::string answer = "HTTP/1.1 " + std::to_string(code) + " X\r\nX: y\r\nLocation: /b\r\n\r\nx";
    const bool is_repeated = (code >= 300 && code <= 303) || code == 429 || code == 503;
    const char* const expected = is_repeated ? "b" : code / 100 == 2 || code == 401 ? "x" : "";
    EXPECT_EQ(get({{answer}, {ok + "b"}}), expected) << code;
  }
}

TEST_F(Http, AFailureOrACancelEndsTheTransferAtEveryStep) {
  const std::function<bool()> fail = [] { return false; }, cancel = [this] { return http.cancel(), false; };
  const std::string cancelled = "The transfer was cancelled";
  http.cancel();  // there is nothing to cancel yet
  const std::tuple<std::string, std::function<bool()>, std::string> cases[] = {
      {"tls|", fail, "HTTP: Unable to initialize security interface|no TLS"},
      {"connect a:443|", fail, "HTTP: Unable to connect to a (error 28)|No connection to a: late"},
      {"connect a:443|", cancel, "HTTP: Connection canceled|" + cancelled},
      {"write|", fail, "HTTP: Unable to send request to a|close|The request could not be sent to a: late"},
      {"write|", cancel, "HTTP: Download canceled|close|" + cancelled},
      {"read 2048|", cancel, "HTTP: Download canceled|close|" + cancelled},
      {"Got 1 bytes|events|", cancel, "close|HTTP: Download canceled|" + cancelled}};
  for (const auto& [at, happens, end] : cases) {
    works = [this, &at = at, &happens = happens] { return !steps.ends_with(at) || happens(); };
    EXPECT_EQ(get({{ok + "x", "y"}}, "https://a/"), "");
    EXPECT_TRUE(steps.ends_with(at + end)) << steps;
    works = [] { return true; };
    EXPECT_EQ(get({{ok + "x"}}), "x") << "a cancel is forgotten once it was obeyed";
  }
  // A service that takes its time.
  works = [&] { return clock.wait(std::chrono::seconds(steps.ends_with("read 2048|"))), true; };
  http.limits.time = std::chrono::seconds(1);
  EXPECT_EQ(get({{ok + "x", {}}}), "");
  EXPECT_TRUE(steps.ends_with("|close|The answer from a was given up: it takes longer than 1 seconds")) << steps;
}

TEST_F(Http, AServiceThatRefusesIsAskedAgainLaterAndNeverTooOftenFromThenOn) {
  const auto refused = [](const std::string& more) { return Reads{"HTTP/1.1 503 Busy\r\n" + more + "\r\n"}; };
  const auto waited = [&, from = clock.now] {
    return std::chrono::duration_cast<std::chrono::seconds>(clock.now - from);
  };
  EXPECT_EQ(get({refused("Retry-After: 7\r\n"), refused(""), refused(""), {ok + "x"}}), "x");
  EXPECT_EQ(waited().count(), 7 + 4 + 8);
  EXPECT_EQ(log.list.front(), "a answered \"HTTP/1.1 503 Busy\"; asking again in 7 seconds");
  EXPECT_EQ(get(std::vector(9, refused(""))), "");
  EXPECT_EQ(waited().count(), 19 + 2 + 4 + 8 + 16) << "no more than a minute";
  EXPECT_EQ(get({refused("")}), "") << "nobody waits for a service that is down";

  const std::string date = "Sun, 06 Nov 1994 08:49:37 GMT", later = "Sun, 06 Nov 1994 08:50:01 GMT";
  const auto now = std::chrono::sys_days(std::chrono::November / 6 / 1994) + std::chrono::hours(8);
  const std::tuple<std::string, std::string, int> cases[] = {
      {later, date, 24},
      {"Sunday, 06-Nov-94 08:50:01 GMT", date, 24},
      {"Sun Nov  6 08:50:01 1994", date, 24},
      {later, "", 50 * 60 + 1},
      {date, later, 0},
      {"Sun, 31 Feb 1994 08:49:37 GMT", date, 0},
      {"Sun, 06 Nov 08:50:01 GMT", date, 0},
      {"Sun, 06 Nov 1994", date, 0},
      {"Mon, 07 Nov 1994 10:51:38 GMT", date, 26 * 3600 + 121},
      {"Thu, 01-Jan-70 00:00:10 GMT", "01 Jan 1970 00:00:00", 10},
      {"Tue, 01-Jan-69 00:00:10 GMT", "01 Jan 2069 00:00:00", 10},
      {"120", date, 120},
      {"soon", date, 0},
      {"", date, 0}};
  for (const auto& [after, own, seconds] : cases) EXPECT_EQ(time_to_wait(after, own, now).count(), seconds) << after;
  const auto before = clock.now;
  EXPECT_EQ(get({refused("Date: " + date + "\r\nRetry-After: " + later + "\r\n"), {ok + "x"}}), "x");
  EXPECT_EQ(clock.now - before, std::chrono::seconds(24));
}

TEST_F(Http, CopiesKeepThePaceTogetherFromTheFirstRefusalOfAny) {
  Pace other(clock, *files, work_dir);
  std::vector<std::chrono::steady_clock::time_point> sent;
  const auto ask_both = [&] {
    for (Pace* const copy : {&pace, &other}) {
      for (std::chrono::milliseconds left; (left = copy->claim()).count() > 0;) clock.wait(left);
      sent.push_back(clock.now);
    }
  };
  while (sent.size() < 18) ask_both();
  EXPECT_FALSE(files->exists(work_dir + "requests") || clock.now.time_since_epoch().count() > 0);
  pace.slow_down();
  while (sent.size() < 60) ask_both();
  for (std::size_t i = 20; i < sent.size(); ++i) EXPECT_GE(sent[i] - sent[i - 20], std::chrono::seconds(10)) << i;
  EXPECT_LT(sent.back() - sent.front(), std::chrono::seconds(21));
  const std::unique_ptr<HeldFile> held = files->hold(work_dir + "requests");
  int alone = 0;
  events.list.clear();
  while (alone < 30 && pace.claim().count() == 0) ++alone;
  EXPECT_EQ(std::ranges::count(events.list, "wait 5"), (alone + 1) * 9) << "others hold it for an instant";
  EXPECT_LE(alone, 20) << "what cannot be shared is kept to alone";
  clock.wait(std::chrono::minutes(11));
  Pace fresh(clock, *files, work_dir);
  for (int i = 0; i < 30; ++i) EXPECT_EQ(fresh.claim().count(), 0) << "all that is long past";
}

}  // namespace
}  // namespace quorvel::testing
