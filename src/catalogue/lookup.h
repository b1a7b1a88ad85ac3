#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/answers.h"
#include "catalogue/service.h"
#include "naming/reader/reading.h"
#include "text/failure.h"

namespace quorvel {

/// The show that a name means, and why.
struct FoundShow {
  CatalogueShow show;
  std::string why;        // such as "by its name"
  bool is_alike = false;  // its name is spelt in another way than what was searched for
};

/// Episodes of a show, and when the service has told of them.
struct FoundEpisodes {
  std::vector<CatalogueEpisode> episodes;
  std::chrono::sys_seconds told;
  Reading as;                    // what the name says when it means these
  std::string other_title = {};  // of what it may mean as well
  // What the show's last season, and the last episode of the season of these, are numbered.
  int last_season = 0, last_episode = 0;
};

/// No show clearly fits a name, and these may be meant.
class UnclearShow : public Failure {
 public:
  UnclearShow(const std::string& what, std::vector<CatalogueShow> candidates)
      : Failure(what), candidates(std::move(candidates)) {}

  std::vector<CatalogueShow> candidates;
};

/// The name by which a show of that number can be asked for: "tvmaze:2".
std::string name_of_show(int id);

/// "The Bureau (2005, US, tvmaze:2)".
std::string description(const CatalogueShow& show);

/// Whether the name tells the title of the episode as well.
bool says_title(const Reading& reading, const CatalogueEpisode& episode);

/// Finds the show and the episodes that a name means among what the listings service knows. What is not clear is not
/// guessed.
///
/// A `name` is the reading's own show or what the user wants to be searched for instead; "tvmaze:526" is the show of
/// that number.
class Lookup {
 public:
  Lookup(CatalogueService& service, AnswerStore& store) : service_(service), store_(store) {}

  /// Before each pass.
  void begin_pass();

  /// Before each item. `anew`: all is asked for again, instead of what is kept.
  void begin_item(bool anew);

  /// The show that the user has chosen for the name, or else the only one that clearly fits it. Throws UnclearShow when
  /// there is none, and Failure when the service does not answer.
  FoundShow show(const std::string& name, const Reading& reading);
  CatalogueShow show_of_id(int id);

  /// The show's episodes that the reading names, in its order; of two readings the one that the show has. The list is
  /// asked for again when an episode is missing and the list is older than a day. Throws Failure, which names what is
  /// missing or what cannot be told apart.
  FoundEpisodes episodes(const CatalogueShow& show, const Reading& reading);

  /// The shows that the service gives for a name, in its order. `again`: asked for again when older than a day.
  std::vector<CatalogueShow> candidates(const std::string& name, bool again = false);

  /// Names of equal keys mean one show: they differ in nothing by which a show is chosen.
  static std::string choice_key(const std::string& name, const Reading& reading);

  /// The show of all names with this key from now on; in later runs too when it is to be remembered.
  void choose(const std::string& key, int show_id, bool remember);
  std::optional<int> choice(const std::string& key);
  void forget(const std::string& key);

 private:
  using Age = CatalogueService::Age;
  struct Wanted;
  struct Scored;

  /// The episodes of a show, and where each number is.
  struct List {
    std::vector<CatalogueEpisode> all;  // in airing order
    std::map<std::pair<int, int>, std::size_t> numbered;
    std::chrono::sys_seconds told;
  };

  FoundShow clear_winner(const Wanted& wanted, const Reading& reading, bool again);
  std::vector<Scored> scored(const Wanted& wanted, bool again);
  void compare_other_names(std::vector<Scored>& shows, const Wanted& wanted);
  const List& list(int show_id, bool with_specials, bool again);
  FoundEpisodes in_list(const CatalogueShow& show, const Reading& reading, bool again);
  bool has_episodes(const CatalogueShow& show, const Reading& reading);
  CatalogueEpisode special(const List& list, const Reading& reading, int number) const;
  CatalogueEpisode on_date(const List& list, const Reading& reading) const;

  CatalogueService& service_;
  AnswerStore& store_;
  Age usual_ = Age::Any;
  std::map<std::string, std::vector<CatalogueShow>> found_;  // by the name that was searched for
  std::map<std::string, List> lists_;                        // by the request
  std::map<std::string, int> chosen_;                        // in this run, by the names' key
  std::map<std::string, std::optional<int>> remembered_;     // as far as this pass has asked for it, by the key
};

}  // namespace quorvel
