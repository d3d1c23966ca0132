#include "tools/writeflash/flash_slots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <random>

#include "tests/tools/writeflash/flash_files.h"

using namespace proreflax;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

namespace fs = std::filesystem;

namespace {

class Flash : public testing::Test, protected flash_files {
 protected:
  /// Two saves: "old" in slot 0, "new" in slot 1, which is the newest.
  void save_old_and_new() {
    ASSERT_TRUE(save("old")) << why.text();
    ASSERT_TRUE(save("new")) << why.text();
  }
};

constexpr char first_text[] = "[LAN]\nLanIPAddr=10.0.0.5\n";
constexpr unsigned char first_header[] = {'P', 'F', 'L', 'S', 0, 0,    0,    1,    0,    0,
                                          0,   1,   0,   0,   0, 0x19, 0x48, 0xEF, 0x7C, 0xDF};

}  // namespace

TEST_F(Flash, what_was_saved_is_read_back) {
  ASSERT_TRUE(save(first_text)) << why.text();
  EXPECT_THAT(saved(), Optional(std::string{first_text}));
  EXPECT_STREQ(why.text(), "");
}

TEST_F(Flash, a_slot_holds_these_bytes) {
  ASSERT_TRUE(save(first_text)) << why.text();
  const std::string expected =
      std::string{std::begin(first_header), std::end(first_header)} + first_text;
  EXPECT_EQ(files::read(slot(0)), expected);
  EXPECT_FALSE(fs::exists(slot(1)));
}

TEST_F(Flash, a_slot_of_another_machine_is_read) {
  put_slot(1, std::string{"PFLS\0\0\0\1\x80\0\0\1\0\0\0\3\xD5\x2C\x34\x37"
                          "ab\n",
                          23});
  EXPECT_THAT(saved(), Optional(std::string{"ab\n"}));
}

TEST_F(Flash, any_bytes_are_saved_as_they_are) {
  std::string text;
  for (int i = 0; i < 256; ++i) {
    text.push_back(static_cast<char>(i));
  }
  ASSERT_TRUE(save(text)) << why.text();
  EXPECT_EQ(saved(), text);
}

TEST_F(Flash, texts_around_the_size_of_a_piece_are_whole) {
  for (const std::size_t size : {1U, 4095U, 4096U, 4097U, 8192U, 100'000U}) {
    std::string text(size, 'x');
    text.back() = '\n';
    ASSERT_TRUE(save(text)) << why.text();
    EXPECT_EQ(saved(), text) << size;
  }
}

TEST_F(Flash, saves_take_turns_between_the_slots) {
  for (unsigned i = 1; i <= 6; ++i) {
    const auto before = files::read(slot(i % 2));
    ASSERT_TRUE(save("text " + std::to_string(i))) << why.text();
    EXPECT_EQ(sequence(i % 2 == 0 ? 1 : 0), i);
    EXPECT_EQ(files::read(slot(i % 2)), before) << "the newest slot was touched";
  }
}

TEST_F(Flash, a_shorter_text_over_a_longer_one_is_whole) {
  for (const char* text : {"a long text, and then some", "another long text, longer", "s", "t"}) {
    ASSERT_TRUE(save(text)) << why.text();
    EXPECT_THAT(saved(), Optional(std::string{text}));
  }
  EXPECT_EQ(fs::file_size(slot(0)), slot_header_bytes + 1);
}

TEST_F(Flash, sequence_numbers_go_round_and_the_newest_is_still_found) {
  put_slot(0, slot_bytes("fifth", 0xFFFFFFFE));
  put_slot(1, slot_bytes("sixth", 0xFFFFFFFF));
  for (int i = 0; i < 4; ++i) {
    const std::string text = "round " + std::to_string(i);
    ASSERT_TRUE(save(text)) << why.text();
    EXPECT_EQ(sequence(i % 2), static_cast<std::uint32_t>(i));
    EXPECT_EQ(saved(), text);
  }
}

TEST_F(Flash, slots_of_the_same_number_give_slot_0) {
  put_slot(0, slot_bytes("zero", 5));
  put_slot(1, slot_bytes("one", 5));
  EXPECT_THAT(saved(), Optional(std::string{"zero"}));
}

TEST_F(Flash, a_text_that_is_saved_already_is_not_written_again) {
  save_old_and_new();
  faults::reset();
  ASSERT_TRUE(save("new")) << why.text();
  EXPECT_EQ(faults::calls(faults::call::pwrite), 0);
  EXPECT_EQ(sequence(0), 1U);
  EXPECT_EQ(sequence(1), 2U);
}

TEST_F(Flash, a_text_that_differs_in_its_last_byte_alone_is_written) {
  const std::string text(10'000, 'x');
  ASSERT_TRUE(save(text)) << why.text();
  ASSERT_TRUE(save(text.substr(1) + 'y')) << why.text();
  EXPECT_EQ(saved(), text.substr(1) + 'y');
}

TEST_F(Flash, the_older_text_counts_as_a_new_one) {
  save_old_and_new();
  ASSERT_TRUE(save("old")) << why.text();
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
  EXPECT_EQ(sequence(0), 3U);
}

// -- files and folders ---------------------------------------------------------------------------

TEST_F(Flash, the_folder_and_the_files_are_their_owner_s_alone) {
  const mode_t mask = umask(0);
  ASSERT_TRUE(save("text"));
  ASSERT_TRUE(save("text 2"));
  ASSERT_TRUE(read_into_output());
  umask(mask);
  EXPECT_EQ(mode_of(root + "/var"), 0755U);
  EXPECT_EQ(mode_of(root + "/var/lib"), 0755U);
  EXPECT_EQ(mode_of(folder()), 0700U);
  EXPECT_EQ(mode_of(slot(0)), 0600U);
  EXPECT_EQ(mode_of(slot(1)), 0600U);
  EXPECT_EQ(mode_of(output), 0600U);
}

TEST_F(Flash, a_file_that_was_open_to_all_is_replaced_by_one_that_is_not) {
  files::write(output, "before");
  fs::permissions(output, fs::perms::all);
  ASSERT_TRUE(save("text"));
  ASSERT_TRUE(read_into_output());
  EXPECT_EQ(mode_of(output), 0600U);
  EXPECT_EQ(files::read(output), "text");
}

TEST_F(Flash, a_read_makes_no_folder_and_changes_no_slot) {
  EXPECT_FALSE(read_into_output());
  EXPECT_FALSE(fs::exists(root + "/var"));
  save_old_and_new();
  const auto before = std::pair{files::read(slot(0)), files::read(slot(1))};
  EXPECT_TRUE(read_into_output());
  EXPECT_EQ(before, std::pair(files::read(slot(0)), files::read(slot(1))));
}

TEST_F(Flash, a_read_before_any_save_says_so_and_leaves_the_file_alone) {
  files::write(output, "before");
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), folder() + ": nothing to read (slot0: missing, slot1: missing)");
  fs::create_directories(folder());
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), folder() + ": nothing to read (slot0: missing, slot1: missing)");
  EXPECT_EQ(files::read(output), "before");
}

TEST_F(Flash, an_empty_file_is_refused_and_the_saved_text_stays) {
  ASSERT_TRUE(save("text"));
  EXPECT_FALSE(save(""));
  EXPECT_EQ(why.text(), input + ": empty, not saved");
  EXPECT_THAT(saved(), Optional(std::string{"text"}));
}

TEST_F(Flash, a_file_that_is_missing_is_named) {
  ASSERT_TRUE(save("text"));
  fs::remove(input);
  EXPECT_FALSE(save_input());
  EXPECT_EQ(why.text(), input + ": No such file or directory");
  EXPECT_THAT(saved(), Optional(std::string{"text"}));
}

TEST_F(Flash, what_is_not_a_regular_file_is_not_saved) {
  fs::create_directory(input);
  EXPECT_FALSE(save_input());
  EXPECT_EQ(why.text(), input + ": not a regular file");
  fs::remove(input);
  ASSERT_EQ(mkfifo(input.c_str(), 0600), 0);
  EXPECT_FALSE(save_input());  // and is not waited for
  EXPECT_EQ(why.text(), input + ": not a regular file");
  EXPECT_FALSE(fs::exists(root + "/var"));
}

TEST_F(Flash, a_file_too_large_for_a_slot_is_refused) {
  ASSERT_TRUE(save("text"));
  fs::resize_file(input, std::uint64_t{longest_text_bytes} + 1);
  EXPECT_FALSE(save_input());
  EXPECT_EQ(why.text(), input + ": File too large");
  EXPECT_THAT(saved(), Optional(std::string{"text"}));
}

TEST_F(Flash, what_is_there_and_not_a_regular_file_is_not_replaced) {
  ASSERT_TRUE(save("text"));
  files::write(top + "/aim", "before");
  fs::create_symlink("aim", output);
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), output + ": not a regular file");
  EXPECT_TRUE(fs::is_symlink(output));
  EXPECT_EQ(files::read(top + "/aim"), "before");

  fs::remove(output);
  fs::create_directory(output);
  EXPECT_FALSE(read_into_output());
  EXPECT_TRUE(fs::is_directory(output));
}

TEST_F(Flash, a_part_that_a_killed_read_left_is_removed) {
  ASSERT_TRUE(save("text"));
  files::write(top + "/aim", "before");
  fs::create_symlink("aim", output + ".part");
  EXPECT_THAT(saved(), Optional(std::string{"text"}));
  EXPECT_FALSE(fs::exists(fs::symlink_status(output + ".part")));
  EXPECT_EQ(files::read(top + "/aim"), "before");
}

TEST_F(Flash, a_link_put_in_the_place_of_the_part_meanwhile_is_not_followed) {
  ASSERT_TRUE(save("text"));
  files::write(top + "/aim", "before");
  fs::create_symlink("aim", output + ".part");
  faults::fail(faults::call::unlink, 1, ENOENT);  // not there yet when it was to be removed
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), output + ": File exists");
  EXPECT_EQ(files::read(top + "/aim"), "before");
}

TEST_F(Flash, a_read_into_a_folder_that_is_missing_is_refused) {
  ASSERT_TRUE(save("text"));
  output = top + "/missing/output";
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), output + ": No such file or directory");
}

TEST_F(Flash, paths_that_are_too_long_are_refused) {
  ASSERT_TRUE(save("text"));
  const std::string long_path = top + "/" + std::string(PATH_MAX, 'x');
  EXPECT_EQ(read_flash(root.c_str(), long_path.c_str(), why), flash_read::failed);
  EXPECT_THAT(why.text(), HasSubstr("File name too long"));
  // The file's name fits, that of its part does not.
  const std::string longest = top + "/" + std::string(255, 'x');
  EXPECT_EQ(read_flash(root.c_str(), longest.c_str(), why), flash_read::failed);
  EXPECT_THAT(why.text(), EndsWith("x: File name too long"));
  EXPECT_FALSE(write_flash(long_path.c_str(), input.c_str(), why));
  EXPECT_THAT(why.text(), HasSubstr("File name too long"));
  EXPECT_FALSE(write_flash(root.c_str(), long_path.c_str(), why));
  EXPECT_THAT(why.text(), HasSubstr("File name too long"));
}

TEST_F(Flash, a_file_in_the_place_of_the_folder_is_named) {
  fs::create_directories(root + "/var/lib");
  files::write(folder(), "");
  EXPECT_FALSE(save("text"));
  EXPECT_EQ(why.text(), folder() + ": Not a directory");
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), folder() + ": Not a directory");
}

// -- broken slots --------------------------------------------------------------------------------

TEST_F(Flash, every_changed_bit_of_the_newest_slot_gives_the_other) {
  save_old_and_new();
  const std::string whole = files::read(slot(1)).value();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int bits : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
      std::string broken = whole;
      broken[at] = static_cast<char>(broken[at] ^ bits);
      files::write(slot(1), broken);
      EXPECT_THAT(saved(), Optional(std::string{"old"})) << "byte " << at << " bits " << bits;
      EXPECT_THAT(why.text(), EndsWith("; the other slot was read"));
    }
  }
}

TEST_F(Flash, every_changed_bit_of_the_older_slot_gives_the_newest) {
  save_old_and_new();
  const std::string whole = files::read(slot(0)).value();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int bits : {1, 128, 255}) {
      std::string broken = whole;
      broken[at] = static_cast<char>(broken[at] ^ bits);
      files::write(slot(0), broken);
      EXPECT_THAT(saved(), Optional(std::string{"new"})) << "byte " << at << " bits " << bits;
    }
  }
}

TEST_F(Flash, a_slot_of_any_other_size_gives_the_other) {
  save_old_and_new();
  const std::string whole = files::read(slot(1)).value();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    files::write(slot(1), whole.substr(0, size));
    EXPECT_THAT(saved(), Optional(std::string{"old"})) << size;
  }
  files::write(slot(1), whole.substr(0, 19));
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
  EXPECT_EQ(why.text(), slot(1) + ": shorter than a header; the other slot was read");
  files::write(slot(1), whole + '\0');
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
  EXPECT_EQ(why.text(), slot(1) + ": size does not match the header; the other slot was read");
}

TEST_F(Flash, a_slot_whose_save_was_cut_short_is_no_damage_to_speak_of) {
  ASSERT_TRUE(save("old"));
  for (const std::string& bytes :
       {std::string{}, std::string(20, '\0'), std::string(20, '\0') + "new"}) {
    put_slot(1, bytes);
    EXPECT_THAT(saved(), Optional(std::string{"old"}));
    EXPECT_STREQ(why.text(), "");
  }
  put_slot(0, "");
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), folder() + ": nothing to read (slot0: unfinished, slot1: unfinished)");
}

TEST_F(Flash, a_header_that_lies_under_a_right_checksum_gives_the_other) {
  struct row {
    const char* fault;
    slot_header header;
  };
  const row rows[] = {
      {"no header", {.magic = slot_magic + 1}},
      {"unknown format version", {.version = 0}},
      {"unknown format version", {.version = 2}},
      {"size does not match the header", {.length = 2}},
      {"size does not match the header", {.length = 4}},
      {"size does not match the header", {.length = 0x7FFFFFFF}},
      {"size does not match the header", {.length = 0xFFFFFFFF}},
  };
  ASSERT_TRUE(save("old"));
  for (const row& each : rows) {
    put_slot(1, slot_bytes("new", 2, each.header));
    EXPECT_THAT(saved(), Optional(std::string{"old"})) << each.fault;
    EXPECT_EQ(why.text(), slot(1) + ": " + each.fault + "; the other slot was read");
  }
}

TEST_F(Flash, a_slot_that_is_4_gib_too_large_gives_the_other) {
  save_old_and_new();
  fs::resize_file(slot(1), fs::file_size(slot(1)) + (std::uint64_t{1} << 32));
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
}

TEST_F(Flash, a_slot_with_a_longer_text_than_is_ever_saved_gives_the_other) {
  ASSERT_TRUE(save("old"));
  constexpr std::uint32_t length = longest_text_bytes + 1;
  put_slot(1, slot_bytes("new", 2, {.length = length}));
  fs::resize_file(slot(1), std::uint64_t{slot_header_bytes} + length);
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
  // Where files of this size cannot be opened, that is what is said.
  const std::string fault = sizeof(off_t) > 4 ? "text too long" : std::strerror(EOVERFLOW);
  EXPECT_EQ(why.text(), slot(1) + ": " + fault + "; the other slot was read");
}

TEST_F(Flash, a_slot_with_an_empty_text_gives_the_other) {
  ASSERT_TRUE(save("old"));
  put_slot(1, slot_bytes("", 2));
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
}

TEST_F(Flash, something_else_in_the_place_of_a_slot_gives_the_other) {
  ASSERT_TRUE(save("old"));
  fs::create_directory(slot(1));
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
  EXPECT_EQ(why.text(), slot(1) + ": not a regular file; the other slot was read");

  fs::remove(slot(1));
  ASSERT_EQ(mkfifo(slot(1).c_str(), 0600), 0);
  EXPECT_THAT(saved(), Optional(std::string{"old"}));

  fs::remove(slot(1));
  fs::create_symlink("slot1", slot(1));
  EXPECT_THAT(saved(), Optional(std::string{"old"}));

  fs::remove(slot(1));
  fs::create_symlink("/dev/null", slot(1));
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
  EXPECT_EQ(why.text(), slot(1) + ": not a regular file; the other slot was read");
}

TEST_F(Flash, a_socket_in_the_place_of_a_slot_gives_the_other) {
  ASSERT_TRUE(save("old"));
  // The path of a socket is short: it is bound from within its folder.
  const int bound = wait_for_child(start_child([&] {
    fs::current_path(folder());
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "slot1"};
    const int made = socket(AF_UNIX, SOCK_STREAM, 0);
    return bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }));
  ASSERT_EQ(bound, 0);
  EXPECT_THAT(saved(), Optional(std::string{"old"}));
}

TEST_F(Flash, a_slot_whose_medium_fails_gives_the_other) {
  save_old_and_new();
  for (const int error : {EIO, EBADMSG, EUCLEAN}) {
    // Header and text of slot 0, then those of slot 1.
    for (const int nth : {3, 4}) {
      faults::fail(faults::call::pread, nth, error);
      EXPECT_THAT(saved(), Optional(std::string{"old"})) << nth;
      EXPECT_TRUE(faults::happened());
      EXPECT_EQ(why.text(), slot(1) + ": " + strerror(error) + "; the other slot was read");
    }
  }
}

TEST_F(Flash, a_slot_that_this_run_may_not_read_is_reported) {
  save_old_and_new();
  faults::reset();
  ASSERT_TRUE(read_into_output());
  // The slots are opened before the part of the output.
  const int last_slot = faults::calls(faults::call::openat) - 1;
  faults::fail(faults::call::openat, last_slot, EACCES);
  EXPECT_EQ(saved(), std::nullopt);
  EXPECT_EQ(why.text(), slot(1) + ": Permission denied");
  faults::fail(faults::call::openat, last_slot, EACCES);
  files::write(input, "newer");
  EXPECT_FALSE(save_input());
  EXPECT_TRUE(faults::happened());
  EXPECT_THAT(saved(), Optional(std::string{"new"}));
}

TEST_F(Flash, two_broken_slots_say_what_is_wrong_with_each) {
  put_slot(0, "PFLS");
  put_slot(1, slot_bytes("text", 1) + "!");
  EXPECT_FALSE(read_into_output());
  EXPECT_EQ(why.text(), folder() +
                            ": nothing to read (slot0: shorter than a header, slot1: size does not "
                            "match the header)");
  EXPECT_FALSE(fs::exists(output));
}

TEST_F(Flash, a_save_goes_into_the_broken_slot_whichever_it_is) {
  for (const int broken : {0, 1}) {
    put_slot(broken, "no slot");
    put_slot(1 - broken, slot_bytes("whole", 7));
    const auto before = files::read(slot(1 - broken));
    ASSERT_TRUE(save("text")) << why.text();
    EXPECT_EQ(sequence(broken), 8U);
    EXPECT_EQ(files::read(slot(1 - broken)), before);
    EXPECT_THAT(saved(), Optional(std::string{"text"}));
  }
}

TEST_F(Flash, a_save_over_two_broken_slots_is_read_back) {
  put_slot(0, "no slot");
  put_slot(1, "neither");
  ASSERT_TRUE(save("text")) << why.text();
  EXPECT_THAT(saved(), Optional(std::string{"text"}));
}

TEST_F(Flash, a_slot_that_cannot_be_written_is_named_and_loses_nothing) {
  ASSERT_TRUE(save("text"));
  fs::create_directory(slot(1));
  EXPECT_FALSE(save("next"));
  EXPECT_EQ(why.text(), slot(1) + ": Is a directory");
  EXPECT_THAT(saved(), Optional(std::string{"text"}));
}

TEST_F(Flash, random_bytes_for_slots_never_get_through) {
  std::mt19937 random{20};
  const std::string whole = slot_bytes("a text", 3);
  for (int round = 0; round < 3000; ++round) {
    for (const int i : {0, 1}) {
      std::string bytes(random() % 64, '\0');
      std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
      if (round % 2 == 0) {  // the front of a real slot
        bytes.replace(0, 0, whole, 0, random() % 20);
      }
      put_slot(i, bytes);
    }
    ASSERT_EQ(saved(), std::nullopt) << round;
    EXPECT_THAT(why.text(), HasSubstr("nothing to read"));
  }
}

TEST_F(Flash, slots_patched_at_random_give_one_of_their_texts_or_none) {
  std::mt19937 random{21};
  for (int round = 0; round < 3000; ++round) {
    for (const int i : {0, 1}) {
      std::string bytes = slot_bytes(i == 0 ? "zero" : "one", static_cast<std::uint32_t>(random()));
      for (auto patches = random() % 3; patches > 0; --patches) {
        bytes[random() % bytes.size()] = static_cast<char>(random());
      }
      put_slot(i, bytes.substr(0, random() % 8 == 0 ? random() % bytes.size() : bytes.size()));
    }
    ASSERT_THAT(saved(),
                AnyOf(std::nullopt, Optional(std::string{"zero"}), Optional(std::string{"one"})))
        << round;
  }
}

// -- several at once -----------------------------------------------------------------------------

TEST_F(Flash, saves_at_once_exclude_each_other) {
  constexpr int processes = 6;
  constexpr int saves = 40;
  ASSERT_TRUE(save("first"));
  pid_t all[processes];
  for (int i = 0; i < processes; ++i) {
    all[i] = start_child([&] {
      bool good = true;
      input += std::to_string(i);
      output += std::to_string(i);
      for (int n = 0; n < saves; ++n) {
        good = good &&
               save(std::to_string(i) + " saves " + std::string(9000, 'x') + std::to_string(n));
        good = good && saved().has_value() && why.text()[0] == '\0';
      }
      return good ? 0 : 1;
    });
  }
  for (const pid_t each : all) {
    EXPECT_EQ(wait_for_child(each), 0);
  }
  // No save was lost or made twice: each took the number behind the newest.
  EXPECT_EQ(std::max(sequence(0), sequence(1)), 1U + processes * saves);
}
