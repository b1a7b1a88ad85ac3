#include "fuzz_support.h"
#include "text/code_page.h"
#include "text/failure.h"
#include "text/title.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = from_code_page(fuzz::text_of(data, size));
  try {
    const std::string title = cleantitle(text);
    fuzz::check(fuzz::fits_file_name(title), "what no file name holds is gone");
    fuzz::check(title.find('1') == std::string::npos, "the digit is gone");
    fuzz::check(title == trimtext(title), "nothing is left to trim");
    fuzz::check(title.size() <= text.size(), "no text grows");
  } catch (const Failure&) {
    fuzz::check(text.find('&') != std::string::npos || text.size() > max_title_size,
                "only references and length are refused");
  }
  return 0;
}
