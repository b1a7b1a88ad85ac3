#pragma once

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvel::testing {

/// While it lives, permissions count for this thread as for any user, also for root's.
struct Unprivileged {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct held[2]{};

  Unprivileged() {
    EXPECT_EQ(syscall(SYS_capget, &header, held), 0);
    const __user_cap_data_struct none[] = {{0, held[0].permitted, 0}, {0, held[1].permitted, 0}};
    EXPECT_EQ(syscall(SYS_capset, &header, none), 0);
  }
  Unprivileged(const Unprivileged&) = delete;
  ~Unprivileged() { EXPECT_EQ(syscall(SYS_capset, &header, held), 0); }
};

}  // namespace quorvel::testing
