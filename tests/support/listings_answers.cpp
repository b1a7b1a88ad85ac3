#include <algorithm>
#include <atomic>
#include <fstream>
#include <memory>
#include <utility>

#include "listings_service.h"

namespace quorvel::testing {
namespace {

const std::string kBlankLine = "\r\n\r\n";

std::string answer_of(const std::string& status, const std::string& body) {
  return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
         kBlankLine + body;
}

/// The file's bytes; nothing when there is none or the name would lead out of the folder.
std::optional<std::string> recorded(const std::filesystem::path& folder, const std::string& name) {
  std::ifstream file(folder / (name + ".json"), std::ios::binary);
  if (name.find('/') != std::string::npos || name.find("..") != std::string::npos || !file) return {};
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// A script that sends what `change` makes of the good answer, in one piece.
template <class Change>
Script whole(Change change) {
  return [change](const std::string&, const std::string& good) { return std::vector<Piece>{{change(good)}}; };
}

}  // namespace

std::string ListingsService::base() const {
  return (tls_ ? "https://localhost:" : "http://127.0.0.1:") + std::to_string(port_);
}

std::vector<std::string> ListingsService::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void ListingsService::misbehave(Script script) {
  const std::lock_guard lock(mutex_);
  script_ = std::move(script);
}

std::string ListingsService::good_answer(const std::string& target) const {
  const std::string search = "/search/shows?q=", shows = "/shows/", episodes = "/episodes";
  std::optional<std::string> body;
  if (target.starts_with(search)) {
    body = recorded(shows_ / "search", target.substr(search.size())).value_or("[]");
  } else if (target.starts_with(shows) && target.ends_with(episodes)) {
    const std::string rest = target.substr(shows.size());
    body = recorded(shows_ / "episodes", rest.substr(0, rest.rfind(episodes)));
  }
  return body ? answer_of("200 OK", *body) : answer_of("404 Not Found", R"({"name":"Not Found","status":404})");
}

Script scripts::redirect_to(const std::string& location, int status) {
  const std::string answer = "HTTP/1.1 " + std::to_string(status) + " Moved\r\nLocation: " + location + kBlankLine;
  const auto first = std::make_shared<std::atomic<bool>>(true);
  return whole([=](const std::string& good) { return first->exchange(false) ? answer : good; });
}

Script scripts::status(int code) {
  const std::string line = "HTTP/1.1 " + std::to_string(code) + " As Told";
  return whole([line](const std::string& good) { return line + good.substr(good.find("\r\n")); });
}

Script scripts::truncated(std::size_t bytes_of_body) {
  return whole([=](const std::string& good) { return good.substr(0, good.find(kBlankLine) + 4 + bytes_of_body); });
}

Script scripts::split_at(std::size_t position) {
  return [=](const std::string&, const std::string& good) {
    const std::size_t cut = std::min(position, good.size());
    return std::vector<Piece>{{good.substr(0, cut)}, {good.substr(cut), std::chrono::milliseconds(20)}};
  };
}

Script scripts::no_blank_line() {
  return whole([](const std::string& good) { return good.substr(0, good.find(kBlankLine) + 2); });
}

Script scripts::slow(std::chrono::milliseconds a_byte) {
  return [=](const std::string&, const std::string& good) {
    std::vector<Piece> pieces;
    for (const char byte : good) pieces.push_back({std::string(1, byte), a_byte});
    return pieces;
  };
}

Script scripts::body(const std::string& bytes) {
  return whole([=](const std::string&) { return answer_of("200 OK", bytes); });
}

}  // namespace quorvel::testing
