// The program itself, on the device of the build tree.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/prctl.h>

#include <cstdlib>
#include <fstream>

#include "tests/support/device_root.h"
#include "tests/tools/writeflash/flash_files.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Optional;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

/// Exit statuses of processes that check something in their turn.
constexpr int right = 0;
constexpr int wrong = 1;
constexpr int not_to_be_had = 99;

struct outcome {
  int status = -1;
  std::string out;
  std::string err;
};

class Writeflash : public testing::Test, protected flash_files {
 protected:
  Writeflash() { device_root::clear(); }
  ~Writeflash() override { device_root::clear(); }

  /// Runs the program; its standard output goes to `out_path`.
  outcome run(const std::vector<std::string>& arguments, const std::string& out_path) const {
    const std::string program = PROREFLAX_DEVICE_ROOT "/programs/writeflash";
    std::vector<char*> row{const_cast<char*>("writeflash")};
    for (const std::string& each : arguments) {
      row.push_back(const_cast<char*>(each.c_str()));
    }
    row.push_back(nullptr);
    const std::string err_path = top + "/err";
    outcome result;
    result.status = wait_for_child(start_child([&] {
      dup2(::open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
      dup2(::open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
      execv(program.c_str(), row.data());
      return 127;
    }));
    result.err = files::read(err_path).value_or("");
    return result;
  }
  outcome run(const std::vector<std::string>& arguments) const {
    outcome result = run(arguments, top + "/out");
    result.out = files::read(top + "/out").value_or("");
    return result;
  }

  static std::string device_slot(int i) {
    return device_root::path("/var/lib/proreflax/slot" + std::to_string(i));
  }

  void expect_silence(const outcome& result) {
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
  }

  void expect_failure(const outcome& result, const std::string& line, int status = 1) {
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "writeflash: " + line + "\n");
  }
};

}  // namespace

TEST_F(Writeflash, saves_and_reads_in_silence) {
  files::write(input, "[LAN]\n");
  expect_silence(run({"-w", input}));
  expect_silence(run({"-r", output}));
  EXPECT_THAT(files::read(output), Optional(std::string{"[LAN]\n"}));
  EXPECT_EQ(mode_of(output), 0600U);
  EXPECT_EQ(mode_of(device_slot(0)), 0600U);
  EXPECT_EQ(mode_of(fs::path{device_slot(0)}.parent_path()), 0700U);
}

TEST_F(Writeflash, with_nothing_saved_a_read_exits_with_3) {
  const std::string folder = device_root::path("/var/lib/proreflax");
  expect_failure(run({"-r", output}), folder + ": nothing to read (slot0: missing, slot1: missing)",
                 3);
  EXPECT_FALSE(fs::exists(output));
  fs::create_directories(folder);
  files::write(device_slot(1), "");
  expect_failure(run({"-r", output}),
                 folder + ": nothing to read (slot0: missing, slot1: unfinished)", 3);
}

TEST_F(Writeflash, with_every_slot_damaged_or_out_of_reach_a_read_exits_with_1) {
  const std::string folder = device_root::path("/var/lib/proreflax");
  fs::create_directories(folder);
  files::write(device_slot(0), "damaged");
  expect_failure(run({"-r", output}), folder +
                                          ": nothing to read (slot0: shorter than a header, "
                                          "slot1: missing)");
  fs::remove_all(folder);
  files::write(folder, "no folder");
  expect_failure(run({"-r", output}), folder + ": Not a directory");
}

TEST_F(Writeflash, a_copy_that_finds_no_place_exits_with_1_though_something_is_saved) {
  files::write(input, "[LAN]\n");
  expect_silence(run({"-w", input}));
  const std::string nowhere = top + "/nowhere/copy";
  expect_failure(run({"-r", nowhere}), nowhere + ": No such file or directory");
}

TEST_F(Writeflash, a_file_that_is_missing_exits_with_1) {
  expect_failure(run({"-w", input}), input + ": No such file or directory");
}

TEST_F(Writeflash, an_empty_file_exits_with_1) {
  files::write(input, "");
  expect_failure(run({"-w", input}), input + ": empty, not saved");
}

TEST_F(Writeflash, a_broken_slot_is_mentioned_and_the_other_read) {
  for (const char* text : {"old", "new"}) {
    files::write(input, text);
    expect_silence(run({"-w", input}));
  }
  fs::resize_file(device_slot(1), 10);
  const outcome result = run({"-r", output});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err,
            "writeflash: " + device_slot(1) + ": shorter than a header; the other slot was read\n");
  EXPECT_THAT(files::read(output), Optional(std::string{"old"}));
}

TEST_F(Writeflash, wrong_usage_exits_with_2_and_says_what_is_wrong) {
  struct row {
    std::vector<std::string> arguments;
    const char* message;
  };
  const row rows[] = {
      {{}, "-r FILE or -w FILE is wanted"},
      {{""}, "unknown option "},
      {{"-x"}, "unknown option -x"},
      {{"-x", "file"}, "unknown option -x"},
      {{"file"}, "unknown option file"},
      {{"-rfile"}, "unknown option -rfile"},
      {{"-r"}, "a FILE is wanted behind -r"},
      {{"-w"}, "a FILE is wanted behind -w"},
      {{"-r", ""}, "a FILE is wanted behind -r"},
      {{"-w", ""}, "a FILE is wanted behind -w"},
      {{"-r", "a", "b"}, "one argument too many: b"},
      {{"-w", "a", "-r"}, "one argument too many: -r"},
      {{"--help", "a"}, "one argument too many: a"},
      {{"--version", "a"}, "one argument too many: a"},
      {{"-r", "-w"}, "FILE looks like an option; if it is none, write ./-w"},
      {{"-w", "--help"}, "FILE looks like an option; if it is none, write ./--help"},
  };
  for (const row& each : rows) {
    const outcome result = run(each.arguments);
    EXPECT_EQ(result.status, 2) << each.message;
    EXPECT_EQ(result.out, "") << each.message;
    EXPECT_EQ(result.err,
              std::string{"writeflash: "} + each.message + "\nTry 'writeflash --help'.\n");
  }
  EXPECT_FALSE(fs::exists(device_root::path("/var/lib")));
}

TEST_F(Writeflash, help_names_every_option_on_standard_output) {
  const outcome result = run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  for (const char* each : {"-r FILE", "-w FILE", "--help", "--version", "Exit status"}) {
    EXPECT_THAT(result.out, HasSubstr(each));
  }
}

TEST_F(Writeflash, version_is_one_line_on_standard_output) {
  const outcome result = run({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, testing::MatchesRegex("writeflash [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(Writeflash, help_that_cannot_be_printed_exits_with_1) {
  const outcome result = run({"--help"}, "/dev/full");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "writeflash: standard output: No space left on device\n");
}

TEST_F(Writeflash, a_message_never_lands_in_a_slot_when_standard_error_is_closed) {
  files::write(input, "text");
  const std::string program = PROREFLAX_DEVICE_ROOT "/programs/writeflash";
  const int status = wait_for_child(start_child([&] {
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ::close(standard);
    }
    execl(program.c_str(), "writeflash", "-w", input.c_str(), nullptr);
    return 127;
  }));
  EXPECT_EQ(status, 0);
  EXPECT_THAT(files::read(device_slot(0)), Optional(slot_bytes("text", 1)));
}

TEST_F(Writeflash, runs_as_the_flash_tool_of_the_device) {
  device_root::install_flash_tool();
  files::write(input, "text");
  EXPECT_EQ(std::system((device_root::path("/sbin/writeflash").string() + " -w " + input).c_str()),
            0);
  expect_silence(run({"-r", output}));
  EXPECT_THAT(files::read(output), Optional(std::string{"text"}));
}

TEST_F(Writeflash, needs_the_c_library_alone) {
#ifdef PROREFLAX_SANITIZED
  GTEST_SKIP() << "A build with sanitizers needs their libraries too.";
#else
  const std::string listing = top + "/needed";
  ASSERT_EQ(std::system(("readelf -d '" WRITEFLASH "' > " + listing).c_str()), 0);
  std::ifstream lines{listing};
  std::vector<std::string> needed;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("(NEEDED)") != std::string::npos) {
      needed.push_back(line.substr(line.find('[')));
    }
  }
  EXPECT_THAT(needed, testing::ElementsAre(StartsWith("[libc.")));
#endif
}

// -- a disk that is full, for real ---------------------------------------------------------------

namespace {

/// Puts a disk of 64 KiB in a folder, seen by this process alone.
bool mount_small_disk(const std::string& folder) {
  return unshare(CLONE_NEWNS) == 0 &&
         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("small", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}

}  // namespace

TEST_F(Writeflash, on_a_full_disk_a_save_is_refused_and_loses_nothing) {
  const int status = wait_for_child(start_child([&] {
    if (!mount_small_disk(device_root::path("/var"))) {
      return not_to_be_had;
    }
    const std::string saved(30'000, 's');
    files::write(input, saved);
    expect_silence(run({"-w", input}));
    for (int tries = 0; tries < 3; ++tries) {
      files::write(input, std::string(60'000, 't'));
      expect_failure(run({"-w", input}), device_slot(1) + ": No space left on device");
      expect_silence(run({"-r", output}));
      EXPECT_EQ(files::read(output), saved);
      fs::remove(output);
    }
    files::write(input, "small enough");
    expect_silence(run({"-w", input}));
    expect_silence(run({"-r", output}));
    EXPECT_EQ(files::read(output), "small enough");
    return HasFailure() ? wrong : right;
  }));
  if (status == not_to_be_had) {
    GTEST_SKIP() << "No disk can be mounted here.";
  }
  EXPECT_EQ(status, right);
}

TEST_F(Writeflash, on_a_full_disk_a_read_is_refused_and_leaves_no_half_file) {
  files::write(input, std::string(100'000, 's'));
  expect_silence(run({"-w", input}));
  const std::string small = top + "/small";
  fs::create_directory(small);
  const int status = wait_for_child(start_child([&] {
    if (!mount_small_disk(small)) {
      return not_to_be_had;
    }
    output = small + "/output";
    files::write(output, "was there");
    expect_failure(run({"-r", output}), output + ": No space left on device");
    EXPECT_EQ(files::read(output), "was there");
    EXPECT_FALSE(fs::exists(output + ".part"));
    return HasFailure() ? wrong : right;
  }));
  if (status == not_to_be_had) {
    GTEST_SKIP() << "No disk can be mounted here.";
  }
  EXPECT_EQ(status, right);
}

// -- a folder that is not the caller's -----------------------------------------------------------

namespace {

/// From the next exec on, permissions hold for root too. False where that cannot be had.
bool obey_permissions() {
  constexpr int override_all = 1;   // CAP_DAC_OVERRIDE
  constexpr int override_read = 2;  // CAP_DAC_READ_SEARCH
  return geteuid() != 0 || (prctl(PR_CAPBSET_DROP, override_all, 0, 0, 0) == 0 &&
                            prctl(PR_CAPBSET_DROP, override_read, 0, 0, 0) == 0);
}

}  // namespace

TEST_F(Writeflash, without_the_right_to_folder_or_slot_exits_with_1) {
  files::write(input, "text");
  expect_silence(run({"-w", input}));
  files::write(input, "next");
  const std::string folder = fs::path{device_slot(0)}.parent_path();
  const int status = wait_for_child(start_child([&] {
    if (!obey_permissions()) {
      return not_to_be_had;
    }
    fs::permissions(device_slot(0), fs::perms::none);
    for (const char* option : {"-r", "-w"}) {
      expect_failure(run({option, input}), device_slot(0) + ": Permission denied");
    }
    fs::permissions(folder, fs::perms::none);
    for (const char* option : {"-r", "-w"}) {
      expect_failure(run({option, input}), folder + ": Permission denied");
    }
    return HasFailure() ? wrong : right;
  }));
  fs::permissions(folder, fs::perms::owner_all);
  if (status == not_to_be_had) {
    GTEST_SKIP() << "Root cannot give up its rights here.";
  }
  EXPECT_EQ(status, right);
  fs::permissions(device_slot(0), fs::perms::owner_read | fs::perms::owner_write);
  expect_silence(run({"-r", output}));
  EXPECT_THAT(files::read(output), Optional(std::string{"text"}));
}
