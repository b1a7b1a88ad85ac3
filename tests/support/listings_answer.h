#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace quorvel::testing {

/// What a request asks for, such as "/search/shows?q=x"; empty unless it is a GET.
inline std::string target_of(const std::string& request) {
  return request.starts_with("GET ") ? request.substr(4, request.find(' ', 4) - 4) : "";
}

/// The whole right answer to a request: for "/search/shows?q=RAW" the file search/RAW.json below the folder, or "[]"
/// without such a file; for "/shows/ID/episodes" episodes/ID.json; 404 for everything else.
inline std::string listings_answer(const std::string& request, const std::filesystem::path& shows = QUORVEL_SHOWS_DIR) {
  const std::string search = "/search/shows?q=", show = "/shows/", episodes = "/episodes";
  std::string target = target_of(request), status = "200 OK", body = "[]";
  const bool searches = target.starts_with(search);
  if (searches) {
    target.replace(0, search.size(), "search/");
  } else if (target.starts_with(show) && target.ends_with(episodes)) {
    target = episodes.substr(1) + "/" + target.substr(show.size(), target.rfind('/') - show.size());
  }
  if (std::ifstream file(shows / (target + ".json"), std::ios::binary);
      file && target[0] != '/' && target.find("..") == std::string::npos) {
    body.assign(std::istreambuf_iterator<char>(file), {});
  } else if (!searches) {
    status = "404 Not Found", body = R"({"name":"Not Found","status":404})";
  }
  return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

}  // namespace quorvel::testing
