// The store as INI text: loading a file whole or not at all, one line at a time, and the exact
// bytes of the export.
#include "store/ini_text.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "store/section_store.h"
#include "tests/store/loaded_store.h"
#include "tests/store/unnamed_file.h"
#include "tests/support/faults.h"

using namespace proreflax;
using namespace loaded_store;
using faults::call;
using testing::ElementsAre;

namespace {

constexpr const char* export_notice = " export file oK....\n";

std::string times(std::size_t count, char c) {
  return std::string(count, c);
}

std::uint32_t parse(std::string line) {
  return config_parse_line(line.data());
}

/// What an export came to, and what it wrote and printed.
struct outcome {
  std::uint32_t result = 0;
  std::string written;
  std::string printed;
};

outcome export_to(const std::string& path, call failing = call::kinds, int nth = 0) {
  outcome all;
  const captured_stdout output;
  std::FILE* const stream = std::fopen(path.c_str(), "w+");
  faults::fail(failing, nth, ENOSPC);
  all.result = config_export(&g_config_mgmt, stream);
  faults::reset();
  std::fclose(stream);
  all.printed = output.text();
  return all;
}

/// Exports to a file of its own, with one call failing.
outcome export_with(call failing, int nth) {
  const unnamed_file file;
  outcome all = export_to(file.path(), failing, nth);
  all.written = file.content();
  return all;
}

outcome export_plainly() {
  return export_with(call::kinds, 0);
}

class IniText : public loaded_store::test {
 protected:
  /// Each test begins with a store that a failed load would have to release.
  IniText() { EXPECT_EQ(load("[OLD]\nold=1\nolder=2\n"), 0U); }

  static void refuses(const std::string& text, std::uint32_t result = 205) {
    SCOPED_TRACE(text);
    ASSERT_EQ(load("[OLD]\nold=1\nolder=2\n"), 0U);
    EXPECT_EQ(load(text), result);
    EXPECT_TRUE(is_all_zero());
  }

  static void loads_as(const std::string& text, const std::string& as_exported) {
    SCOPED_TRACE(text);
    EXPECT_EQ(load(text), 0U);
    EXPECT_EQ(exported(), as_exported);
    EXPECT_TRUE(is_well_formed());
  }
};

}  // namespace

// ---- One line ---------------------------------------------------------------------------------

TEST_F(IniText, a_line_goes_to_the_section_in_the_cache_however_it_came_there) {
  ASSERT_EQ(load("[A]\nk=v\n[B]\nk=v\n"), 0U);
  ASSERT_EQ(cfc_set_val("A", "k", "w"), 0U);
  EXPECT_EQ(parse("new=1\n"), 0U);
  g_config_mgmt.cache = section("B");
  EXPECT_EQ(parse("k=longer\n"), 0U);
  EXPECT_EQ(parse("new=2\n"), 0U);
  EXPECT_EQ(parse("k=v\n"), 0U);
  EXPECT_EQ(exported(), "\n[A]\nk=w\nnew=1\n\n[B]\nk=v\nnew=2\n");
}

TEST_F(IniText, a_line_finds_its_key_in_a_section_that_the_store_does_not_list) {
  ASSERT_NE(segment_alloc("A"), nullptr);
  config_mgmt elsewhere = g_config_mgmt;
  cfg_segment* const kept = section("A");
  g_config_mgmt = {};
  g_config_mgmt.cache = kept;
  EXPECT_EQ(parse("key=1\n"), 0U);
  EXPECT_EQ(parse("other=2\n"), 0U);
  EXPECT_EQ(parse("key=3\n"), 0U);
  g_config_mgmt = elsewhere;
  EXPECT_THAT(keys("A"), ElementsAre("key", "other"));
  EXPECT_EQ(value("A", "key"), "3");
}

TEST_F(IniText, a_line_without_a_section_in_the_cache_gives_205) {
  config_center_close();
  EXPECT_EQ(parse("key=1\n"), 205U);
  EXPECT_EQ(parse("[A]\n"), 0U);
  EXPECT_EQ(cache(), "A");
  EXPECT_EQ(parse("key=1\n"), 0U);
  EXPECT_EQ(exported(), "\n[A]\nkey=1\n");
  EXPECT_EQ(g_config_mgmt.flags, 0U);
}

TEST_F(IniText, a_header_line_that_finds_no_memory_gives_12_and_an_entry_line_is_left_out) {
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(parse("key=1\n"), 0U);
  EXPECT_TRUE(faults::happened());
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(parse("[NEW]\n"), 12U);
  faults::reset();
  EXPECT_EQ(g_config_mgmt.cache, nullptr);
  EXPECT_EQ(exported(), "\n[OLD]\nold=1\nolder=2\n");
}

// ---- Loading ----------------------------------------------------------------------------------

TEST_F(IniText, a_section_with_one_entry_loads_and_exports_behind_an_empty_line) {
  loads_as("[A]\nk=v\n", "\n[A]\nk=v\n");
}

TEST_F(IniText, a_load_replaces_the_store_and_releases_what_was_there) {
  ASSERT_EQ(cfc_set_val("OLD", "older", "longer"), 0U);
  loads_as("[A]\nk=v\n", "\n[A]\nk=v\n");
}

TEST_F(IniText, a_load_sets_initialized_and_loaded_and_clears_dirty_and_busy) {
  g_config_mgmt.flags |= CFG_DIRTY | CFG_BUSY;
  ASSERT_EQ(load("[A]\nk=v\n"), 0U);
  EXPECT_EQ(g_config_mgmt.flags, 0xC0000000U);
}

TEST_F(IniText, the_last_section_named_is_the_cache_after_a_load) {
  ASSERT_EQ(load("[A]\n[B]\n"), 0U);
  EXPECT_EQ(cache(), "B");
  ASSERT_EQ(load("[A]\n[B]\n[A]\n"), 0U);
  EXPECT_EQ(cache(), "A");
}

TEST_F(IniText, a_file_that_cannot_be_opened_gives_206_and_an_empty_store) {
  EXPECT_EQ(config_load_file("/nowhere/config-file.ini"), 206U);
  EXPECT_TRUE(is_all_zero());
}

TEST_F(IniText, a_text_without_a_section_gives_205) {
  refuses("");
  refuses("\n");
  refuses("\n\n\n");
}

TEST_F(IniText, a_path_that_opens_but_cannot_be_read_is_a_text_without_a_section) {
  EXPECT_EQ(config_load_file("/"), 205U);
  EXPECT_TRUE(is_all_zero());
}

TEST_F(IniText, one_malformed_line_anywhere_gives_205_and_an_empty_store) {
  for (const char* line : {"a=\n", "kv\n", "kvkv\n", "=v\n", "[]\n", "[a]x\n", "[A]\r\n", "x\n"}) {
    refuses(line);
    refuses("[A]\n" + std::string{line} + "k=v\n");
    refuses("[A]\nk=v\n" + std::string{line});
  }
}

TEST_F(IniText, an_entry_before_the_first_header_is_refused) {
  refuses("k=v\n[A]\n");
  refuses("\nk=v\n");
}

TEST_F(IniText, a_last_line_without_line_feed_is_refused) {
  refuses("[A]\nk=v");
  refuses("[A]\nkey=value");
  refuses("[A]");
  refuses("[SECTION]");
  refuses("[A]\nk=v\nx");
}

TEST_F(IniText, nul_bytes_are_refused_wherever_they_stand) {
  refuses(std::string{"\0", 1});
  refuses(std::string{"[A]\n\0\n", 6});
  refuses(std::string{"[A]\n\0k=v\n", 9});
  refuses(std::string{"[A\0]\n", 5});
  refuses(std::string{"[A]\nke\0y=v\n", 11});
  refuses(std::string{"[A]\nkey=v\0\n", 11});
  refuses(std::string{"[A]\nkey=v\n\0", 11});
}

TEST_F(IniText, a_name_of_24_bytes_loads_and_one_of_25_is_refused) {
  const std::string longest = "[" + times(24, 'n') + "]\n";
  loads_as(longest, "\n" + longest);
  refuses("[" + times(25, 'n') + "]\n");
}

TEST_F(IniText, a_key_of_49_and_a_value_of_199_bytes_load_and_one_more_is_refused) {
  const std::string longest = "[A]\n" + times(49, 'k') + "=" + times(199, 'v') + "\n";
  loads_as(longest, "\n" + longest);
  refuses("[A]\n" + times(50, 'k') + "=v\n");
  refuses("[A]\nk=" + times(200, 'v') + "\n");
}

TEST_F(IniText, a_line_longer_than_the_buffer_is_refused_whatever_its_pieces_look_like) {
  // The second piece would be a well-formed line of its own.
  refuses("[A]\nk=" + times(249, 'v') + "x=y\n");
  refuses("[" + times(250, 'n') + "k=v\n");
  refuses(times(251, 'v') + "\n[A]\n");
  for (std::size_t length = 245; length < 260; ++length) {
    refuses("[A]\nk=" + times(length - 3, 'v') + "\n");
  }
  refuses("[A]\nk=" + times(100'000, 'v') + "\n");
}

TEST_F(IniText, a_carriage_return_is_an_ordinary_byte) {
  loads_as("[A]\nk=v\r\n", "\n[A]\nk=v\r\n");
  refuses("[A]\r\nk=v\n");
  refuses("[A]\n\r\n");
}

TEST_F(IniText, empty_values_need_a_key_of_two_bytes) {
  loads_as("[A]\nab=\n", "\n[A]\nab=\n");
  refuses("[A]\na=\n");
}

TEST_F(IniText, an_equals_sign_belongs_to_the_value) {
  loads_as("[A]\nk=a=b\n", "\n[A]\nk=a=b\n");
  EXPECT_EQ(value("A", "k"), "a=b");
}

TEST_F(IniText, empty_lines_are_skipped_anywhere) {
  loads_as("\n\n[A]\n\nk=v\n\n\n[B]\n\n", "\n[A]\nk=v\n\n[B]\n");
}

TEST_F(IniText, blanks_comments_and_escapes_mean_nothing) {
  loads_as("[ A ]\n #k = \\n v\t\n", "\n[ A ]\n #k = \\n v\t\n");
}

TEST_F(IniText, entries_load_in_file_order) {
  loads_as("[A]\nz=1\na=2\nm=3\nb=4\n", "\n[A]\nz=1\na=2\nm=3\nb=4\n");
}

TEST_F(IniText, headers_of_the_same_name_merge_into_the_first) {
  loads_as("[A]\nk=1\n[B]\nk=2\n[A]\nl=3\n", "\n[A]\nk=1\nl=3\n\n[B]\nk=2\n");
}

TEST_F(IniText, a_repeated_key_takes_the_later_value_and_keeps_its_place) {
  loads_as("[A]\nx=1\ny=2\nx=3\n", "\n[A]\nx=3\ny=2\n");
  loads_as("[A]\nx=1\ny=2\nx=longer\n", "\n[A]\nx=longer\ny=2\n");
  loads_as("[A]\nx=1\ny=2\n[B]\n[A]\nx=3\n", "\n[A]\nx=3\ny=2\n\n[B]\n");
}

TEST_F(IniText, a_key_behind_a_repeated_one_lands_behind_it) {
  loads_as("[A]\nx=1\ny=2\nx=3\nz=4\n", "\n[A]\nx=3\nz=4\ny=2\n");
  EXPECT_THAT(keys("A"), ElementsAre("x", "z", "y"));
}

TEST_F(IniText, a_merged_section_goes_on_behind_its_last_entry_written) {
  loads_as("[A]\nx=1\ny=2\n[B]\n[A]\nx=3\n[B]\n[A]\nz=4\n", "\n[A]\nx=3\nz=4\ny=2\n\n[B]\n");
}

TEST_F(IniText, a_section_that_finds_no_memory_gives_12_and_an_empty_store) {
  const unnamed_file file{"[A]\nk=v\n[B]\nk=v\n"};
  for (const int nth : {1, 3}) {
    faults::fail(call::malloc, nth, ENOMEM);
    EXPECT_EQ(config_load_file(file.path().c_str()), 12U);
    EXPECT_TRUE(faults::happened());
    faults::reset();
    EXPECT_TRUE(is_all_zero());
  }
}

TEST_F(IniText, an_entry_that_finds_no_memory_is_left_out_and_the_load_goes_on) {
  const unnamed_file file{"[A]\na=1\nb=2\nc=3\n"};
  const std::string lines[] = {"a=1\n", "b=2\n", "c=3\n"};
  for (int missing = 0; missing < 3; ++missing) {
    faults::fail(call::malloc, missing + 2, ENOMEM);
    EXPECT_EQ(config_load_file(file.path().c_str()), 0U);
    faults::reset();
    std::string rest = "\n[A]\n";
    for (int line = 0; line < 3; ++line) {
      rest += line == missing ? "" : lines[line];
    }
    EXPECT_EQ(exported(), rest);
    EXPECT_EQ(g_config_mgmt.flags, 0xC0000000U);
  }
}

/// Headers of 3000 sections, and of every one once more, each with a key of its own behind it.
std::string many_sections_in_two_turns() {
  std::string text;
  for (const char* key : {"first", "second"}) {
    for (int i = 0; i < 3000; ++i) {
      text += "[S" + std::to_string(i) + "]\n" + key + "=" + std::to_string(i) + "\n";
    }
  }
  return text;
}

TEST_F(IniText, thousands_of_sections_merge_with_their_second_headers) {
  ASSERT_EQ(load(many_sections_in_two_turns()), 0U);
  EXPECT_EQ(sections().size(), 3000U);
  EXPECT_TRUE(is_well_formed());
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "S" + std::to_string(i);
    ASSERT_EQ(keys(name), (names{"first", "second"})) << name;
    ASSERT_EQ(value(name.c_str(), "first") + value(name.c_str(), "second"),
              std::to_string(i) + std::to_string(i));
  }
}

TEST_F(IniText, hundreds_of_keys_in_a_section_keep_their_order_and_are_written_once) {
  names in_order;
  std::string text = "[A]\n";
  for (int i = 0; i < 400; ++i) {
    in_order.push_back("key" + std::to_string(i));
    text += in_order.back() + "=old\n";
  }
  for (const std::string& key : in_order) {
    text += key + "=newer\n";
  }
  ASSERT_EQ(load(text), 0U);
  EXPECT_EQ(keys("A"), in_order);
  EXPECT_TRUE(is_well_formed());
  for (const std::string& key : in_order) {
    ASSERT_EQ(value("A", key.c_str()), "newer");
  }
}

TEST_F(IniText, a_read_error_counts_as_the_end_of_the_file) {
  const unnamed_file file{"[A]\na=1\nb=2\n"};
  faults::fail(call::fgets, 3);
  EXPECT_EQ(config_load_file(file.path().c_str()), 0U);
  faults::reset();
  EXPECT_EQ(exported(), "\n[A]\na=1\n");
  faults::fail(call::fgets, 1);
  EXPECT_EQ(config_load_file(file.path().c_str()), 205U);
  faults::reset();
  EXPECT_TRUE(is_all_zero());
}

TEST_F(IniText, every_load_closes_its_file_once) {
  for (const char* text : {"[A]\nk=v\n", "[A]\nkv\n", ""}) {
    const unnamed_file file{text};
    faults::reset();
    static_cast<void>(config_load_file(file.path().c_str()));
    EXPECT_EQ(faults::calls(call::fclose), 1) << text;
  }
}

// ---- One line ---------------------------------------------------------------------------------

class IniParser : public loaded_store::test {};

TEST_F(IniParser, a_header_makes_a_section_and_the_cache) {
  EXPECT_EQ(parse("[A]\n"), 0U);
  EXPECT_THAT(sections(), ElementsAre("A"));
  EXPECT_EQ(cache(), "A");
}

TEST_F(IniParser, a_header_of_a_section_that_is_there_brings_it_back_to_the_cache) {
  ASSERT_EQ(parse("[A]\n"), 0U);
  ASSERT_EQ(parse("[B]\n"), 0U);
  EXPECT_EQ(parse("[A]\n"), 0U);
  EXPECT_THAT(sections(), ElementsAre("A", "B"));
  EXPECT_EQ(cache(), "A");
}

TEST_F(IniParser, an_entry_goes_to_the_cached_section) {
  ASSERT_EQ(parse("[A]\n"), 0U);
  ASSERT_EQ(parse("[B]\n"), 0U);
  g_config_mgmt.cache = section("A");
  EXPECT_EQ(parse("k=v\n"), 0U);
  EXPECT_EQ(exported(), "\n[A]\nk=v\n\n[B]\n");
}

TEST_F(IniParser, an_entry_without_a_cached_section_gives_205) {
  EXPECT_EQ(parse("k=v\n"), 205U);
  EXPECT_TRUE(is_all_zero());
}

TEST_F(IniParser, an_empty_line_changes_nothing) {
  EXPECT_EQ(parse("\n"), 0U);
  EXPECT_TRUE(is_all_zero());
}

TEST_F(IniParser, a_malformed_line_gives_205_and_changes_nothing) {
  ASSERT_EQ(parse("[A]\n"), 0U);
  ASSERT_EQ(parse("k=v\n"), 0U);
  const std::string malformed[] = {"",
                                   "x",
                                   "x\n",
                                   "a=\n",
                                   "kvkv",
                                   "kvkv\n",
                                   "=vv\n",
                                   "[a]x\n",
                                   "[ab\n",
                                   "[" + times(25, 'n') + "]\n",
                                   times(50, 'k') + "=v\n",
                                   "k=" + times(200, 'v') + "\n"};
  for (const std::string& line : malformed) {
    EXPECT_EQ(parse(line), 205U) << line;
    EXPECT_EQ(exported(), "\n[A]\nk=v\n");
    EXPECT_EQ(cache(), "A");
  }
}

TEST_F(IniParser, a_header_that_finds_no_memory_gives_12_and_an_entry_0) {
  ASSERT_EQ(parse("[A]\n"), 0U);
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(parse("k=v\n"), 0U);
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(parse("[B]\n"), 12U);
  faults::reset();
  EXPECT_EQ(exported(), "\n[A]\n");
}

TEST_F(IniParser, a_line_does_not_make_the_store_dirty_or_loaded) {
  ASSERT_EQ(parse("[A]\n"), 0U);
  ASSERT_EQ(parse("k=v\n"), 0U);
  EXPECT_EQ(g_config_mgmt.flags, 0U);
}

// ---- Export -----------------------------------------------------------------------------------

class IniExport : public loaded_store::test {};

TEST_F(IniExport, writes_each_section_behind_an_empty_line_and_nothing_else) {
  ASSERT_EQ(load("[B]\nk=1\nl=\xff\x01\n[A]\n[C]\nkey=\n"), 0U);
  EXPECT_EQ(exported(), "\n[B]\nk=1\nl=\xff\x01\n\n[A]\n\n[C]\nkey=\n");
}

TEST_F(IniExport, a_section_without_entries_is_its_header_alone) {
  ASSERT_EQ(load("[A]\n"), 0U);
  EXPECT_EQ(exported(), "\n[A]\n");
}

TEST_F(IniExport, an_empty_store_is_an_empty_text) {
  EXPECT_EQ(exported(), "");
}

TEST_F(IniExport, starts_each_ring_at_its_head_wherever_the_cursor_is) {
  ASSERT_EQ(load("[A]\na=1\nb=2\nc=3\n"), 0U);
  for (const char* key : {"a", "b", "c"}) {
    ASSERT_NE(value("A", key), "?201");
    EXPECT_EQ(exported(), "\n[A]\na=1\nb=2\nc=3\n");
    EXPECT_EQ(cursor("A"), key);
  }
}

TEST_F(IniExport, is_read_back_to_the_same_sections_entries_and_orders) {
  ASSERT_EQ(load("[A]\nx=1\ny=2\n[B]\n[A]\nx=33\nz=4\n"), 0U);
  ASSERT_EQ(cfc_set_val("B", "ab", ""), 0U);
  ASSERT_EQ(cfc_set_val("A", times(49, 'k').c_str(), times(199, 'v').c_str()), 0U);
  const std::string text = exported();
  ASSERT_EQ(load(text), 0U);
  EXPECT_EQ(exported(), text);
  EXPECT_THAT(keys("A"), ElementsAre("x", "z", times(49, 'k'), "y"));
}

TEST_F(IniExport, a_value_beyond_the_loaders_limits_is_written_but_not_read_back) {
  ASSERT_EQ(load("[A]\nk=v\n"), 0U);
  ASSERT_EQ(cfc_set_val("A", "k", times(200, 'v').c_str()), 0U);
  const std::string text = exported();
  EXPECT_EQ(text, "\n[A]\nk=" + times(200, 'v') + "\n");
  EXPECT_EQ(load(text), 205U);
}

TEST_F(IniExport, writes_the_longest_names_keys_and_values_that_records_hold) {
  ASSERT_EQ(load("[A]\n"), 0U);
  const std::string name = times(255, 'n');
  const std::string key = times(254, 'k');
  const std::string text = times(255, 'v');
  ASSERT_NE(segment_alloc(name.c_str()), nullptr);
  ASSERT_EQ(cfc_set_val(name.c_str(), key.c_str(), text.c_str()), 0U);
  EXPECT_EQ(exported(), "\n[A]\n\n[" + name + "]\n" + key + "=" + text + "\n");
}

TEST_F(IniExport, takes_lengths_from_the_records_and_not_from_nul_bytes) {
  ASSERT_EQ(load("[NAME]\nkey=value\n"), 0U);
  cfg_segment* const record = section("NAME");
  record->name_len = 2;
  const_cast<char*>(cfg_item_key(record->head))[1] = '\0';
  record->head->val_len = 3;
  EXPECT_EQ(export_plainly().written, std::string("\n[NA]\nk\0y=val\n", 14));
}

TEST_F(IniExport, every_line_is_one_write) {
  ASSERT_EQ(load("[A]\na=1\nb=2\n[B]\n"), 0U);
  EXPECT_EQ(export_with(call::fwrite, 4).result, 215U);
  EXPECT_EQ(export_with(call::fwrite, 5).result, 0U);
}

TEST_F(IniExport, a_success_is_told_once_on_standard_output) {
  ASSERT_EQ(load("[A]\na=1\n[B]\nb=2\n"), 0U);
  const outcome done = export_plainly();
  EXPECT_EQ(done.result, 0U);
  EXPECT_EQ(done.printed, export_notice);
}

TEST_F(IniExport, a_write_that_comes_short_gives_215_tells_nothing_and_leaves_the_store) {
  ASSERT_EQ(load("[A]\na=1\nb=2\n[B]\n"), 0U);
  const config_mgmt before = g_config_mgmt;
  const std::string lines[] = {"\n[A]\n", "a=1\n", "b=2\n", "\n[B]\n"};
  std::string written;
  for (int nth = 1; nth <= 4; ++nth) {
    const outcome cut = export_with(call::fwrite, nth);
    EXPECT_EQ(cut.result, 215U);
    EXPECT_EQ(cut.written, written);
    EXPECT_EQ(cut.printed, "");
    EXPECT_EQ(std::memcmp(&g_config_mgmt, &before, sizeof before), 0);
    written += lines[nth - 1];
  }
  EXPECT_EQ(exported(), written);
}

TEST_F(IniExport, a_text_that_does_not_leave_the_stream_gives_215_and_tells_nothing) {
  ASSERT_EQ(load("[A]\na=1\n"), 0U);
  const outcome cut = export_with(call::fflush, 1);
  EXPECT_EQ(cut.result, 215U);
  EXPECT_EQ(cut.printed, "");
}

TEST_F(IniExport, a_full_disk_gives_215_for_a_short_text_and_for_a_long_one) {
  ASSERT_EQ(load("[A]\na=1\n"), 0U);
  for (const int entries : {0, 200}) {
    for (int i = 0; i < entries; ++i) {
      ASSERT_EQ(cfc_set_val("A", ("key" + std::to_string(i)).c_str(), times(150, 'v').c_str()), 0U);
    }
    const outcome cut = export_to("/dev/full");
    EXPECT_EQ(cut.result, 215U);
    EXPECT_EQ(cut.printed, "");
  }
}
