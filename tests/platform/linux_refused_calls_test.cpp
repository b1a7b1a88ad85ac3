#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

#include "child_process.h"
#include "file_tools.h"
#include "platform/system.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Request = FileOperationRequest;
using Calls = std::vector<std::pair<unsigned, int>>;

// Newer architectures have nothing but the calls that take a folder.
#ifdef SYS_rename
constexpr unsigned rename_call = SYS_rename, symlink_call = SYS_symlink, unlink_call = SYS_unlink;
#else
constexpr unsigned rename_call = SYS_renameat, symlink_call = SYS_symlinkat, unlink_call = SYS_unlinkat;
#endif

/// From now on the system answers these calls of this process with an error, as file systems do that lack something.
void refuse(const Calls& calls) {
  std::vector<sock_filter> program{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (const auto& [call, error] : calls) {
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
    _exit(77);
}

Calls both(const Calls& some, const Calls& more) {
  Calls all = some;
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

// What is done to `from` beside the operations: its bytes are replaced, or written over while it is held.
constexpr int replaced = -1, held = -2, held_durably = -3;

/// Files "a" and "b" and a relative link to "a" lie in the folder; "+" in front of a name means another file system.
struct Row {
  Calls refused;
  int operation;
  std::string from, to;
  int code;
  std::string left;  // the names that are there afterwards, with their bytes
};

const std::vector<Row>& rows() {
  const Calls no_flag{{SYS_renameat2, ENOSYS}}, no_flag_here{{SYS_renameat2, EINVAL}};
  const Calls no_rename{{rename_call, EIO}}, no_links{{symlink_call, EPERM}};
  const Calls no_unlink{{unlink_call, EROFS}}, no_flush{{SYS_fsync, EIO}};
  const auto unlinked = [&](int error) { return both(no_flag, {{SYS_linkat, error}}); };
  const std::string untouched = "a=a b=b link->a ";
  static const std::vector<Row> all = {
      {no_flag, Request::Rename, "a", "c", 0, "b=b c=a link->a "},
      {no_flag_here, Request::Rename, "a", "b", EEXIST, untouched},
      {{{SYS_renameat2, EPERM}}, Request::Rename, "a", "c", EPERM, untouched},
      {both(no_flag, no_unlink), Request::Rename, "a", "c", EROFS, "a=a b=b c=a link->a "},
      {unlinked(EPERM), Request::Rename, "a", "c", 0, "b=b c=a link->a "},
      {unlinked(ENOTSUP), Request::Rename, "a", "b", EEXIST, untouched},
      {unlinked(ENOSYS), Request::Rename, "a", "c", 0, "b=b c=a link->a "},
      {unlinked(EINVAL), Request::Rename, "a", "c", 0, "b=b c=a link->a "},
      {unlinked(EMLINK), Request::Rename, "a", "c", 0, "b=b c=a link->a "},
      {unlinked(EXDEV), Request::Rename, "a", "c", 0, "b=b c=a link->a "},
      {unlinked(EIO), Request::Rename, "a", "c", EIO, untouched},
      {both(unlinked(EPERM), no_rename), Request::Rename, "a", "c", EIO, untouched},
      {no_links, Request::SymbolicLink, "a", "c", EPERM, untouched},
      {no_links, Request::Move, "link", "+link", EPERM, untouched},
      {{{SYS_linkat, EMLINK}}, Request::HardLink, "a", "c", EMLINK, untouched},
      {no_flush, replaced, "a", "", 1, untouched},
      {no_rename, replaced, "a", "", 1, untouched},
      {{{SYS_pwrite64, ENOSPC}}, replaced, "a", "", 1, untouched},
      {{{SYS_fchown, EPERM}}, replaced, "a", "", 0, "a=new b=b link->a "},
      {no_flush, held, "a", "", 0, "a=new b=b link->a "},
      {no_flush, held_durably, "a", "", 1, "a=new b=b link->a "},
      {{{SYS_ftruncate, EIO}}, held_durably, "a", "", 1, untouched},
      {{{SYS_pwrite64, ENOSPC}}, held, "a", "", 1, "a= b=b link->a "},
      {{{SYS_flock, EWOULDBLOCK}, {SYS_fcntl, EAGAIN}}, held, "a", "", 2, untouched},
      {no_flush, Request::Move, "a", "+c", EIO, untouched},
      {no_flush, Request::Copy, "a", "c", EIO, untouched},
      {no_flush, Request::Move, "link", "+link", EIO, untouched},
      {no_unlink, Request::Move, "link", "+link", EROFS, untouched + "+link->a "},
      {no_unlink, Request::Move, "a", "+c", EROFS, untouched + "+c=a "},
      {{{SYS_copy_file_range, EOPNOTSUPP}}, Request::Move, "a", "+c", 0, "b=b link->a +c=a "},
  };
  return all;
}

const SecondProcess carry_out("refused", [](const std::string& given) {
  const Row& row = rows().at(std::stoul(given));
  const std::string other = std::getenv("OTHER_FILE_SYSTEM"), here = fs::current_path() / "";
  const auto path = [&](const std::string& name) { return name[0] == '+' ? other + name.substr(1) : here + name; };
  const auto shell = system_file_operation({}, {});
  refuse(row.refused);
  if (row.operation == replaced) return system_files()->replace(path(row.from), "new") ? 0 : 1;
  if (row.operation == held || row.operation == held_durably) {
    const auto file = system_files()->hold(path(row.from));
    return !file ? 2 : file->write("new", row.operation == held_durably) ? 0 : 1;
  }
  return shell->perform({row.operation, path(row.from), path(row.to), 0, path(row.to) + ".new"});
});

TEST(LinuxRefusedCalls, LoseNoFile) {
  for (std::size_t i = 0; i < rows().size(); ++i) {
    const TemporaryFolder here, there{"/dev/shm"};
    for (const char* const name : {"a", "b"}) write_file(here / name, name);
    fs::create_symlink("a", here / "link");
    Start start = carry_out.start(std::to_string(i));
    start.folder = here.path();
    start.environment = {{"OTHER_FILE_SYSTEM", there / ""}};
    EXPECT_EQ(ChildProcess(start).status(), rows()[i].code) << i;
    std::string left;
    for (const TemporaryFolder* const in : {&here, &there}) {
      for (const auto& [path, bytes] : everything_in(in->path())) {
        const std::string name = path.substr(path.rfind('/') + 1);
        const bool is_link = fs::is_symlink(path);
        left += (in == &there ? "+" : "") + name +
                (is_link ? "->" + fs::read_symlink(path).filename().string() : "=" + bytes) + " ";
      }
    }
    EXPECT_EQ(left, rows()[i].left) << i;
  }
}

}  // namespace
}  // namespace quorvel::testing
