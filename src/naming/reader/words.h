#pragma once

#include <cstdint>
#include <string_view>

/// The words that mean something in a name, in the languages that names are written in.
namespace quorvel::reader {

enum WordKind : std::uint32_t {
  SeasonWord = 1U << 0,     // "season", "staffel": a number before or behind it is a season
  SeasonLetter = 1U << 1,   // the same, but only with the number glued to it
  EpisodeWord = 1U << 2,    // "episode", "folge"
  EpisodeLetter = 1U << 3,  // "e"
  CounterWord = 1U << 4,    // behind the number only: "話"
  PartWord = 1U << 5,       // "part"
  SpecialWord = 1U << 6,    // "special", "ova"
  ExtraWord = 1U << 7,      // "ncop", "trailer": no episode at all
  MonthName = 1U << 8,      // its number
  NumberWord = 1U << 9,     // "two", "II"; its number
  OrdinalEnd = 1U << 10,    // "2nd"
  OfWord = 1U << 11,
  AndWord = 1U << 12,
  ToWord = 1U << 13,
  Country = 1U << 14,
  Resolution = 1U << 15,
  Source = 1U << 16,
  Codec = 1U << 17,
  Sound = 1U << 18,
  Release = 1U << 19,   // "proper", "repack"
  Language = 1U << 20,  // also of subtitles
  Weak = 1U << 21,      // may as well be part of a title: "internal", "web"
  Extension = 1U << 22,
  VolumeWord = 1U << 23,  // a number behind it counts discs
  SampleWord = 1U << 24,
  EndWord = 1U << 25,       // the last episode, as fan groups mark it
  FolderWord = 1U << 26,    // a folder of that name says nothing of the show
  Site = 1U << 27,          // and other advertisements
  CameraWord = 1U << 28,    // a number behind it counts a camera's pictures
  FilmWord = 1U << 29,      // a number behind it counts films
  DateWord = 1U << 30,      // belongs to the date behind it
  SubtitleWord = 1U << 31,  // between a name and its extension: what language subtitles are in, and for whom
};

inline constexpr std::uint32_t technical_kinds = Resolution | Source | Codec | Sound | Release | Site;

struct Word {
  std::string_view text;
  std::uint32_t kinds = 0;
  int number = 0;
};

/// The word's row in the table; one without kinds when it is in none. `lowered` is in lower case.
const Word& find_word(std::string_view lowered);

}  // namespace quorvel::reader
