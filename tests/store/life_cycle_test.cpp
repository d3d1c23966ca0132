// Loading from flash or from the factory file, writing back, resetting and closing, against flash
// tools that are shell scripts.
#include "store/life_cycle.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>

#include "tests/store/loaded_store.h"
#include "tests/store/unnamed_file.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

using namespace proreflax;
using namespace loaded_store;
using faults::call;
namespace fs = std::filesystem;

namespace {

constexpr const char* export_notice = " export file oK....\n";
constexpr const char* factory_text = "[FACTORY]\nk=f\n";
constexpr const char* saved_text = "[SAVED]\nk=s\n";
constexpr std::uint32_t clean = CFG_INITIALIZED | CFG_LOADED;

/// A flash in /var/flash, read and written whole, and a log of what the tool was asked.
constexpr const char* working_tool = R"(
  root=$(dirname "$0")/..
  echo "$1 ${2#$(cd "$root" && pwd)}" >> "$root/var/log"
  case $1 in
    -r) cp "$root/var/flash" "$2" ;;
    -w) cp "$2" "$root/var/flash" ;;
  esac)";

class LifeCycle : public loaded_store::test {
 protected:
  LifeCycle() {
    device_root::clear();
    device_root::write("/etc/config-file.ini", factory_text);
    device_root::write("/var/flash", saved_text);
    device_root::install_flash_script(working_tool);
    faults::reset();
  }
  ~LifeCycle() override {
    faults::reset();
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
    EXPECT_FALSE(fs::exists(fs::symlink_status(temporary))) << "the temporary file was left behind";
  }

  /// What the tool was asked so far, and forgets it.
  static std::string asked() {
    std::string all = device_root::read("/var/log").value_or("");
    fs::remove(device_root::path("/var/log"));
    return all;
  }

  /// Lets the tool fail for one option and work for the other.
  static void break_tool_for(const std::string& option) {
    device_root::install_flash_script("test $1 = " + option + " && exit 1" + working_tool);
  }

  const fs::path temporary = device_root::path("/sbin/config-file.tmp");
};

/// A store that was loaded from flash and then changed.
class ChangedStore : public LifeCycle {
 protected:
  ChangedStore() {
    EXPECT_EQ(config_center_init(), 0U);
    EXPECT_EQ(cfc_set_val("SAVED", "k", "changed"), 0U);
    asked();
  }
  static constexpr const char* changed_text = "\n[SAVED]\nk=changed\n";
};

}  // namespace

// ---- Start ------------------------------------------------------------------------------------

TEST_F(LifeCycle, a_start_reads_the_flash_into_the_temporary_file_and_loads_that) {
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[SAVED]\nk=s\n");
  EXPECT_EQ(asked(), "-r /sbin/config-file.tmp\n");
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
}

TEST_F(LifeCycle, a_started_store_is_initialized_loaded_and_clean) {
  ASSERT_EQ(config_center_init(), 0U);
  EXPECT_EQ(g_config_mgmt.flags, clean);
}

TEST_F(LifeCycle, a_start_removes_a_temporary_file_that_was_there_before) {
  device_root::write("/sbin/config-file.tmp", "[STALE]\nk=v\n");
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[SAVED]\nk=s\n");
  EXPECT_FALSE(fs::exists(temporary));
}

TEST_F(LifeCycle, a_flash_that_cannot_be_read_gives_the_defaults_and_writes_them_to_flash) {
  break_tool_for("-r");
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
  EXPECT_EQ(g_config_mgmt.flags, clean);
  EXPECT_EQ(asked(), "-w /etc/config-file.ini\n");
  EXPECT_EQ(device_root::read("/var/flash"), factory_text);
}

TEST_F(LifeCycle, a_tool_that_fails_behind_a_whole_copy_is_not_believed) {
  device_root::install_flash_script(std::string{working_tool} + "\ntest $1 = -w");
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
  EXPECT_FALSE(fs::exists(temporary));
}

TEST_F(LifeCycle, a_copy_that_does_not_load_gives_the_defaults) {
  for (const char* broken : {"", "\n", "[SAVED]\nk=s", "[SAVED]\nk=\n", "k=s\n[SAVED]\n"}) {
    device_root::write("/var/flash", broken);
    EXPECT_EQ(config_center_init(), 0U);
    EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
    EXPECT_EQ(asked(), "-r /sbin/config-file.tmp\n-w /etc/config-file.ini\n");
    EXPECT_FALSE(fs::exists(temporary));
  }
}

TEST_F(LifeCycle, a_tool_that_leaves_no_copy_gives_the_defaults) {
  device_root::install_flash_script("exit 0");
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
}

TEST_F(LifeCycle, a_tool_that_does_not_exist_gives_the_defaults) {
  fs::remove(device_root::path("/sbin/writeflash"));
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
}

TEST_F(LifeCycle, a_flash_read_that_finds_no_process_gives_the_defaults) {
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
  EXPECT_EQ(asked(), "-w /etc/config-file.ini\n");
}

TEST_F(LifeCycle, a_copy_that_finds_no_memory_gives_the_defaults) {
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
}

TEST_F(LifeCycle, defaults_that_do_not_reach_the_flash_are_in_force_all_the_same) {
  device_root::install_flash_script("exit 1");
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
  EXPECT_EQ(g_config_mgmt.flags, clean);
}

/// A start without a flash, and with a factory file that fails.
class NoFlash : public LifeCycle {
 protected:
  NoFlash() { break_tool_for("-r"); }

  void expect_start_fails_with(std::uint32_t result) {
    ASSERT_EQ(load("[OLD]\nk=v\n"), 0U);
    EXPECT_EQ(config_center_init(), result);
    EXPECT_TRUE(is_all_zero());
    EXPECT_EQ(asked(), "");
    EXPECT_FALSE(fs::exists(temporary));
  }
};

TEST_F(NoFlash, a_missing_factory_file_gives_206_and_an_empty_store) {
  fs::remove(device_root::path("/etc/config-file.ini"));
  expect_start_fails_with(206);
}

TEST_F(NoFlash, a_malformed_factory_file_gives_205_and_an_empty_store) {
  device_root::write("/etc/config-file.ini", "[FACTORY]\nk\n");
  expect_start_fails_with(205);
}

TEST_F(NoFlash, a_factory_file_that_finds_no_memory_gives_12_and_an_empty_store) {
  faults::fail(call::malloc, 3, ENOMEM);  // behind the two of the store that is there before
  expect_start_fails_with(12);
}

// ---- Flush ------------------------------------------------------------------------------------

TEST_F(ChangedStore, a_flush_hands_the_whole_text_to_the_flash_tool) {
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(asked(), "-w /sbin/config-file.tmp\n");
  EXPECT_EQ(device_root::read("/var/flash"), changed_text);
}

TEST_F(ChangedStore, a_flush_makes_the_store_clean_and_leaves_its_content) {
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(g_config_mgmt.flags, clean);
  EXPECT_EQ(exported(), changed_text);
}

TEST_F(ChangedStore, a_flush_is_told_once_on_standard_output) {
  std::string printed;
  {
    const captured_stdout output;
    EXPECT_EQ(cfc_flush_all(), 0U);
    printed = output.text();
  }
  EXPECT_EQ(printed, export_notice);
}

TEST_F(ChangedStore, what_was_flushed_is_there_at_the_next_start) {
  ASSERT_EQ(cfc_flush_all(), 0U);
  ASSERT_EQ(config_center_close(), 0U);
  ASSERT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), changed_text);
}

TEST_F(ChangedStore, a_second_flush_has_nothing_to_do) {
  ASSERT_EQ(cfc_flush_all(), 0U);
  asked();
  faults::reset();
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(faults::calls(call::fork), 0);
  EXPECT_EQ(asked(), "");
}

TEST_F(LifeCycle, a_flush_of_an_unchanged_store_runs_no_child_and_touches_no_file) {
  ASSERT_EQ(config_center_init(), 0U);
  asked();
  device_root::write("/sbin/config-file.tmp", "somebody else's");
  std::string printed;
  {
    const captured_stdout output;
    faults::reset();
    EXPECT_EQ(cfc_flush_all(), 0U);
    printed = output.text();
  }
  EXPECT_EQ(printed, "");
  EXPECT_EQ(faults::calls(call::fork) + faults::calls(call::fopen) + faults::calls(call::unlink),
            0);
  EXPECT_EQ(asked(), "");
  EXPECT_EQ(device_root::read("/sbin/config-file.tmp"), "somebody else's");
  fs::remove(temporary);
}

TEST_F(ChangedStore, a_flush_behind_a_close_has_nothing_to_do) {
  ASSERT_EQ(config_center_close(), 0U);
  faults::reset();
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(faults::calls(call::fork) + faults::calls(call::fopen), 0);
}

TEST_F(LifeCycle, a_flush_before_any_load_has_nothing_to_do) {
  g_config_mgmt.flags = CFG_DIRTY;
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(asked(), "");
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
}

TEST_F(ChangedStore, a_flash_tool_that_fails_gives_222_once_and_the_store_counts_as_clean) {
  break_tool_for("-w");
  EXPECT_EQ(cfc_flush_all(), 222U);
  EXPECT_EQ(g_config_mgmt.flags, clean);
  EXPECT_FALSE(fs::exists(temporary));
  device_root::install_flash_script(working_tool);
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(asked(), "");
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
}

TEST_F(ChangedStore, another_value_set_behind_a_failed_flush_is_flushed_with_the_first) {
  break_tool_for("-w");
  ASSERT_EQ(cfc_flush_all(), 222U);
  device_root::install_flash_script(working_tool);
  ASSERT_EQ(cfc_set_val("SAVED", "l", "more"), 0U);
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(device_root::read("/var/flash"), "\n[SAVED]\nk=changed\nl=more\n");
}

TEST_F(ChangedStore, a_flash_tool_that_does_not_exist_gives_222) {
  fs::remove(device_root::path("/sbin/writeflash"));
  EXPECT_EQ(cfc_flush_all(), 222U);
}

TEST_F(ChangedStore, a_flush_that_finds_no_process_gives_218_and_the_store_counts_as_clean) {
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(cfc_flush_all(), 218U);
  EXPECT_EQ(g_config_mgmt.flags, clean);
  EXPECT_FALSE(fs::exists(temporary));
}

TEST_F(ChangedStore, a_temporary_file_that_cannot_be_opened_gives_215_and_the_next_flush_succeeds) {
  fs::create_directory(temporary);
  EXPECT_EQ(cfc_flush_all(), 215U);
  EXPECT_EQ(g_config_mgmt.flags, clean | CFG_DIRTY);
  EXPECT_EQ(asked(), "");
  fs::remove(temporary);
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(device_root::read("/var/flash"), changed_text);
}

TEST_F(ChangedStore, a_full_disk_gives_215_and_the_next_flush_succeeds) {
  fs::create_symlink("/dev/full", temporary);
  EXPECT_EQ(cfc_flush_all(), 215U);
  EXPECT_EQ(g_config_mgmt.flags, clean | CFG_DIRTY);
  EXPECT_EQ(asked(), "");
  EXPECT_FALSE(fs::exists(fs::symlink_status(temporary)));
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(device_root::read("/var/flash"), changed_text);
}

TEST_F(ChangedStore, a_flush_overwrites_a_temporary_file_that_was_there_before) {
  device_root::write("/sbin/config-file.tmp", std::string(10'000, 'x'));
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(device_root::read("/var/flash"), changed_text);
}

// ---- The export to a file ---------------------------------------------------------------------

TEST_F(ChangedStore, a_file_is_created_or_emptied_and_holds_the_text) {
  const unnamed_file file{std::string(10'000, 'x')};
  EXPECT_EQ(config_flush_file(file.path().c_str()), 0U);
  EXPECT_EQ(file.content(), changed_text);
  EXPECT_EQ(g_config_mgmt.flags, clean);
}

TEST_F(ChangedStore, a_store_that_is_not_loaded_or_not_dirty_or_busy_gives_229) {
  const unnamed_file file{"untouched"};
  for (const std::uint32_t flags :
       {CFG_LOADED, CFG_DIRTY, CFG_LOADED | CFG_DIRTY | CFG_BUSY, CFG_INITIALIZED | CFG_LOADED,
        CFG_INITIALIZED | CFG_DIRTY, CFG_BUSY, std::uint32_t{0}}) {
    g_config_mgmt.flags = flags;
    EXPECT_EQ(config_flush_file(file.path().c_str()), 229U) << std::hex << flags;
    EXPECT_EQ(g_config_mgmt.flags, flags);
  }
  EXPECT_EQ(file.content(), "untouched");
}

TEST_F(ChangedStore, a_file_is_written_without_the_store_having_been_initialized) {
  const unnamed_file file;
  g_config_mgmt.flags = CFG_LOADED | CFG_DIRTY;
  EXPECT_EQ(config_flush_file(file.path().c_str()), 0U);
  EXPECT_EQ(g_config_mgmt.flags, CFG_LOADED);
}

TEST_F(ChangedStore, a_file_that_cannot_be_opened_gives_215_clears_busy_and_leaves_dirty) {
  EXPECT_EQ(config_flush_file("/nowhere/file"), 215U);
  EXPECT_EQ(g_config_mgmt.flags, clean | CFG_DIRTY);
}

TEST_F(ChangedStore, a_write_that_comes_short_gives_215_clears_busy_and_leaves_dirty) {
  const unnamed_file file;
  for (const call failing : {call::fwrite, call::fflush}) {
    faults::fail(failing, 1, ENOSPC);
    EXPECT_EQ(config_flush_file(file.path().c_str()), 215U);
    EXPECT_TRUE(faults::happened());
    EXPECT_EQ(g_config_mgmt.flags, clean | CFG_DIRTY);
  }
}

TEST_F(ChangedStore, a_close_that_fails_is_not_looked_at) {
  const unnamed_file file;
  faults::fail(call::fclose, 1, EIO);
  EXPECT_EQ(config_flush_file(file.path().c_str()), 0U);
  EXPECT_TRUE(faults::happened());
  EXPECT_EQ(g_config_mgmt.flags, clean);
}

/// What a reader and a writer are told by a store that is just writing itself out.
struct told_meanwhile {
  std::uint32_t flags = 0;
  std::uint32_t read = 0;
  std::uint32_t write = 0;
};
told_meanwhile meanwhile;

// A write beyond the limit of file sizes raises SIGXFSZ within the write: a handler runs in the
// middle of the export.
TEST_F(ChangedStore, a_store_that_is_written_out_is_busy_and_refuses_reads_and_writes) {
  struct sigaction asking {};
  asking.sa_handler = [](int) {
    char out[8];
    std::uint32_t length = 0;
    meanwhile.flags = g_config_mgmt.flags;
    meanwhile.read = cfc_get_val("SAVED", "k", out, &length);
    meanwhile.write = cfc_set_val("SAVED", "k", "x");
  };
  struct sigaction action_before {};
  rlimit limit_before{};
  const unnamed_file file;
  ASSERT_EQ(sigaction(SIGXFSZ, &asking, &action_before), 0);
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit_before), 0);
  const rlimit nothing{0, limit_before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &nothing), 0);
  const std::uint32_t result = config_flush_file(file.path().c_str());
  setrlimit(RLIMIT_FSIZE, &limit_before);
  sigaction(SIGXFSZ, &action_before, nullptr);
  EXPECT_EQ(result, 215U);
  EXPECT_EQ(meanwhile.flags, clean | CFG_DIRTY | CFG_BUSY);
  EXPECT_EQ(meanwhile.read, 208U);
  EXPECT_EQ(meanwhile.write, 208U);
  EXPECT_EQ(exported(), changed_text);
}

// ---- Defaults ---------------------------------------------------------------------------------

TEST_F(ChangedStore, defaults_replace_the_store_and_are_written_to_flash) {
  EXPECT_EQ(config_to_default(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
  EXPECT_EQ(g_config_mgmt.flags, clean);
  EXPECT_EQ(asked(), "-w /etc/config-file.ini\n");
  EXPECT_EQ(device_root::read("/var/flash"), factory_text);
}

TEST_F(ChangedStore, defaults_leave_nothing_to_flush) {
  ASSERT_EQ(config_to_default(), 0U);
  faults::reset();
  EXPECT_EQ(cfc_flush_all(), 0U);
  EXPECT_EQ(faults::calls(call::fork), 0);
}

TEST_F(ChangedStore, defaults_that_do_not_reach_the_flash_are_not_reported) {
  break_tool_for("-w");
  EXPECT_EQ(config_to_default(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_to_default(), 0U);
  EXPECT_EQ(exported(), "\n[FACTORY]\nk=f\n");
}

TEST_F(ChangedStore, defaults_that_cannot_be_loaded_leave_an_empty_store_and_the_flash_alone) {
  fs::remove(device_root::path("/etc/config-file.ini"));
  EXPECT_EQ(config_to_default(), 206U);
  EXPECT_TRUE(is_all_zero());
  device_root::write("/etc/config-file.ini", "[FACTORY]\nk\n");
  EXPECT_EQ(config_to_default(), 205U);
  EXPECT_TRUE(is_all_zero());
  device_root::write("/etc/config-file.ini", factory_text);
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(config_to_default(), 12U);
  EXPECT_TRUE(is_all_zero());
  EXPECT_EQ(asked(), "");
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
}

TEST_F(ChangedStore, defaults_touch_no_temporary_file) {
  device_root::write("/sbin/config-file.tmp", "somebody else's");
  EXPECT_EQ(config_to_default(), 0U);
  EXPECT_EQ(device_root::read("/sbin/config-file.tmp"), "somebody else's");
  fs::remove(temporary);
}

// ---- Close ------------------------------------------------------------------------------------

TEST_F(ChangedStore, a_close_releases_the_store_and_zeroes_the_root) {
  EXPECT_EQ(config_center_close(), 0U);
  EXPECT_TRUE(is_all_zero());
  EXPECT_EQ(asked(), "");
}

TEST_F(LifeCycle, a_close_of_a_closed_store_gives_0) {
  EXPECT_EQ(config_center_close(), 0U);
  EXPECT_EQ(config_center_close(), 0U);
}

TEST_F(LifeCycle, a_store_can_be_started_again_without_a_close) {
  ASSERT_EQ(config_center_init(), 0U);
  ASSERT_EQ(cfc_set_val("SAVED", "k", "changed"), 0U);
  EXPECT_EQ(config_center_init(), 0U);
  EXPECT_EQ(exported(), "\n[SAVED]\nk=s\n");
  EXPECT_EQ(g_config_mgmt.flags, clean);
}
