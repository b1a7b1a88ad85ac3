#include <linux/magic.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <unordered_map>

#include "platform/linux/descriptor.h"
#include "platform/system.h"

namespace quorvel {
namespace {

constexpr std::uint32_t watched_events =
    IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVE_SELF | IN_ONLYDIR | IN_EXCL_UNLINK;

/// Whether files can change there that this machine's kernel knows nothing of.
bool is_reached_by_others(const std::string& folder) {
  constexpr std::uint32_t cifs = 0xFF534D42, smb2 = 0xFE534D42, ceph = 0x00C36400, virtual_box = 0x786F4256;
  constexpr auto such =
      std::to_array<std::uint32_t>({NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, AFS_SUPER_MAGIC, CODA_SUPER_MAGIC, V9FS_MAGIC,
                                    FUSE_SUPER_MAGIC, cifs, smb2, ceph, virtual_box});
  struct statfs found {};
  return statfs(folder.c_str(), &found) == 0 &&
         std::ranges::find(such, static_cast<std::uint32_t>(found.f_type)) != such.end();
}

class InotifyWatch : public FolderWatch {
 public:
  std::optional<std::string> watch(const std::string& folder) override {
    if (!queue_) return "the system has no more notices for this user (fs.inotify.max_user_instances)";
    const int watch = inotify_add_watch(queue_.get(), folder.c_str(), watched_events);
    if (watch < 0 && errno == ENOSPC) {
      return "the system has no more notices for this user (fs.inotify.max_user_watches)";
    }
    if (watch < 0) return "the system says: " + std::generic_category().message(errno);
    // The same folder under another name keeps its number.
    folders_[watch] = {folder, round_};
    if (is_reached_by_others(folder)) return "other machines may put files there, of which the system does not tell";
    return {};
  }

  void forget_others() override {
    std::erase_if(folders_, [this](const auto& each) {
      const bool is_old = each.second.round != round_;
      if (is_old) inotify_rm_watch(queue_.get(), each.first);
      return is_old;
    });
    ++round_;
  }

  Changes take() override {
    Changes changes;
    alignas(inotify_event) std::array<char, 65536> buffer{};
    for (ssize_t size = 0; (size = read(queue_.get(), buffer.data(), buffer.size())) > 0;) {
      for (ssize_t at = 0; at < size;) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + at, sizeof event);
        take(event, buffer.data() + at + sizeof event, changes);
        at += static_cast<ssize_t>(sizeof event + event.len);
      }
    }
    return changes;
  }

  void wait(std::chrono::milliseconds time) override {
    pollfd waiting{queue_.get(), POLLIN, 0};  // a negative number is passed over
    poll(&waiting, 1, static_cast<int>(time.count()));
  }

 private:
  struct Folder {
    std::string path;
    unsigned round = 0;
  };

  void take(const inotify_event& event, const char* name, Changes& changes) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) changes.are_all = false;
    const auto folder = folders_.find(event.wd);
    if (folder == folders_.end()) return;
    if ((event.mask & IN_MOVE_SELF) != 0) {
      // Where it is now, if it is watched there, shows itself by its own notice.
      inotify_rm_watch(queue_.get(), event.wd);
      folders_.erase(folder);
    } else if ((event.mask & IN_IGNORED) != 0) {
      folders_.erase(folder);
    } else if (event.len > 0) {
      std::string path = folder->second.path + name;
      if (changes.paths.empty() || changes.paths.back() != path) changes.paths.push_back(std::move(path));
    }
  }

  const Descriptor queue_{inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
  std::unordered_map<int, Folder> folders_;
  unsigned round_ = 0;
};

}  // namespace

std::unique_ptr<FolderWatch> system_folder_watch() {
  return std::make_unique<InotifyWatch>();
}

}  // namespace quorvel
