#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "platform/system.h"
#include "queue/intake.h"
#include "temporary_folder.h"

namespace quorvel {
namespace {

class NoUi : public UserInterface {
  void add_row(int, const std::string&) override {}
  void update_row(int, const RowUpdate&) override {}
  void show_filters(const std::vector<ListRow>&) override {}
  void show_exceptions(const std::vector<ListRow>&) override {}
  void process_events() override {}
  std::optional<bool> ask_confirmation(const ConfirmationQuestion&) override { return true; }
  void show_message(int, const std::string&, const std::string&, MessageIcon) override {}
  void arm_start_timer() override {}
  void close() override {}
};

struct NoLog : Log {
  void debug_log(std::string_view, LogLevel) override {}
};

/// A folder of this many files, one in ten of another type, taken into an empty queue.
void intake(benchmark::State& state) {
  const testing::TemporaryFolder folder;
  for (int i = 0; i < state.range(0); ++i) {
    std::ofstream(folder / ("big.show.s01e" + std::to_string(i) + (i % 10 == 0 ? ".nfo" : ".mkv")));
  }
  const std::unique_ptr<Files> files = system_files();
  const Settings settings;
  NoUi ui;
  NoLog log;
  while (state.KeepRunning()) {
    WorkQueue queue;
    Intake taking(queue, settings, *files, ui, log, [] { return false; });
    benchmark::DoNotOptimize(taking.take(folder.path(), true).queued);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(intake)->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvel
