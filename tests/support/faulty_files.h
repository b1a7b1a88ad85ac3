#pragma once

#include <cerrno>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "child_process.h"
#include "platform/file_operation.h"
#include "platform/files.h"

namespace quorvel::testing {

enum class Fault { None, Fail, Full, KillBefore, KillAfter, Outside };

/// What happens at which call of the ports below, counted from 1. Full: from there on nothing can be written.
struct FaultPlan {
  Fault fault = Fault::None;
  int at = 0;
  std::function<void()> outside = [] {};  // what somebody else does just before that call
  int calls = 0;
  std::string last_write{};                                 // path of the last call if it wrote, else empty
  std::map<std::string, std::set<std::string>> versions{};  // all that was to be written, by path

  template <typename Result>
  Result pass(const std::string& written, const Result& failed, const std::function<Result()>& call) {
    const bool hit = ++calls == at;
    if (hit && fault == Fault::KillBefore) kill_this_process();
    if (hit && fault == Fault::Outside) {
      last_write = written;
      outside();
    }
    if ((hit && fault == Fault::Fail) || (calls >= at && fault == Fault::Full && !written.empty())) return failed;
    Result result = call();
    if (hit && fault == Fault::KillAfter) kill_this_process();
    return result;
  }
};

/// Real files behind a plan.
class FaultyFiles : public Files {
 public:
  FaultyFiles(Files& real, FaultPlan& plan) : real_(real), plan_(plan) {}
  Kind kind(const std::string& path) const override {
    return plan_.pass<Kind>("", Kind::Missing, [&] { return real_.kind(path); });
  }
  std::optional<FileStamp> stamp(const std::string& path) const override {
    return plan_.pass<std::optional<FileStamp>>("", {}, [&] { return real_.stamp(path); });
  }
  bool list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const override {
    return plan_.pass<bool>("", false, [&] { return real_.list(folder, entry); });
  }
  std::optional<std::string> read(const std::string& path) const override {
    return plan_.pass<std::optional<std::string>>("", {}, [&] { return real_.read(path); });
  }
  bool replace(const std::string& path, const std::string& bytes) override {
    plan_.versions[path].insert(bytes);
    return plan_.pass<bool>(path, false, [&] { return real_.replace(path, bytes); });
  }
  bool remove(const std::string& path) override {
    return plan_.pass<bool>("", false, [&] { return real_.remove(path); });
  }
  bool create_folder(const std::string& path) override {
    return plan_.pass<bool>(path, false, [&] { return real_.create_folder(path); });
  }

 private:
  Files& real_;
  FaultPlan& plan_;
};

class FaultyOperation : public FileOperation {
 public:
  FaultyOperation(FileOperation& real, FaultPlan& plan) : real_(real), plan_(plan) {}
  int perform(const FileOperationRequest& request) override {
    const std::string written = request.operation == FileOperationRequest::Delete ? "" : request.destination;
    return plan_.pass<int>(written, plan_.fault == Fault::Full ? ENOSPC : EIO, [&] { return real_.perform(request); });
  }

 private:
  FileOperation& real_;
  FaultPlan& plan_;
};

}  // namespace quorvel::testing
