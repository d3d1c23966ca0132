// The power is cut after every call of a flush, with the real flash copy tool: the next start finds
// the old configuration or the new one, whole.
#include <gtest/gtest.h>
#include <proreflax/store.h>

#include <string>

#include "tests/store/loaded_store.h"
#include "tests/support/child.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

namespace {

constexpr const char* old_text =
    "\n[LAN]\nConnType=1\nLanIPAddr=192.168.62.1\n\n[DDNS]\nuser=nobody\n";
constexpr const char* new_text = "\n[LAN]\nConnType=2\nLanIPAddr=10.0.0.5\n\n[DDNS]\nuser=nobody\n";

class PowerCut : public loaded_store::test {
 protected:
  PowerCut() {
    device_root::clear();
    device_root::install_flash_tool();
    device_root::write("/etc/config-file.ini", old_text);
  }
  ~PowerCut() override { faults::reset(); }

  /// Starts from flash, changes two values and flushes, with the power cut after the n-th call from
  /// the flush on.
  static int flush_cut_after(int nth) {
    return wait_for_child(start_child([nth] {
      if (config_center_init() != 0 || cfc_set_val("LAN", "ConnType", "2") != 0 ||
          cfc_set_val("LAN", "LanIPAddr", "10.0.0.5") != 0) {
        return 1;
      }
      faults::cut_after(nth);
      return static_cast<int>(cfc_flush_all());
    }));
  }

  /// What the next start finds.
  static std::string text_on_flash() {
    EXPECT_EQ(config_center_init(), 0U);
    return loaded_store::exported();
  }
};

}  // namespace

TEST_F(PowerCut, in_a_flush_leaves_the_old_configuration_or_the_new_one) {
  ASSERT_EQ(text_on_flash(), old_text);
  int old_ones = 0;
  int nth = 1;
  for (;; ++nth) {
    const int status = flush_cut_after(nth);
    const std::string text = text_on_flash();
    ASSERT_TRUE(text == old_text || text == new_text) << "cut after call " << nth << ":\n" << text;
    EXPECT_FALSE(device_root::exists("/sbin/config-file.tmp")) << "what a cut left is cleared up";
    if (status == 0) {
      EXPECT_EQ(text, new_text) << "a flush that is done is on flash";
      break;
    }
    ASSERT_EQ(status, faults::exit_cut);
    old_ones += text == old_text ? 1 : 0;
    // Back to the old configuration for the next cut.
    ASSERT_EQ(cfc_set_val("LAN", "ConnType", "1"), 0U);
    ASSERT_EQ(cfc_set_val("LAN", "LanIPAddr", "192.168.62.1"), 0U);
    ASSERT_EQ(cfc_flush_all(), 0U);
  }
  EXPECT_GT(old_ones, 5) << "cuts before the flash tool ran";
  EXPECT_GT(nth, old_ones + 1) << "and behind it";
}

TEST_F(PowerCut, in_the_first_start_leaves_a_device_that_starts) {
  for (int nth = 1;; ++nth) {
    device_root::clear();
    device_root::install_flash_tool();
    device_root::write("/etc/config-file.ini", old_text);
    const int status = wait_for_child(start_child([nth] {
      faults::cut_after(nth);
      return static_cast<int>(config_center_init());
    }));
    EXPECT_EQ(text_on_flash(), old_text) << "cut after call " << nth;
    if (status == 0) {
      break;
    }
    ASSERT_EQ(status, faults::exit_cut);
  }
}
