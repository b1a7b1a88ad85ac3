#include <gtest/gtest.h>

#include "session_fixture.h"
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

/// Plays the part of a server, read by read, where a real one could not be held to such exact reads.
class ScriptedSocket : public SocketControl {
 public:
  std::vector<std::string> reads;
  std::string sent, connected;
  bool no_tls = false, refuses = false;
  int most_writes = 100;

  void set_timeout(int seconds) override { EXPECT_EQ(seconds, 4); }
  void set_secure(bool secure) override {
    if (secure && no_tls) throw Failure("no TLS");
    connected += secure ? "tls " : "tcp ";
  }
  int connect(const std::string& host, int port) override {
    connected += host + ":" + std::to_string(port) + " ";
    return refuses ? 7 : 0;
  }
  std::ptrdiff_t write(std::string_view bytes) override {
    if (--most_writes < 0) return 1;
    sent += bytes;
    return static_cast<std::ptrdiff_t>(bytes.size());
  }
  std::ptrdiff_t read(char* buffer, std::size_t size) override {
    EXPECT_EQ(size, 2048u);
    if (reads.empty()) return 0;
    const std::string bytes = reads.front();
    reads.erase(reads.begin());
    if (bytes == "error") return -1;
    return static_cast<std::ptrdiff_t>(bytes.copy(buffer, size));
  }
  void disconnect() override { connected += "closed "; }
  int last_error() const override { return 28; }
  std::string last_error_string() const override { return "late"; }
};

struct Http : ::testing::Test {
  ScriptedSocket socket;
  Events events;
  FakeUi ui{events};
  Lines log;
  HttpClient http{socket, ui, log};
  std::string status;
  Http() {
    http.on_status = [this](std::string_view message) { status = message; };
  }
  std::string get(std::string url, std::vector<std::string> reads) {
    socket.reads = std::move(reads);
    socket.connected.clear();
    return http.GetData(url, "");
  }
};

TEST_F(Http, AddressesAreTakenApart) {
  const struct {
    const char* url;
    bool usable;
    Address address;
  } cases[] = {{" http://host/a/b?x=1 ", true, {false, "host", 80, "/a/b?x=1", "b"}},
               {"https://host:8443", true, {true, "host", 8443, "/", "/"}},
               {"HTTPS://host/", true, {true, "host", 443, "/", "/"}},
               {"/only/path", true, {false, "host", 80, "/only/path", "path"}},
               {"ftp://host/", false, {}},
               {"http://host:abc/", false, {}},
               {"http://host:99999/", false, {}}};
  for (const auto& c : cases) {
    Address found;
    EXPECT_EQ(http.spliturl(c.url, found), c.usable) << c.url;
    if (!c.usable) continue;
    EXPECT_EQ(std::tie(found.secure, found.host, found.port, found.path, found.file),
              std::tie(c.address.secure, c.address.host, c.address.port, c.address.path, c.address.file))
        << c.url;
  }
  Address none;
  EXPECT_FALSE(HttpClient(socket, ui, log).spliturl("/path", none)) << "no host was ever named";
  EXPECT_EQ(HttpClient::URLEncode("A z9-é€日\x01"), "A+z9%2D%E9%80%3F%01");
}

TEST_F(Http, RequestsAreExactToTheByte) {
  std::string url = "http://host:81/a?q=b";
  http.GetData(url, "");
  EXPECT_EQ(socket.sent, "GET /a?q=b HTTP/1.0\r\nHost: host\r\nAccept: */*\r\n\r\n");
  socket.sent.clear();
  http.GetData(url, "k=v");
  EXPECT_EQ(socket.sent, "GET /a?q=b HTTP/1.0\r\nHost: host\r\nAccept: */*\r\nCookie: k=v\r\n\r\n");
  socket.sent.clear();
  http.PostData(url, "a=b", "");
  EXPECT_EQ(socket.sent,
            "POST /a?q=b HTTP/1.0\r\nHost: host\r\nAccept: */*\r\nContent-Type: application/x-www-form-urlencoded\r\n"
            "Content-Length: 3\r\n\r\na=b");
}

TEST_F(Http, AnswersGiveTheirBodyOrNothing) {
  const struct {
    std::vector<std::string> reads;
    const char *body, *status;
  } cases[] = {
      {{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab", "\xE9"}, "abé", "HTTP: Downloaded 3 bytes"},
      {{"HTTP/1.1 401 No\r\n\r\nwho"}, "who", "HTTP: Downloaded 3 bytes"},
      {{"HTTP/1.1 404 No\r\n\r\nx"}, "", "HTTP: Unhandled return code (404)"},
      {{"HTTP/1.1 302 Found\r\n\r\nx"}, "", "HTTP: Unhandled return code (302)"},
      {{"HTTP/1.1 304 Same\r\nLocation: http://b/\r\n\r\n"}, "", "HTTP: Unhandled return code (304)"},
      {{"nonsense\r\n\r\nx"}, "", "HTTP: Unhandled return code (0)"},
      {{"HTTP/1.1 200 OK\r\n"}, "", "HTTP: Downloaded 0 bytes"},
      {{}, "", "HTTP: Downloaded 0 bytes"},
      {{"HTTP/1.1 200 OK\r\n\r\nx", "error"}, "", "HTTP: Unable to receive data from server (error 28late)"},
      // The first part of the body is measured by the read that ends the header, so these bytes are lost.
      {{"HTTP/1.1 200", " OK\r\n\r\nabcdefghijklmnop", "q"}, "mnopq", "HTTP: Downloaded 5 bytes"},
      {{"HTTP/1.1 200 OK\r\n", "\r\nx"}, "", ""},
      {{"HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\nx"}, "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(get("http://a/", c.reads), c.body) << ::testing::PrintToString(c.reads);
    if (*c.status != '\0') {
      EXPECT_EQ(status, c.status);
    } else {
      EXPECT_TRUE(status.starts_with("Error in modHTTP.GetData()\r\nError Code: ")) << status;
    }
    EXPECT_TRUE(socket.connected.ends_with("closed ")) << socket.connected;
  }
}

TEST_F(Http, RedirectsAreFollowedAndABarePathStaysWithTheHost) {
  const std::string good = "HTTP/1.1 200 OK\r\n\r\nx";
  EXPECT_EQ(get("http://a:81/", {"HTTP/1.1 301 Moved\r\nX: y\r\nLOCATION:  https://b:82/c \r\n\r\n",
                                 "HTTP/1.1 303 Other\r\nLocation: /d\r\n\r\n", good}),
            "x");
  EXPECT_EQ(socket.connected, "tcp a:81 closed tls b:82 closed tls b:80 closed ");
  std::string url = "http://a/";
  socket.reads = {"HTTP/1.1 300 Many\r\nLocation: ftp://b/\r\n\r\n"};
  EXPECT_EQ(http.GetData(url, ""), "");
  EXPECT_EQ(url, "ftp://b/");
  EXPECT_EQ(status, "HTTP: The specified address is invalid");
}

TEST_F(Http, FailuresOnTheWayAreTold) {
  socket.refuses = true;
  EXPECT_EQ(get("http://a/", {}), "");
  EXPECT_EQ(status, "HTTP: Unable to connect to a (error 28)");
  EXPECT_EQ(socket.connected, "tcp a:80 ");
  socket.refuses = false;
  socket.no_tls = true;
  EXPECT_EQ(get("https://a/", {}), "");
  EXPECT_EQ(status, "HTTP: Unable to initialize security interface");
  socket.most_writes = 2;
  EXPECT_EQ(get("http://a/", {}), "");
  EXPECT_EQ(status, "HTTP: Unable to send request to a");
}

TEST_F(Http, ACancelEndsTheTransferAndIsThenForgotten) {
  http.cancel();
  EXPECT_EQ(get("http://a/", {"HTTP/1.1 200 OK\r\n\r\nx"}), "");
  EXPECT_EQ(status, "HTTP: Download canceled");
  EXPECT_EQ(get("http://a/", {"HTTP/1.1 200 OK\r\n\r\nx"}), "x");
  int events = 0;
  ui.on_events = [&] {
    if (++events == 2) http.cancel();  // after the first read
  };
  EXPECT_EQ(get("http://a/", {"HTTP/1.1 200 OK\r\n\r\nx", "y"}), "");
}

}  // namespace
}  // namespace quorvel::testing
