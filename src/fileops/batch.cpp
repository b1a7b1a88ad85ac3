#include "fileops/batch.h"

#include <algorithm>
#include <map>

#include "naming/file_names.h"
#include "platform/native.h"
#include "platform/temporary_name.h"
#include "rules/action.h"
#include "text/case.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

/// Names that differ in nothing but case may be one name, depending on the drive; so they count as one where that does
/// no harm.
std::string key_of(const std::string& path) {
  return lower_case(path);
}

/// The job's own file and those that go along with it.
template <typename Use>
void for_each_file(const FileJob& job, Use use) {
  use(job);
  for (const FileJob& companion : job.companions) use(companion);
}

}  // namespace

/// Which entries can be carried out, and which waits for which to leave its name.
class Batch::Plan {
 public:
  Plan(const std::vector<Entry>& entries, const FileJobs& jobs, const Files& files)
      : entries_(entries), jobs_(jobs), files_(files) {
    troubles_.resize(entries.size());
    waits_for_.assign(entries.size(), none);
    std::map<std::string, std::size_t> sources, targets;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      look_at(i);
      for_each_file(entries[i].job, [&](const FileJob& job) {
        if (!sources.try_emplace(key_of(job.path), i).second) {
          troubles_[i] = {Trouble::InTwice,
                          is_companion(job, i) ? job.path + " is in the plan twice" : "It is in the plan twice"};
        }
        const auto [first, is_new] = targets.try_emplace(key_of(job.destination()), i);
        if (is_new) return;
        const Trouble twice{Trouble::TwoForOneName, "Two files would be " + job.destination()};
        if (is_well(i)) troubles_[i] = twice;
        if (is_well(first->second)) troubles_[first->second] = twice;
      });
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (!is_well(i)) continue;
      for_each_file(entries[i].job, [&](const FileJob& job) {
        if (!files.exists(job.destination())) return;
        const auto holder = sources.find(key_of(job.destination()));
        const bool is_left =
            holder != sources.end() && holder->second != i && takes_source(entries[holder->second].job.action);
        const bool waits = is_left && (waits_for_[i] == none || waits_for_[i] == holder->second);
        waits ? void(waits_for_[i] = holder->second) : refuse_taken(i, job);
      });
    }
    refuse_who_waits_in_vain();
  }

  const std::vector<Trouble>& troubles() const { return troubles_; }
  bool is_well(std::size_t entry) const { return troubles_[entry].kind == Trouble::None; }
  std::size_t waits_for(std::size_t entry) const { return waits_for_[entry]; }

 private:
  void look_at(std::size_t entry) {
    const auto& [job, stamp] = entries_[entry];
    const std::optional<FileStamp> now = files_.stamp(job.path);
    if (!now) {
      troubles_[entry] = {Trouble::Missing, "It is not there any more"};
    } else if (stamp && !now->same_contents(*stamp)) {
      troubles_[entry] = {Trouble::Changed, "It has been changed or replaced since"};
    } else if (key_of(job.path) == key_of(job.destination())) {
      troubles_[entry] = {Trouble::SameName, "The new filename is the same as the old filename"};
    }
    if (is_well(entry) && is_link(job.action) && jobs_.is_done_already(job)) {
      troubles_[entry] = {Trouble::SameName, job.destination() + " is this file already"};
    }
    for (const FileJob& companion : job.companions) {
      if (!is_well(entry) || files_.exists(companion.path)) continue;
      troubles_[entry] = {Trouble::Missing, companion.path + " cannot go along: it is not there any more"};
    }
  }
  bool is_companion(const FileJob& job, std::size_t entry) const { return &job != &entries_[entry].job; }
  void refuse_taken(std::size_t entry, const FileJob& job) {
    const std::string taken = job.destination() + " is there already";
    troubles_[entry] = {Trouble::Taken, is_companion(job, entry) ? job.path + " cannot go along: " + taken : taken};
  }
  void refuse_who_waits_in_vain() {
    for (bool changed = true; changed;) {
      changed = false;
      for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!is_well(i) || waits_for_[i] == none || is_well(waits_for_[i])) continue;
        refuse_taken(i, entries_[i].job);
        changed = true;
      }
    }
  }

  const std::vector<Entry>& entries_;
  const FileJobs& jobs_;
  const Files& files_;
  std::vector<Trouble> troubles_;
  std::vector<std::size_t> waits_for_;
};

std::vector<Batch::Trouble> Batch::troubles(const std::vector<Entry>& entries) const {
  return Plan(entries, jobs_, files_).troubles();
}

void Batch::run(const std::vector<Entry>& entries, const Ended& ended, const Begin& begins) {
  const Plan plan(entries, jobs_, files_);
  enum State : std::uint8_t { ToDo, Chosen, Over };
  std::vector<State> states(entries.size(), ToDo);
  bool goes_on = true;
  const auto end = [&](std::size_t entry, const FileJobResult& result, const std::string& trouble) {
    states[entry] = Over;
    goes_on = ended(entry, result, trouble) && goes_on;
  };
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!plan.is_well(i)) end(i, {}, plan.troubles()[i].text);
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (states[i] != ToDo) continue;
    if (!goes_on) {
      end(i, {}, "It was not begun");
      continue;
    }
    // Who waits for nobody goes first; where the chain comes back to where it began, it is a circle.
    Chain chain;
    for (std::size_t at = i; at != none && states[at] == ToDo; at = plan.waits_for(at)) {
      chain.push_back(at);
      states[at] = Chosen;
    }
    const bool is_circle = plan.waits_for(chain.back()) == i;
    std::ranges::reverse(chain);
    is_circle ? run_circle(entries, chain, begins, end) : run_chain(entries, chain, begins, end);
  }
}

/// A failure has an error text here.
FileJobResult Batch::carry_out(const FileJob& job) {
  FileJobResult result;
  try {
    // Somebody may have been faster; the shell would ask whether to replace that file.
    if (files_.exists(job.destination())) throw Failure(job.destination() + " is there already");
    result = jobs_.run(job);
    if (!result.done && !result.error_text) result.error_text = "It is not there any more";
  } catch (const Failure& failure) {
    result = {false, failure.what()};
  }
  return result;
}

void Batch::run_chain(const std::vector<Entry>& entries, const Chain& chain, const Begin& begins, const End& end) {
  for (const std::size_t entry : chain) {
    begins(entry);
    const FileJobResult result = carry_out(entries[entry].job);
    end(entry, result, result.error_text.value_or(""));
  }
}

namespace {

/// Two steps in place of one: the file and its companions get names that nobody wants, and from these their own.
std::pair<FileJob, FileJob> in_two_steps(const FileJob& job) {
  const std::string name = "swapping-" + random_letters();
  FileJob parking = job, finishing = job;
  const std::string extension = getextension(job.filename);
  parking.new_name = name + (extension == job.filename ? "" : "." + extension);
  for (std::size_t i = 0; i < job.companions.size(); ++i) {
    parking.companions[i].new_name = name + "-" + std::to_string(i) + "." + getextension(job.companions[i].filename);
  }
  const auto part = [](FileJob& first, FileJob& second) {
    first.dest_path = getpath(first.path, 0);
    first.action = Rename;
    first.sets_aside = true;
    second.path = first.destination();
    second.filename = first.new_name;
  };
  part(parking, finishing);
  for (std::size_t i = 0; i < job.companions.size(); ++i) part(parking.companions[i], finishing.companions[i]);
  return {parking, finishing};
}

}  // namespace

/// The last one's file gets a name that nobody wants until its own is free.
void Batch::run_circle(const std::vector<Entry>& entries, const Chain& circle, const Begin& begins, const End& end) {
  for (const std::size_t entry : circle) begins(entry);
  const std::size_t parked = circle.back();
  const auto [parking, finishing] = in_two_steps(entries[parked].job);
  std::vector<FileJob> steps{parking};
  for (const std::size_t entry : circle) steps.push_back(entry == parked ? finishing : entries[entry].job);
  std::vector<FileJobResult> results;
  std::string trouble;
  for (const FileJob& step : steps) {
    results.push_back(carry_out(step));
    if (!results.back().done) trouble = results.back().error_text.value_or("");
    if (!results.back().done) break;
  }
  if (!trouble.empty()) {
    results.pop_back();
    while (!results.empty()) {
      const FileJob step = as_done(steps[results.size() - 1], results.back());
      try {
        if (!jobs_.undo(step).done) break;
      } catch (const Failure&) {
        break;
      }
      results.pop_back();
    }
    if (!results.empty()) trouble += "; what was done before could not be taken back, and the history tells it";
  }
  for (std::size_t i = 0; i < circle.size(); ++i) {
    end(circle[i], trouble.empty() ? results[i + 1] : FileJobResult{false, trouble}, trouble);
  }
}

}  // namespace quorvel
