#pragma once

#include <utility>

#include "fake_listings.h"
#include "platform/web_client.h"

namespace quorvel::testing {

/// The listings service behind a web client that no network is needed for. It answers what it was told to, and from the
/// recorded answers everything else, and keeps every request.
struct FakeWeb : WebClient {
  std::map<std::string, std::string> bodies;  // by the request behind the service's address
  std::vector<int> refusals;                  // statuses of the next answers
  std::vector<std::string> requests;
  std::function<void()> before_answer = nullptr;  // done before the next one

  /// Of two shows of one name, 8 with all that can be told and 9 with nothing else.
  void knows_part_time() {
    bodies["/search/shows?q=part+time"] =
        R"([{"show":{"id":8,"name":"Part Time","url":"https://x/8","premiered":"2010-01-01",
                     "network":{"name":"Harbour TV","country":{"code":"US"}}}},{"show":{"id":9,"name":"Part Time"}}])";
    for (const std::string id : {"8", "9"}) {
      bodies["/shows/" + id] = R"({"name":"Part Time","id":)" + id + "}";
      bodies["/shows/" + id + "/episodes"] =
          R"([{"season":1,"number":1,"name":"A)" + id + R"("},{"season":1,"number":2,"name":"B"}])";
    }
  }

  WebAnswer get(const std::string& url) override {
    const std::string request = url.substr(url.find('/', url.find("//") + 2));
    requests.push_back(request);
    if (const auto act = std::exchange(before_answer, nullptr)) act();
    if (!refusals.empty()) {
      const int status = refusals.front();
      refusals.erase(refusals.begin());
      if (status == 0) throw Failure("No connection to the service");
      return {status, "", ""};
    }
    if (bodies.contains(request)) return {200, bodies[request], ""};
    const std::string answer = listings_answer("GET " + request + " HTTP/1.1");
    return {std::stoi(answer.substr(9)), answer.substr(answer.find("\r\n\r\n") + 4), ""};
  }
};

}  // namespace quorvel::testing
