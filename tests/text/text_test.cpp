#include <gtest/gtest.h>

#include "text/case.h"
#include "text/characters.h"
#include "text/code_page.h"
#include "text/failure.h"
#include "text/json_text.h"
#include "text/numbers.h"
#include "text/title.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

TEST(Text, EveryByteOfItSurvives) {
  for (const std::string text : {"é€😀", "\xE9t\xE9", "a\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80"}) {
    EXPECT_EQ(encode(decode(text)), text);
  }
  EXPECT_EQ(lower_case("ÉTOILE Ж ΑΣ ABC\xC9"), "étoile ж ασ abc\xC9");
  EXPECT_EQ(length("é€😀\xE9t\xC0\xAF\xF4\x90\x80\x80"), 11u);
  for (const std::string first : {"\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(length(first), 1u);
  }
  for (const std::string none : {"\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF5\x80\x80\x80",
                                 "\xE2\x82", "\xE2\x41\x80"}) {
    EXPECT_EQ(length(none), none.size());
  }
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(to_code_page(from_code_page(all)), all);
  EXPECT_EQ(to_code_page(all), all);
  EXPECT_TRUE(fits_code_page(from_code_page(all)) && !fits_code_page("Ж"));
  EXPECT_EQ(from_code_page("\x80\x9F\xE9"), "€Ÿé");
  EXPECT_EQ(to_code_page("aЖ日caf\xFF"), "a??caf\xFF") << "a stray byte of a file name stands for itself";
  EXPECT_EQ(JsonObject().texts("a", {"\x1F\"", "b"}).texts("c", {}).line(), R"({"a":["\u001f\"","b"],"c":[]})");
}

TEST(Numbers, AreWholeOrRefused) {
  EXPECT_EQ(to_number(" -12 ") + to_number("+7"), -5);
  for (const char* text : {"", "1.5", "12a", "2147483648", "- 1", "+-1"})
    EXPECT_THROW(to_number(text), Failure) << text;
  EXPECT_EQ(leading_number(" 301 Moved") + leading_number("abc"), 301);
  EXPECT_EQ(leading_number("99999999999999999999"), 1'000'000);
}

TEST(Wildcards, DescribeTheWholeSubject) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"", "*", true},     {"ac", "a*c", true},   {"aéc", "a?c", true},     {"abc", "A*", false},
      {"a9", "a#", true},  {"ab", "a#", false},   {"acv", "a[a-c]v", true}, {"d", "[a-c]", false},
      {"-", "[a-]", true}, {"*", "[*]", true},    {"x", "[*]", false},      {"[x", "[x", true},
      {"x", "x[]", false}, {"abab", "*ab", true}, {"abc", "", false},       {"a]b\xE9", "a]b?*", true}};
  for (const auto& [subject, pattern, fits] : cases) EXPECT_EQ(matches(subject, pattern), fits) << subject << pattern;
  std::string pattern;
  for (int i = 0; i < 30; ++i) pattern += "*a";
  EXPECT_FALSE(matches(std::string(5000, 'a'), pattern + "b")) << "this would take exponential time";
}

TEST(CleanTitle, MakesNamesThatFilesCanHave) {
  std::string names;
  for (const char* text :
       {"a &amp;amp; b", "&quot;Pilot&quot;", "Episode 11", "&pound;5&nbsp;x", "a<BR>b<br>c<Br>d", "said \\\"no\\\"",
        "a\tb\nc", "a                              b", "a                                                      b",
        "&#x41;&#x41;&#66;", "it&#39;s &#x92;", "&#x26;#x41;", " \r\n1 x 1\t", "a/b:c[d]|e*f?g<h>i\"j", "111"}) {
    names += cleantitle(text) + "/";
  }
  EXPECT_EQ(names, "a & b/Pilot/Episode/£5x/a b cBrd/said  no/abc/a   b/ab/AAB/it's ’/A/x/abcdefghij//");
  for (const char* text : {"&#xZZ;", "&#x41", "&#12", "&#;", "&#300;", "&#x100;", "&#-5;"}) {
    EXPECT_THROW(cleantitle(text), Failure) << text;
  }
  EXPECT_THROW(cleantitle(std::string(max_title_size + 1, 'a')), Failure);
  EXPECT_TRUE(textbetween("a,b", "c", ",").empty() && textbetween("a,b", "a", ";").empty());
  EXPECT_EQ(textbetween("a,b", "a", ""), ",b");
}

}  // namespace
}  // namespace quorvel
