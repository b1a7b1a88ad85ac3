#pragma once

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvel::testing {

/// While it lives, permissions count for this thread as for any user, also for root's.
class Unprivileged {
 public:
  Unprivileged() {
    EXPECT_EQ(syscall(SYS_capget, &header_, held_), 0);
    __user_cap_data_struct none[2] = {held_[0], held_[1]};
    for (auto& each : none) each.effective = 0;
    EXPECT_EQ(syscall(SYS_capset, &header_, none), 0);
  }
  ~Unprivileged() { EXPECT_EQ(syscall(SYS_capset, &header_, held_), 0); }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct held_[2]{};
};

}  // namespace quorvel::testing
