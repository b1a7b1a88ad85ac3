#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fileops/file_job.h"
#include "platform/files.h"

namespace quorvel {

/// File jobs that are known beforehand, carried out in an order that works: a file may get a name that another one of
/// them has now, in a chain or in a circle.
class Batch {
 public:
  struct Entry {
    FileJob job;
    std::optional<FileStamp> stamp = {};  // of the file when the job was planned; its size and its time must be that
  };

  /// Why an entry cannot be carried out.
  struct Trouble {
    enum Kind : std::uint8_t { None, Missing, Changed, SameName, InTwice, TwoForOneName, Taken };
    Kind kind = None;
    std::string text = {};
  };

  Batch(FileJobs& jobs, Files& files) : jobs_(jobs), files_(files) {}

  /// For each entry. Nothing is touched.
  std::vector<Trouble> troubles(const std::vector<Entry>& entries) const;

  /// Called for each entry when it has ended, with its number, and why it was not done or an empty text. False ends the
  /// batch; what has not been begun by then is left as it is, and told so.
  using Ended = std::function<bool(std::size_t entry, const FileJobResult& result, const std::string& trouble)>;

  /// Looks at all of them, and then carries out those without a trouble. A circle is carried out whole or taken back.
  /// `begins` is called with the number of each before its file is touched.
  void run(
      const std::vector<Entry>& entries, const Ended& ended,
      const std::function<void(std::size_t)>& begins = [](std::size_t) {});

 private:
  class Plan;
  using Chain = std::vector<std::size_t>;  // of entries, in the order in which they can be carried out
  using End = std::function<void(std::size_t entry, const FileJobResult& result, const std::string& trouble)>;

  using Begin = std::function<void(std::size_t entry)>;

  void run_chain(const std::vector<Entry>& entries, const Chain& chain, const Begin& begins, const End& end);
  void run_circle(const std::vector<Entry>& entries, const Chain& circle, const Begin& begins, const End& end);
  FileJobResult carry_out(const FileJob& job);

  FileJobs& jobs_;
  Files& files_;
};

}  // namespace quorvel
