#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/answers.h"
#include "catalogue/service.h"
#include "naming/reader/reading.h"

namespace quorvel {

/// Finds the show and the episodes that a name means among what the listings service knows. What is not clear is not
/// guessed.
class Lookup {
 public:
  Lookup(CatalogueService& service, AnswerStore& store) : service_(service), store_(store) {}

  /// Before each pass. `anew`: all is asked for again, instead of what is kept.
  void begin_pass(bool anew);

  /// The show for `name`, which is the reading's own or what the user wants instead of it; "tvmaze:526" is that show.
  /// What the user has chosen for the name goes first. Throws Failure, with the candidates, when not exactly one show
  /// clearly fits.
  CatalogueShow show(const std::string& name, const Reading& reading);

  /// The show's episodes that the reading names, in its order. The list is asked for again when one is missing and the
  /// list is older than a day. Throws Failure, which names what is missing or what cannot be told apart.
  std::vector<CatalogueEpisode> episodes(const CatalogueShow& show, const Reading& reading);

  /// The shows that the service gives for a name, in its order. `again`: asked for again when older than a day.
  std::vector<CatalogueShow> candidates(const std::string& name, bool again = false);

  void choose(const Reading& reading, int show_id);
  void forget(const Reading& reading);

 private:
  using Age = CatalogueService::Age;

  /// The episodes of a show, and where each number is.
  struct List {
    std::vector<CatalogueEpisode> all;  // in airing order
    std::map<std::pair<int, int>, std::size_t> numbered;
  };

  CatalogueShow show_of_id(int id);
  CatalogueShow clear_winner(const std::string& name, const Reading& reading, bool again);
  const List& list(int show_id, bool with_specials, bool again);
  std::vector<CatalogueEpisode> in_list(const CatalogueShow& show, const Reading& reading, bool again);
  bool has_episodes(const CatalogueShow& show, const Reading& reading);
  CatalogueEpisode special(const List& list, const Reading& reading, int number) const;
  CatalogueEpisode on_date(const List& list, const Reading& reading) const;

  CatalogueService& service_;
  AnswerStore& store_;
  Age usual_ = Age::Any;
  std::map<std::string, std::vector<CatalogueShow>> found_;  // by the name that was searched for
  std::map<std::string, List> lists_;                        // by the request
};

}  // namespace quorvel
