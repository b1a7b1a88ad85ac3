#include "naming/quality.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "naming/reader/reading.h"
#include "text/case.h"
#include "text/numbers.h"

namespace quorvel {
namespace {

/// "1080p", "1920x1080" (also with the sign for times, which ends in this byte), "4K".
int lines_in(const std::string& resolution) {
  constexpr std::pair<std::string_view, int> names[] = {{"8k", 4320}, {"4k", 2160},  {"uhd", 2160},
                                                        {"2k", 1440}, {"qhd", 1440}, {"fhd", 1080}};
  for (const auto& [name, lines] : names) {
    if (resolution == name) return lines;
  }
  return leading_number(std::string_view(resolution).substr(resolution.find_first_of("x\x97") + 1));
}

/// From the worst to the best, each as words that it goes by, with blanks around each. Who puts episodes on the web
/// says no more than that.
constexpr auto sources = std::to_array<std::string_view>({
    " cam hdcam ts telesync tc telecine scr dvdscr ppv ppvrip ",
    " vhs vhsrip ",
    " tv tvrip sdtv pdtv dsr dsrip dsp satrip dtvrip dvb dvbrip dthrip stv raw ",
    " dvd dvd5 dvd9 dvdr dvdrip dvdrips dvdraw dl dlrip iso ",
    " hdtv ahdtv uhdtv hdtvrip iptv iptvrip tvhd hdtv720p hlg ",
    " hdrip webrip webdlrip vod vodrip microhd ",
    " web webdl webhd webhdrip itunes dl720p amzn nflx dsnp hmax hulu atvp pcok crav stan pmtp amazonhd netflixhd cr "
    "nf ip "
    "itv abc cbs nbc cw adn vrv funi hidive bilibili baha bglobal amazon netflix cc ",
    " bluray blueray blu br bd bdrip bdrips brrip bdmv bd25 bd50 bd66 bd100 hddvd uhdrip bdremux remux bluray1080p ",
});

int source_in(std::string source) {
  std::erase(source, '-');
  const std::string word = " " + source + " ";
  const auto* const found =
      std::ranges::find_if(sources, [&](std::string_view words) { return words.find(word) != std::string_view::npos; });
  return found == sources.end() ? 0 : static_cast<int>(found - sources.begin()) + 1;
}

}  // namespace

std::partial_ordering Quality::operator<=>(const Quality& other) const {
  if (lines != other.lines) {
    return lines == 0 || other.lines == 0 ? std::partial_ordering::unordered : lines <=> other.lines;
  }
  if (source == 0 || other.source == 0) return std::partial_ordering::unordered;
  return source <=> other.source;
}

Quality quality_in(std::string_view path) {
  const Reading reading = read_name(path);
  return {lines_in(lower_case(reading.resolution)), source_in(lower_case(reading.source))};
}

}  // namespace quorvel
