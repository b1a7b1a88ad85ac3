#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "child_process.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

using Texts = std::vector<std::string>;
using Channel = std::unique_ptr<InstanceChannel>;

/// Copies of the program, of which the running one is this thread's.
struct ChannelTest : ::testing::Test {
  const TemporaryFolder folder;
  const Variable runtime{"XDG_RUNTIME_DIR", folder.path()};
  const std::string name = "Quorvel test " + folder.name();
  const EventLoop events{name};
  Channel running = copy();
  Texts taken;
  std::function<void()> on_text = [] {};

  Channel copy(std::chrono::milliseconds patience = std::chrono::minutes(1)) const {
    return system_instance_channel(name, name, patience);
  }
  void receive() {
    running->receive([this](const std::string& text) {
      taken.push_back(text);
      on_text();
    });
  }
  /// On a thread of its own, as another copy would; this one answers meanwhile.
  void meanwhile(const std::function<void()>& act) const {
    std::atomic<bool> done = false;
    std::thread other([&] {
      act();
      done = true;
    });
    while (!done) events.process();
    other.join();
  }
  static std::string reason(InstanceChannel& from, const std::string& text) {
    try {
      from.send(text);
      return "";
    } catch (const Failure& failure) {
      return failure.what();
    }
  }
};

TEST_F(ChannelTest, OneCopyRunsAndTakesAllTextsWholeAndInOrder) {
  EXPECT_TRUE(running->become_running_copy() && running->become_running_copy());
  receive();
  const Texts texts = {"QV|PI|C=",
                       "QV|PI|C=C:\\café.mkv",
                       std::string(254, 'x'),
                       std::string(255, 'y'),
                       "QV|PI|C=日本 \xED\xA0\x80",
                       std::string(1'000'000, 'z')};
  meanwhile([&] {
    const Channel second = copy();
    EXPECT_FALSE(second->become_running_copy());
    for (const std::string& text : texts) second->send(text);
    EXPECT_NE(reason(*second, std::string((16U << 20) + 1, 'x')), "");
  });
  EXPECT_TRUE(taken == texts);
  running->stop();
  EXPECT_FALSE(copy()->become_running_copy()) << "it finishes its work";
  running.reset();
  EXPECT_TRUE(copy()->become_running_copy());
}

TEST_F(ChannelTest, OfManyStartedAtOnceOneRuns) {
  std::atomic<bool> start = false;
  std::atomic<int> count = 0;
  std::vector<Channel> copies(20);
  std::vector<std::thread> threads;
  for (Channel& each : copies) {
    each = copy();
    threads.emplace_back([&] {
      while (!start) std::this_thread::yield();
      count += each->become_running_copy() ? 1 : 0;
    });
  }
  start = true;
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(count, 1);
}

TEST_F(ChannelTest, ASenderWaitsForABusyCopyAndLearnsThatNobodyTookItsText) {
  EXPECT_TRUE(running->become_running_copy());
  receive();
  std::thread patient([&] { EXPECT_EQ(reason(*copy(), "kept"), ""); });
  std::thread impatient([&] {
    const std::string why = reason(*copy(std::chrono::milliseconds(300)), "lost");
    EXPECT_TRUE(why.starts_with("Quorvel is already running but d")) << why;
  });
  impatient.join();
  EXPECT_TRUE(taken.empty());  // no events have run meanwhile
  while (std::find(taken.begin(), taken.end(), "kept") == taken.end()) events.process();
  patient.join();
  on_text = [] { throw Failure("refused"); };
  meanwhile([&] { EXPECT_NE(reason(*copy(std::chrono::milliseconds(300)), "refused"), ""); });
  on_text = [this] {  // another text, and the end of the channel, while a text is handled
    if (taken.back() == "inner") return running.reset();
    meanwhile([&] { EXPECT_EQ(reason(*copy(), "inner"), ""); });
  };
  meanwhile([&] { EXPECT_EQ(reason(*copy(), "outer"), ""); });
  EXPECT_EQ(taken.back(), "inner");
  EXPECT_NE(reason(*copy(), "x"), "") << "nobody is there";
}

}  // namespace
}  // namespace quorvel::testing
