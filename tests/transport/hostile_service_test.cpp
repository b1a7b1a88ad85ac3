#include <gtest/gtest.h>

#include "child_process.h"
#include "file_tools.h"
#include "naming/service_names.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

const std::string ok = "HTTP/1.1 200 OK\r\n\r\n";

constexpr std::chrono::milliseconds at_once{0};

Script always(const std::vector<Piece>& pieces) {
  return [=](const std::string&, const std::string&) { return pieces; };
}

std::string shows_called(const std::string& name) {
  return "[{\"show\":{\"id\":5,\"url\":\"u\",\"name\":\"" + name + "\",}}]";
}

struct HostileService : ::testing::Test, TestSession {
  HostileService() { start(); }
  std::string fetched_log(const Script& script) {
    service.misbehave(script);
    const std::size_t before = session.log.lines().size();
    std::string url = service.base() + "/search/shows?q=the+harbour+lights";
    EXPECT_EQ(session.http.GetData(url, ""), "");
    return log(before);
  }
};

TEST_F(HostileService, EveryExcessEndsTheRequestAndIsTold) {
  const std::string given_up = "The answer from 127.0.0.1 was given up: ";
  const std::string block(1U << 20U, '\x80');  // three bytes each when decoded
  EXPECT_EQ(fetched_log(always({{ok}, {block, at_once, 1000}})), given_up + "its body is longer than 33554432 bytes");
  EXPECT_EQ(fetched_log(always({{"HTTP/1.1 200 OK\r\n"}, {std::string(1000, 'x') + "\r\n", at_once, 1000}})),
            given_up + "its header is longer than 65536 bytes");
  EXPECT_EQ(fetched_log(always({{"HTTP/1.1 302 Found\r\nLocation: " + service.base() + "/again\r\n\r\n"}})),
            given_up + "it redirects more than 50 times");
  session.http.limits.time = std::chrono::seconds(1);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(fetched_log(always({{ok}, {"x", std::chrono::milliseconds(20), 5000}})),
            given_up + "it takes longer than 1 seconds");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  service.misbehave({});
  EXPECT_EQ(session.search.searchtv("the harbour lights", false)->id, 101) << "the next request is as good as ever";
}

TEST_F(HostileService, ACloseAtAnyByteGivesTheWholeAnswerOrNone) {
  std::string whole;
  service.misbehave([&](const std::string&, const std::string& good) -> std::vector<Piece> {
    whole = good;
    return {{good}};
  });
  const std::string name = "the harbour lights";
  ASSERT_TRUE(session.search.searchtv(name, false));
  int found = 0;
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    service.misbehave(always({{whole.substr(0, cut)}}));
    const std::optional<Show> show = session.search.searchtv(name, false);
    if (!show) continue;
    ++found;
    ASSERT_EQ(show->name, "The Harbour Lights") << cut;
  }
  EXPECT_EQ(found, 4) << "only a cut behind an inner list looks like an end, and the first show is whole by then";
}

TEST_F(HostileService, TheProgramStaysSmallWhateverItIsSent) {
  const auto fill = [](const std::string& start, const std::string& middle, std::size_t bytes) {
    std::string block;
    while (block.size() < 60'000) block += middle;
    return std::vector<Piece>{{ok + start}, {block, at_once, bytes / block.size()}, {"]"}};
  };
  constexpr std::size_t much = 31U << 20U;
  const std::string wide(1U << 20U, '\x80');  // three bytes each when decoded
  const std::vector<Piece> show = {{ok + shows_called("X")}}, none;
  // Each fills the memory in its own way: by many episodes, long ones, wide characters, numbers, addresses, marks.
  const std::pair<std::vector<Piece>, std::vector<Piece>> answers[] = {
      {show, fill("[", R"({"id":1,"season":1,"name":"","number":1,"airdate":"",})", 7U << 20U)},
      {show, fill("[", R"({"id":1,"season":1,"number":1,"url":"name":"airdate":")" + std::string(60'000, 'x') + "\",}",
                  much)},
      {show,
       fill("[", R"({"id":1,"season":2,"number":1,"name":")" + wide.substr(0, 20'000) + R"(","airdate":"2015-01-01",})",
            2U << 20U)},
      {show, fill("[", "\"id\":", much)},
      {show, fill("[\"id\"", wide, 10U << 20U)},
      {fill("[\"show\"\"id\":", wide, 10U << 20U), none},
      {fill("[\"show\"\"id\":1,\"url\":", wide + ",", 10U << 20U), none},
      {fill("[\"show\"", "\"id\":", much), none},
      {fill("[", wide, 20U << 20U), none}};
  const std::string file = folder / "in/x.s01e01.avi";
  write("in/x.s01e01.avi", "x");
  for (const auto& [search, listings] : answers) {
    service.misbehave([&, search = search, listings = listings](const std::string& target, const std::string&) {
      return target.starts_with("/search") ? search : listings;
    });
    std::filesystem::remove_all(path_of(data_folder_of(folder / "data")));
    ChildProcess program({.program = QUORVEL_CLI,
                          .arguments = {file},
                          .environment = user_at(folder / "data", service.base()),
                          .out = folder / "out"});
    EXPECT_EQ(program.status(), 1) << contents(folder / "out");
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(program.most_memory(), 100U << 20U) << search[0].bytes << (listings.empty() ? "" : listings[0].bytes);
#endif
    EXPECT_EQ(contents(file), "x");
  }
}

TEST_F(HostileService, MarksThatMisleadTheEyeAreTakenOutOfNames) {
  files->create_folder(folder / "target");
  const auto rename_as = [&](const std::string& show, const std::string& title) {
    service.misbehave([=](const std::string& target, const std::string&) -> std::vector<Piece> {
      return {
          {ok + (target.starts_with("/search") ? shows_called(show)
                                               : "[{\"id\":1,\"url\":\"u\",\"name\":\"" + title +
                                                     "\",\"season\":1,\"number\":1,\"airdate\":\"2015-01-01\",}]")}};
    });
    session.settings.nocache = true;
    const int index = add("x" + std::to_string(session.queue.count() + 2) + ".s01e01.avi");
    session.processor.process_queue();
    return item(index).state == QueueState::Done ? item(index).new_name : item(index).error_text;
  };
  EXPECT_EQ(rename_as("A\x1B[2J\x07&#13;b", "x\xE2\x80\xAEiva.exe\x7F\xE2\x81\xA7"), "A2Jb - 1x01 - xiva.exe.avi");
  EXPECT_TRUE(logged("Removed 3 control characters from the service's name \"A2Jb\""));
  EXPECT_TRUE(logged("Removed 3 control characters from the service's name \"xiva.exe\""));
  // The lone marks of right-to-left scripts and a show's undecoded bytes are sane.
  EXPECT_EQ(rename_as("\xD0\x9D", "\xD7\x90\xE2\x80\x8Fx"), "Ð\u009D - 1x01 - א\u200Fx.avi");
  // Three halves of characters would have become the bytes of a mark.
  EXPECT_EQ(rename_as("S", "\xED\xB3\xA2\xED\xB2\x80\xED\xB2\xAE"), "S - 1x01 - í³¢í²€í²®.avi");
}

TEST(ServiceNames, WhatTheSystemTakesForSomethingElseIsRefused) {
  for (const char* name :
       {"con", "CON", "Con.s01.avi", "nul .txt", "aux", "LPT1.a", "com\u00B2", "CONOUT$", "...", ". ."}) {
    EXPECT_TRUE(name_trouble(name, '\\')) << name;
    EXPECT_FALSE(name_trouble(name, '/')) << name;
  }
  for (const char* name :
       {"Conan", "The Con", "com", "com12.avi", "lpt", "", "Agents of S.H.I.E.L.D.", "a..b", ".avi"}) {
    EXPECT_FALSE(name_trouble(name, '\\')) << name;
  }
  EXPECT_TRUE(name_trouble("..", '/') && name_trouble(".", '\\'));
  MaskValues values{"Con", 1, 2, ".."};
  EXPECT_EQ(mask_trouble("D:\\..\\[show]\\x", values, expand_folder, '\\'), "\"Con\" is the name of a device");
  EXPECT_EQ(mask_trouble("[show] - [title]", values, expand_name, '\\'), std::nullopt);
  EXPECT_EQ(mask_trouble("../a/[title]", values, expand_name, '/'), "\"..\" stands for a folder");
  EXPECT_EQ(mask_trouble("../con/[s]", values, expand_folder, '/'), std::nullopt);
}

}  // namespace
}  // namespace quorvel::testing
