#include "listings_service.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <utility>

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

ListingsService::ListingsService(const std::optional<TlsIdentity>& tls, std::uint16_t port,
                                 const std::filesystem::path& shows)
    : shows_(std::filesystem::canonical(shows.empty() ? QUORVEL_SHOWS_DIR : shows)),
      secure_(tls.has_value()),
      listener_(port, tls),
      thread_(&ListingsService::serve, this) {}

ListingsService::~ListingsService() {
  std::unique_lock lock(mutex_);
  stopping_ = true;
  listener_.stop();  // whatever the thread waits for on either socket ends by this
  if (client_) client_->cut();
  lock.unlock();
  thread_.join();
}

void ListingsService::serve() {
  serve_undisturbed();
  for (std::unique_lock lock(mutex_); !stopping_; client_.reset()) {
    lock.unlock();
    const std::shared_ptr<Peer> client = listener_.accept();
    lock.lock();
    client_ = client;
    if (stopping_ || client == nullptr) continue;
    lock.unlock();
    converse(*client);
    lock.lock();
  }
}

void ListingsService::converse(Peer& client) {
  std::string request;
  for (char byte = 0; !request.ends_with(kBlankLine); request += byte) {
    if (!client.read(byte)) return;
  }
  const std::string target = request.starts_with("GET ") ? request.substr(4, request.find_first_of(" \r", 4) - 4) : "";
  const std::string good = good_answer(target);
  std::unique_lock lock(mutex_);
  requests_.push_back(request);
  const Script script = script_;
  lock.unlock();
  for (const auto& [bytes, pause, times] : script ? script(target, good) : std::vector<Piece>{{good}}) {
    for (std::size_t i = 0; i < times; ++i) {
      // A client that hung up ends the pause too, so that the next one is not kept waiting.
      if (pause.count() > 0 && client.hangs_up_within(pause)) return;
      if (!client.write(bytes)) return;
    }
  }
}

std::string ListingsService::base() const {
  return (secure_ ? "https://localhost:" : "http://127.0.0.1:") + std::to_string(port());
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
