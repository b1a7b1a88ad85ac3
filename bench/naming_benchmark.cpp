#include <benchmark/benchmark.h>

#include "naming/episode_patterns.h"
#include "naming/reader/reading.h"
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

// The common, the fan group's, the one that only the last rules fit, the one with folders, the one with none of it.
constexpr const char* paths[] = {
    "The.Harbour.Lights.S02E05.720p.HDTV.x264-GROUP.mkv",
    "[Kites]_Paper_Moon_-_12v2_(1280x720_H.264_AAC)_[0A1B2C3D].mkv",
    "the.harbour.lights.205.the.pilot.boat.avi",
    "/home/anna/Videos/The Harbour Lights (2005)/Season 02/The Harbour Lights - S02E05-E06 - The Pilot Boat.mkv",
    "Some Documentary About Ships and the Sea (no number).avi",
    "Маяк.2.сезон.5.серия.Лоцман.avi"};

void reading(benchmark::State& state) {
  const std::string path = paths[state.range(0)];
  while (state.KeepRunning()) benchmark::DoNotOptimize(read_name(path));
  state.SetLabel(path);
}
BENCHMARK(reading)->DenseRange(0, 5);

void reading_hostile_names(benchmark::State& state) {
  constexpr const char* pieces[] = {"s1e", "1x2-", "(a", "2010 ", "1 of ", " / a"};
  std::string path;
  while (path.size() < static_cast<std::size_t>(state.range(1))) path += pieces[state.range(0)];
  while (state.KeepRunning()) benchmark::DoNotOptimize(read_name(path));
}
BENCHMARK(reading_hostile_names)->ArgsProduct({{0, 1, 2, 3, 4, 5}, {1024, 16384}});

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
