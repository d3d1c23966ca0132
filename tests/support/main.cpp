// Every test program runs in a private IPC namespace where the kernel allows one: the keys of
// semaphore and queue are fixed, and the machine may have a service of its own.
#include <gtest/gtest.h>

#include "tests/support/private_ipc.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!testing::GTEST_FLAG(list_tests) && !enter_private_ipc_namespace()) {
    return 1;
  }
  return RUN_ALL_TESTS();
}
