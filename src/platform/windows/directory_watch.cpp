#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>

#include "platform/system.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide.h"

namespace quorvel {
namespace {

constexpr DWORD watched_changes = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME | FILE_NOTIFY_CHANGE_SIZE |
                                  FILE_NOTIFY_CHANGE_LAST_WRITE;
constexpr DWORD buffer_size = 65536;  // more than that, network drives refuse

bool is_on_network(const std::wstring& folder) {
  const std::size_t colon = folder.find(L':');
  if (colon == std::wstring::npos || colon == 0) return folder.starts_with(L"\\\\");
  return GetDriveTypeW((folder.substr(colon - 1, 2) + L"\\").c_str()) == DRIVE_REMOTE;
}

/// One folder, with all below it.
class Tree {
 public:
  explicit Tree(const std::wstring& folder)
      : folder_(CreateFileW(folder.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr)),
        happened_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
        buffer_(buffer_size / sizeof(DWORD)) {
    ask();
  }
  ~Tree() {
    if (!is_asked_) return;
    CancelIoEx(folder_.get(), &request_);
    DWORD size = 0;
    GetOverlappedResult(folder_.get(), &request_, &size, TRUE);  // until then the system may write to the buffer
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  HANDLE happened() const { return happened_.get(); }
  bool works() const { return is_asked_; }

  /// `path` is that of the folder. Afterwards it may not work any more, as when the folder has gone.
  void take(const std::string& path, FolderWatch::Changes& changes) {
    DWORD size = 0;
    while (is_asked_) {
      if (!GetOverlappedResult(folder_.get(), &request_, &size, FALSE)) {
        if (GetLastError() == ERROR_IO_INCOMPLETE) return;
        changes.are_all = is_asked_ = false;
        return;
      }
      if (size == 0) changes.are_all = false;  // there were more than the buffer holds
      read(path, size, changes);
      ask();
    }
  }

 private:
  void ask() {
    request_ = {};
    request_.hEvent = happened_.get();
    is_asked_ = folder_ && happened_ &&
                ReadDirectoryChangesW(folder_.get(), buffer_.data(), buffer_size, TRUE, watched_changes, nullptr,
                                      &request_, nullptr);
  }

  void read(const std::string& path, DWORD size, FolderWatch::Changes& changes) const {
    const auto* const bytes = reinterpret_cast<const std::byte*>(buffer_.data());
    for (DWORD at = 0; at < size;) {
      FILE_NOTIFY_INFORMATION notice{};
      constexpr std::size_t head = offsetof(FILE_NOTIFY_INFORMATION, FileName);
      std::memcpy(&notice, bytes + at, head);
      std::wstring name(notice.FileNameLength / sizeof(wchar_t), L'\0');
      std::memcpy(name.data(), bytes + at + head, notice.FileNameLength);
      if (notice.Action != FILE_ACTION_REMOVED && notice.Action != FILE_ACTION_RENAMED_OLD_NAME) {
        // A short name may have been used; the real one shows itself when all is looked through.
        if (name.find(L'~') != std::wstring::npos) changes.are_all = false;
        std::string changed = path + to_utf8(name);
        if (changes.paths.empty() || changes.paths.back() != changed) changes.paths.push_back(std::move(changed));
      }
      if (notice.NextEntryOffset == 0) return;
      at += notice.NextEntryOffset;
    }
  }

  const Handle folder_, happened_;
  OVERLAPPED request_{};
  std::vector<DWORD> buffer_;
  bool is_asked_ = false;
};

class DirectoryWatch : public FolderWatch {
 public:
  std::optional<std::string> watch(const std::string& folder) override {
    const std::optional<std::wstring> wide = system_path(folder);
    if (!wide) return "it is no path";
    Watched* watched = above(folder);
    if (watched == nullptr) {
      watched = &trees_.try_emplace(folder, *wide).first->second;
      watched->is_shared = is_on_network(*wide);
    }
    watched->round = round_;
    if (!watched->tree.works()) return "the system has no notices for it";
    if (watched->is_shared) return "other machines may put files there, of which the system does not always tell";
    return {};
  }

  void forget_others() override {
    std::erase_if(trees_,
                  [this](const auto& each) { return each.second.round != round_ || !each.second.tree.works(); });
    ++round_;
  }

  Changes take() override {
    Changes changes;
    for (auto& [path, watched] : trees_) watched.tree.take(path, changes);
    // What does not work is let go of, so that the folder can be made again.
    std::erase_if(trees_, [](const auto& each) { return !each.second.tree.works(); });
    return changes;
  }

  void wait(std::chrono::milliseconds time) override {
    std::vector<HANDLE> events;
    for (const auto& [path, watched] : trees_) {
      if (watched.tree.works() && events.size() < MAXIMUM_WAIT_OBJECTS) events.push_back(watched.tree.happened());
    }
    const auto milliseconds = static_cast<DWORD>(time.count());
    if (events.empty()) return Sleep(milliseconds);
    WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE, milliseconds);
  }

 private:
  struct Watched {
    explicit Watched(const std::wstring& folder) : tree(folder) {}
    Tree tree;
    bool is_shared = false;
    unsigned round = 0;
  };

  /// What watches the folder, or one above it.
  Watched* above(const std::string& folder) {
    const auto found = std::ranges::find_if(trees_, [&](const auto& each) { return folder.starts_with(each.first); });
    return found == trees_.end() ? nullptr : &found->second;
  }

  std::map<std::string, Watched> trees_;
  unsigned round_ = 0;
};

}  // namespace

std::unique_ptr<FolderWatch> system_folder_watch() {
  return std::make_unique<DirectoryWatch>();
}

}  // namespace quorvel
