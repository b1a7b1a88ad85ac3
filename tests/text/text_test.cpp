#include <gtest/gtest.h>

#include "text/case.h"
#include "text/characters.h"
#include "text/code_page.h"
#include "text/failure.h"
#include "text/numbers.h"
#include "text/title.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

TEST(Characters, AreCountedAndLoweredAndEveryByteSurvives) {
  for (const std::string text : {"abc", "é€😀", "\xE9t\xE9", "a\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80"}) {
    EXPECT_EQ(encode(decode(text)), text);
  }
  EXPECT_EQ(lower_case("ÉTOILE Ж ΑΣ ABC\xC9"), "étoile ж ασ abc\xC9");
  EXPECT_EQ(length("é€😀\xE9t\xC0\xAF\xF4\x90\x80\x80"), 11u);
}

TEST(CodePage, EveryByteSurvivesAndOtherCharactersBecomeQuestionMarks) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(to_code_page(from_code_page(all)), all);
  EXPECT_TRUE(fits_code_page(from_code_page(all)));
  EXPECT_EQ(from_code_page("\x80\x9F\xE9"), "€Ÿé");
  EXPECT_EQ(to_code_page("aЖ日"), "a??");
  EXPECT_FALSE(fits_code_page("Ж"));
  EXPECT_EQ(to_code_page("caf\xFF"), "caf\xFF") << "a stray byte of a file name stands for itself";
}

TEST(Numbers, AreWholeOrRefused) {
  EXPECT_EQ(to_number(" -12 "), -12);
  EXPECT_EQ(to_number("+7"), 7);
  for (const char* text : {"", "null", "1.5", "12a", "2147483648", "- 1", "+-1"}) {
    EXPECT_THROW(to_number(text), Failure) << text;
  }
  EXPECT_EQ(leading_number(" 301 Moved"), 301);
  EXPECT_EQ(leading_number("abc"), 0);
  EXPECT_EQ(leading_number("99999999999999999999"), 1'000'000);
}

TEST(Wildcards, DescribeTheWholeSubject) {
  const struct {
    const char *subject, *pattern;
    bool fits;
  } cases[] = {{"", "*", true},       {"abc", "a*c", true},    {"abc", "a?c", true},     {"abc", "A*", false},
               {"a1", "a#", true},    {"ab", "a#", false},     {"b", "[a-c]", true},     {"d", "[a-c]", false},
               {"-", "[a-]", true},   {"*", "[*]", true},      {"x", "[*]", false},      {"[x", "[x", true},
               {"x", "x[]", false},   {"é", "?", true},        {"aXbXc", "a*b*c", true}, {"abab", "*ab", true},
               {"abc", "abc*", true}, {"abc", "", false},      {"", "", true},           {"\xE9", "?", true},
               {"a]b", "a]b", true},  {"mkv", "m[a-z]v", true}};
  for (const auto& c : cases) EXPECT_EQ(matches(c.subject, c.pattern), c.fits) << c.subject << " ~ " << c.pattern;
}

TEST(Wildcards, NeverTakeExponentialTime) {
  std::string pattern;
  for (int i = 0; i < 30; ++i) pattern += "*a";
  EXPECT_FALSE(matches(std::string(5000, 'a'), pattern + "b"));
}

TEST(TextBetween, IsEmptyUnlessBothMarkersEncloseSomething) {
  EXPECT_EQ(textbetween("x<a>y<b>z", "<a>", "<b>"), "y");
  EXPECT_EQ(textbetween("a,b", "c", ","), "");
  EXPECT_EQ(textbetween("a,b", "a", ";"), "");
  EXPECT_EQ(textbetween("a,b", "a", ""), ",b");
}

TEST(CleanTitle, MakesNamesThatFilesCanHave) {
  const struct {
    std::string text, name;
  } cases[] = {{"a &amp;amp; b", "a & b"},
               {"&quot;Pilot&quot;", "Pilot"},
               {"Episode 11", "Episode"},
               {"&pound;5&nbsp;x", "£5x"},
               {"a<BR>b<br>c<Br>d", "a b cBrd"},
               {"he said \\\"no\\\"", "he said  no"},
               {"a\tb\nc", "abc"},
               {"a" + std::string(30, ' ') + "b", "a   b"},
               {"a" + std::string(54, ' ') + "b", "ab"},
               {"&#x41;&#x41;&#66;", "AAB"},
               {"it&#39;s &#x92;", "it's ’"},
               {"&#x26;#x41;", "A"},
               {" \r\n1 x 1\t", "x"},
               {"a/b:c[d]|e*f?g<h>i\"j", "abcdefghij"},
               {"111", ""}};
  for (const auto& c : cases) EXPECT_EQ(cleantitle(c.text), c.name) << c.text;
}

TEST(CleanTitle, RefusesBrokenReferencesAndWholeAnswers) {
  for (const char* text : {"&#xZZ;", "&#x41", "&#12", "&#;", "&#300;", "&#x100;", "&#-5;"}) {
    EXPECT_THROW(cleantitle(text), Failure) << text;
  }
  EXPECT_THROW(cleantitle(std::string(max_title_size + 1, 'a')), Failure);
  std::string nested = "&#x26;";
  while (nested.size() + 5 < max_title_size) nested += "#x26;";
  EXPECT_EQ(cleantitle(nested), "&");
}

}  // namespace
}  // namespace quorvel
