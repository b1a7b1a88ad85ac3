#include <benchmark/benchmark.h>

#include "naming/episode_patterns.h"
#include "text/case.h"
#include "text/title.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

// The early, the late, the failing and the non-ASCII case.
constexpr const char* names[] = {"The.Harbour.Lights.S02E05.720p.HDTV.x264-GROUP.mkv", "the harbour lights 1x03.avi",
                                 "Some Documentary About Ships and the Sea (no number).avi",
                                 "Déjà Vu à la Carte - 1x03 - Épisode.mkv"};

void detection(benchmark::State& state) {
  const std::string name = names[state.range(0)];
  while (state.KeepRunning()) benchmark::DoNotOptimize(detect_in_file(lower_case(name)));
  state.SetLabel(name);
}
BENCHMARK(detection)->DenseRange(0, 3);

void cleaning(benchmark::State& state) {
  const std::string title = "Tom &amp; Jerry: \\\"The Movie\\\" &#39;Part 2&#39;";
  while (state.KeepRunning()) benchmark::DoNotOptimize(cleantitle(title));
}
BENCHMARK(cleaning);

void hostile_wildcard(benchmark::State& state) {
  const std::string subject(static_cast<std::size_t>(state.range(0)), 'a');
  std::string pattern;
  for (int i = 0; i < 20; ++i) pattern += "*a";
  while (state.KeepRunning()) benchmark::DoNotOptimize(matches(subject, pattern + "b"));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(hostile_wildcard)->RangeMultiplier(4)->Range(64, 4096)->Complexity(benchmark::oN);

}  // namespace
}  // namespace quorvel
