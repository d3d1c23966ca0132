#include "service/state_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/device_root.h"

using namespace proreflax;

namespace {

class StateDirectory : public testing::Test {
 protected:
  StateDirectory() { device_root::clear(); }

  const std::string path = device_root::path("/run/deep/proreflax");
};

}  // namespace

TEST_F(StateDirectory, is_created_with_its_parent_whatever_failed_before) {
  for (const bool parent_exists : {false, true}) {
    std::filesystem::remove_all(device_root::path("/run/deep"));
    std::filesystem::create_directories(device_root::path(parent_exists ? "/run/deep" : "/run"));
    testing::internal::CaptureStderr();
    errno = ENOENT;
    state_directory created{path.c_str()};
    created.write_status({});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << parent_exists;
    EXPECT_TRUE(device_root::exists("/run/deep/proreflax/status")) << parent_exists;
  }
}

TEST_F(StateDirectory, trouble_is_reported_once) {
  std::filesystem::create_directories(device_root::path("/run"));
  device_root::write("/run/deep", "a file in its parent's place");
  testing::internal::CaptureStderr();
  state_directory missing{path.c_str()};
  missing.write_status({});
  missing.write_status({});
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_EQ(log, "config-center: warning: cannot create " + path + ": Not a directory\n");
}
