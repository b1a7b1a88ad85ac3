#include <gtest/gtest.h>

#include <thread>

#include "fake_listings.h"
#include "fake_ports.h"
#include "platform/system.h"
#include "temporary_folder.h"
#include "transport/http_client.h"
#include "transport/whole_file.h"

namespace quorvel::testing {
namespace {

TEST(WholeFile, WritesOverTheStartAndReadsEveryByte) {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  const std::string path = folder / "f.dat";
  EXPECT_THROW(loadfile(*files, path), Failure);
  EXPECT_TRUE(savefile(*files, path, "abcdef", true));
  EXPECT_FALSE(savefile(*files, path, "no", true));
  EXPECT_TRUE(savefile(*files, path, "xy", false));
  EXPECT_EQ(loadfile(*files, path), "xycdef");
  EXPECT_TRUE(savefile(*files, path, "é€日", false, OldTail::Dropped));
  EXPECT_EQ(files->read(path), "\xE9\x80?");
  EXPECT_EQ(loadfile(*files, path), "é€?");
  EXPECT_TRUE(savefile(*files, path, "", false, OldTail::Dropped));
  EXPECT_EQ(loadfile(*files, path), "");
  EXPECT_FALSE(savefile(*files, folder / "missing/f.dat", "x", false));
}

using Reads = FakeListings::Reads;

const std::string ok = "HTTP/1.1 200 OK\r\n\r\n";

struct Http : ::testing::Test {
  FakeListings service;
  Events events;
  FakeUi ui{events};
  Lines log;
  HttpClient http{service, ui, log};
  std::string steps;  // all that happened, in order
  std::function<bool(const std::string&)> works = [](auto&) { return true; };

  Http() {
    http.on_status = [this](std::string_view message) { steps += std::string(message) + "|"; };
    ui.on_events = [this] { steps += "events|"; };
    service.works = [this](const std::string& call) { return steps += call + "|", works(call); };
  }
  std::string get(std::string url, const std::vector<Reads>& answers = {{ok + "x"}}) {
    steps.clear();
    service.misbehave([&, next = std::size_t{0}](auto&, auto&) mutable { return answers.at(next++); });
    std::string body = http.GetData(url, "");
    service.misbehave({});
    return body;
  }
};

TEST_F(Http, AddressesAreTakenApart) {
  const struct {
    const char* url;
    Address address;  // without a host: of no use
  } cases[] = {{" http://host/a/b?x=1 ", {false, "host", 80, "/a/b?x=1", "b"}},
               {"https://host:8443", {true, "host", 8443, "/", "/"}},
               {"HTTPS://host/?a", {true, "host", 443, "/?a", "/"}},
               {"/only/path", {false, "host", 80, "/only/path", "path"}},
               {"bare:65535", {false, "bare", 65535, "/", "/"}},
               {"ftp://host/", {}},
               {"http://host:abc/", {}},
               {"http://host:65536/", {}}};
  for (const auto& [url, expected] : cases) {
    Address found;
    EXPECT_EQ(http.spliturl(url, found), !expected.host.empty()) << url;
    EXPECT_TRUE(found == expected || expected.host.empty()) << url;
  }
  Address none;
  EXPECT_FALSE(HttpClient(service, ui, log).spliturl("/path", none)) << "no host was ever named";
  EXPECT_EQ(HttpClient::URLEncode("AZaz09 -/:@[`{é€日\x01"), "AZaz09+%2D%2F%3A%40%5B%60%7B%E9%80%3F%01");
}

TEST_F(Http, ATransferTakesTheseSteps) {
  EXPECT_EQ(get("http://host:81/a?q=b", {{"HTTP/1.1 200 OK\r\nContent-Length\r\nCONTENT-LENGTH: 9\r\n\r\nab", "\xE9"}}),
            "abé");
  EXPECT_EQ(
      steps,
      "HTTP: Connecting to host...|events|timeout 4|tcp|connect host:81|HTTP: Sending Request...|write|write|write|"
      "write|HTTP: Receiving data...|read 2048|HTTP: Got 2 of 9 bytes|events|read 2048|HTTP: Got 3 of 9 bytes|"
      "events|read 2048|close|HTTP: Downloaded 3 bytes|");
  std::string url = "https://host/a?q=b";
  http.GetData(url, "k=v");
  http.PostData(url, "a=b", "");
  http.PostData(url, "", "k=v");
  const std::string get = "GET /a?q=b HTTP/1.0\r\nHost: host\r\nAccept: */*\r\n", cookie = "Cookie: k=v\r\n";
  const std::string post =
      "POST /a?q=b HTTP/1.0\r\nHost: host\r\nAccept: */*\r\n"
      "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: ";
  EXPECT_EQ(service.requests(), (std::vector{get + "\r\n", get + cookie + "\r\n", post + "3\r\n\r\na=b",
                                             post + "0\r\n" + cookie + "\r\n"}));
}

TEST_F(Http, EveryAnswerGivesItsBodyOrAReason) {
  const std::string header_error = "|close|Error in modHTTP.GetData()\r\nError Code: 0 Error Text: ";
  const struct {
    Reads reads;
    std::string body, end;
  } cases[] = {
      {{}, "", "|close|HTTP: Downloaded 0 bytes|"},
      {{"HTTP/1.1 200 OK\r\n"}, "", "|close|HTTP: Downloaded 0 bytes|"},
      {{ok + "x", {}}, "", "|HTTP: Unable to receive data from server (error 28late)|close|"},
      {{"nonsense\r\n\r\nx"}, "", "HTTP: Unhandled return code (0)|close|"},
      {{"Location: 302\r\n\r\nx"}, "", "HTTP: Unhandled return code (302)|close|"},
      {{"HTTP/1.1 302 Found\r\nLocation : /d\r\n\r\nx"}, "", "HTTP: Unhandled return code (302)|close|"},
      {{"HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\nx"},
       "",
       header_error + "\"many\" is not a whole number of 32 bits|"},
      // The first part of the body is measured by the read that ends the header, so these bytes are lost.
      {{"HTTP/1.1 200", " OK\r\n\r\nabcdefghijklmnop", "q"}, "mnopq", "|close|HTTP: Downloaded 5 bytes|"},
      {{"HTTP/1.1 200 OK\r\n\r", "\nabcdefghijklmnopqrst"}, "st", "|close|HTTP: Downloaded 2 bytes|"},
      {{"HTTP/1.1 200 OK\r\n", "\r\nabcdefghijklmnopq", "r"}, "r", "|close|HTTP: Downloaded 1 bytes|"},
      {{"HTTP/1.1 200 OK\r\n", "\r\nabcdefghijklmnop"}, "", header_error + "The header arrived in parts|"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(get("http://a/", {c.reads}), c.body) << ::testing::PrintToString(c.reads);
    EXPECT_TRUE(steps.ends_with(c.end)) << steps;
  }
  for (int code = 100; code < 600; ++code) {
    const std::string answer = "HTTP/1.1 " + std::to_string(code) + " X\r\nX: y\r\nLocation: /b\r\n\r\nx";
    const char* const expected = code >= 300 && code <= 303 ? "b" : code / 100 == 2 || code == 401 ? "x" : "";
    EXPECT_EQ(get("http://a/", {{answer}, {ok + "b"}}), expected) << code;
  }
}

TEST_F(Http, RedirectsAreFollowedAndABarePathStaysWithTheHost) {
  EXPECT_EQ(get("http://a:81/", {{"HTTP/1.1 301 Moved\r\nX: y\r\nLOCATION:  https://b:82/c \r\n\r\n"},
                                 {"HTTP/1.1 303 Other\r\nLocation: /d\r\n\r\n"},
                                 {ok + "x"}}),
            "x");
  for (const char* const step : {"tcp|connect a:81|", "close|", "tls|connect b:82|", "close|", "tls|connect b:80|"}) {
    const std::size_t at = steps.find(step);
    ASSERT_NE(at, std::string::npos) << step << " in " << steps;
    steps.erase(0, at);
  }
  std::string url = "http://a/";
  service.misbehave([](auto&, auto&) { return Reads{"HTTP/1.1 300 Many\r\nLocation: ftp://b/\r\n\r\n"}; });
  EXPECT_EQ(http.GetData(url, ""), "");
  EXPECT_EQ(url, "ftp://b/");
  EXPECT_TRUE(steps.ends_with("|HTTP: The specified address is invalid|"));
}

TEST_F(Http, AFailureOrACancelEndsTheTransferAtEveryCall) {
  const struct {
    const char* call;
    bool cancel;
    const char* end;
  } cases[] = {{"tls", false, "|tls|HTTP: Unable to initialize security interface|"},
               {"connect a:443", false, "|connect a:443|HTTP: Unable to connect to a (error 28)|"},
               {"connect a:443", true, "|connect a:443|HTTP: Connection canceled|"},
               {"write", false, "|write|HTTP: Unable to send request to a|close|"},
               {"write", true, "|write|HTTP: Download canceled|close|"},
               {"read 2048", false, "|HTTP: Unable to receive data from server (error 28late)|close|"},
               {"read 2048", true, "|read 2048|HTTP: Download canceled|close|"}};
  for (const auto& c : cases) {
    works = [&](const std::string& call) {
      if (call == c.call && c.cancel) http.cancel();
      return call != c.call;
    };
    EXPECT_EQ(get("https://a/"), "");
    EXPECT_TRUE(steps.ends_with(c.end)) << steps;
    works = [](auto&) { return true; };
    EXPECT_EQ(get("https://a/"), "x") << "a cancel is forgotten once it was obeyed";
  }
  for (int count = 0, at = 1; at <= 3; ++at, count = 0) {
    ui.on_events = [&] {
      if (++count == at) http.cancel();
    };
    EXPECT_EQ(get("http://a/", {{ok + "x", "y"}}), "");
    EXPECT_TRUE(steps.ends_with("|close|HTTP: Download canceled|")) << steps;
    EXPECT_EQ(count, at) << "no event and no read comes after the cancel";
  }
}

TEST_F(Http, EveryExcessEndsTheTransferAndIsLogged) {
  const Reads again = {"HTTP/1.1 302 Found\r\nLocation: /again\r\n\r\n"};
  const auto excess = [&](const std::string& url, const std::vector<Reads>& answers) {
    log.list.clear();
    EXPECT_EQ(get(url, answers), "");
    EXPECT_TRUE(steps.ends_with("close|")) << steps.substr(steps.size() - 80);
    EXPECT_EQ(get("http://a/"), "x") << "the next request is as good as ever";
    return log.list;
  };
  const std::string wide(6'000'000, '\x80');  // three bytes each when decoded
  const std::string given_up = "The answer from a was given up: ";
  EXPECT_EQ(excess("http://a/", {{ok, wide, wide}}), std::vector{given_up + "its body is longer than 33554432 bytes"});
  EXPECT_EQ(excess("http://a/", {{"HTTP/1.1 200 OK\r\n" + std::string(70'000, 'x')}}),
            std::vector{given_up + "its header is longer than 65536 bytes"});
  EXPECT_EQ(excess("http://a/", std::vector<Reads>(51, again)),
            std::vector{given_up + "it redirects more than 50 times"});
  std::vector<Reads> most(50, again);
  most.push_back({ok + "x"});
  EXPECT_EQ(get("http://a/", most), "x");

  http.limits.body = 4;
  http.limits.header = ok.size() - 4;
  EXPECT_EQ(get("http://a/", {{ok + "abcd"}}), "abcd");
  EXPECT_EQ(excess("http://" + std::string(300, 'h') + "/", {{ok + "abcde"}}),
            std::vector{"The answer from " + std::string(253, 'h') + " was given up: its body is longer than 4 bytes"});
  http.limits.header -= 1;
  EXPECT_EQ(get("http://a/", {{ok + "x"}}), "");
  EXPECT_TRUE(log.list.back().ends_with("its header is longer than 14 bytes"));
  http.limits = {.time = std::chrono::seconds(1)};
  works = [&](const std::string& call) {
    if (call == "read 2048") std::this_thread::sleep_for(http.limits.time);  // a service that takes its time
    return true;
  };
  EXPECT_EQ(get("http://a/", {{ok + "x", {}}}), "");
  EXPECT_EQ(log.list.back(), given_up + "it takes longer than 1 seconds");
}

}  // namespace
}  // namespace quorvel::testing
