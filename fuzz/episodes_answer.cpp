#include "fuzz_support.h"
#include "listings/episode_listings.h"
#include "text/failure.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Service service(fuzz::text_of(data, size));
  fuzz::MemoryFiles files;
  const std::string work_dir = "/w/";
  CacheFolder cache(files, work_dir);
  KnownShows known(cache);
  EpisodeListings listings(service.http, cache, known, service.log, service.clock, "http://127.0.0.1");
  try {
    const auto found = listings.getlistings({5, "show", "u"}, "show", 1, 2, {});
    if (!found) return 0;
    fuzz::check(fuzz::fits_file_name(found->title), "a title fits a file name");
    service.socket.at = service.socket.bytes.size();  // from now on the service has nothing to say
    EpisodeListings later(service.http, cache, known, service.log, service.clock, "http://127.0.0.1");
    const auto cached = [&]() -> std::optional<FoundEpisode> {
      try {
        return later.getlistings({5, "show", "u"}, "show", 1, 2, {});
      } catch (const Failure&) {
        return {};  // it is not in the cache, and there is no answer
      }
    }();
    // Of two entries with the same numbers the first may be one that is not cached.
    const std::string& text = files.held["/w/cache/show.epc"];
    const std::size_t line = text.find("\t1\t2\t");
    const bool may_differ = line == std::string::npos || !text.substr(line + 5).starts_with(found->url + "\t");
    fuzz::check(may_differ || (cached && cached->url == found->url), "the cache gives back what the service gave");
  } catch (const Failure&) {
    fuzz::check(files.held.empty(), "nothing is cached of what cannot be read");
  }
  return 0;
}
