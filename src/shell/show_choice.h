#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/lookup.h"
#include "platform/user_interface.h"
#include "shell/session.h"

namespace quorvel {

/// The user's choice of the show that a name means, for all files of that name. What it is asked with shows this.
class ShowChoice {
 public:
  /// Whether a show can be chosen for the item: only exact names ask for one, and the item is to have failed or been
  /// cancelled, and to have a name that says a show and an episode.
  static bool is_possible(const Session& session, int item);

  /// For an item of which that is so.
  ShowChoice(Session& session, int item);

  // What the user sees of the item.

  const std::string& filename() const { return filename_; }
  std::string read_as() const;
  /// For which other files the choice is as well; empty when there are none.
  std::string others() const;
  /// All the items that it is for.
  std::vector<int> items() const;
  /// What is searched for first.
  const std::string& name() const { return name_; }

  /// Looks for shows of that name, or for the one of that number ("tvmaze:526"). Events run while the service is waited
  /// for; one search at a time. What comes of it, for the user; found() then holds the shows.
  std::string search(const std::string& name);
  /// Ends a search in progress.
  void give_up();
  bool is_searching() const { return is_searching_; }

  const std::vector<CatalogueShow>& found() const { return found_; }
  std::vector<ListRow> rows() const;

  /// The show that was chosen for the name earlier, as a sentence and by its place in found(); empty when there is
  /// none.
  std::string earlier_choice() const;
  std::optional<std::size_t> place_of_earlier_choice() const;
  void forget();

  /// The show at that place is the one that the name means, also in later runs when it is to be remembered. Files of
  /// that name that have failed or been cancelled are taken again.
  void choose(std::size_t place, bool remember);

 private:
  struct Name {
    std::string text;  // with the user's exceptions
    Reading reading;
    std::string key() const { return Lookup::choice_key(text, reading); }
  };
  static Name name_of(const Session& session, int item);
  std::vector<CatalogueShow> shows_for(const std::string& name);

  Session& session_;
  std::string filename_, name_, key_;
  Reading reading_;
  bool is_searching_ = false;
  std::vector<CatalogueShow> found_;
  std::string earlier_;  // the description of the show that was chosen earlier
};

}  // namespace quorvel
