#include "catalogue/answers.h"
#include "catalogue/name_match.h"
#include "fuzz_support.h"
#include "naming/service_names.h"
#include "text/failure.h"

using namespace quorvel;

namespace {

/// All that a file system forbids, and what would lead elsewhere.
void check_name(const std::string& name) {
  const std::string exact = exact_name(name);
  fuzz::check(exact.find_first_of(std::string_view("/\\:*?\"<>|\0\n\t", 12)) == std::string::npos,
              "a name fits a file");
  fuzz::check(exact == exact_name(exact), "what fits a file stays as it is");
  fuzz::check(likeness(match_key(name), match_key(exact)) >= 0, "every name can be compared");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::text_of(data, size);
  try {
    for (const CatalogueShow& show : found_shows_of(text)) {
      fuzz::check(show.id > 0 && !show.name.empty(), "a show has a number and a name");
      check_name(show.name);
    }
    for (const CatalogueEpisode& episode : episodes_of(text)) check_name(episode.title);
    for (const std::string& name : other_names_of(text)) fuzz::check(!name.empty(), "another name is one");
  } catch (const Failure&) {
    return 0;
  }
  return 0;
}
