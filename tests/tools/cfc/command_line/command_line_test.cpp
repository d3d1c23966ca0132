#include "tools/cfc/command_line/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cfc;
using namespace proreflax::settings;
using std::string;
using namespace std::string_literals;
using testing::HasSubstr;

namespace {

using words = std::vector<string>;

store_command command_of(const words& line) {
  const parsed_line parsed = parse_command_line(line);
  EXPECT_EQ(parsed.text, "");
  return std::get<store_command>(parsed.command.value());
}

template <typename Request>
Request request_of(const words& line) {
  return std::get<Request>(command_of(line).asked);
}

set_request set_of(const words& line) {
  return request_of<set_request>(line);
}

string complaint_of(const words& line) {
  const parsed_line parsed = parse_command_line(line);
  EXPECT_FALSE(parsed.command);
  EXPECT_EQ(parsed.status, exit_status::wrong_usage);
  return parsed.text;
}

}  // namespace

TEST(CommandLine, get_takes_section_and_key) {
  const auto get = request_of<get_request>({"get", "LAN", "LanIPAddr"});
  EXPECT_EQ(get.section, "LAN");
  EXPECT_EQ(get.key, "LanIPAddr");
  EXPECT_EQ(get.kind, value_kind::string);
  EXPECT_FALSE(command_of({"get", "LAN", "LanIPAddr"}).json);
}

TEST(CommandLine, options_stand_anywhere) {
  for (const words& line : {words{"get", "--type", "ip", "--json", "A", "b"},
                            words{"get", "A", "--json", "b", "--type=ip"}}) {
    const auto get = request_of<get_request>(line);
    EXPECT_EQ(get.section + "/" + get.key, "A/b");
    EXPECT_EQ(get.kind, value_kind::ip);
    EXPECT_TRUE(command_of(line).json);
  }
}

TEST(CommandLine, every_type_has_its_name) {
  for (std::size_t i = 0; i < kind_names.size(); ++i) {
    const auto get = request_of<get_request>({"get", "A", "b", "--type", string{kind_names[i]}});
    EXPECT_EQ(get.kind, static_cast<value_kind>(i));
  }
}

TEST(CommandLine, set_takes_the_value_as_it_is) {
  for (const char* value :
       {"",    " ",     "5",  "[x,y]", "{}",     "'q'",    "\"q\"", "a,b",         "a=b", "%%",
        "get", "--x=1", "-5", "-",     "-hello", "--json", "#c",    "caf\xc3\xa9", "/x",  "!"}) {
    const auto set = set_of({"set", "A", "b", value});
    EXPECT_EQ(set.section, "A");
    EXPECT_EQ(set.key, "b");
    EXPECT_EQ(set.value, value);
  }
}

TEST(CommandLine, a_value_that_begins_with_a_dash_may_stand_among_options) {
  const words expected{"A", "b", "-5"};
  for (const words& line :
       {words{"set", "A", "b", "-5", "--type", "u32"},
        words{"set", "--type", "u32", "A", "b", "-5"}, words{"set", "A", "--type=u32", "b", "-5"},
        words{"set", "A", "b", "--type", "u32", "-5"},
        words{"set", "--type=", "u32", "A", "b", "-5"}}) {
    const auto set = set_of(line);
    EXPECT_EQ((words{set.section, set.key, set.value}), expected);
    EXPECT_EQ(set.kind, value_kind::u32);
  }
}

TEST(CommandLine, behind_two_dashes_every_word_is_taken_as_it_is) {
  const auto set = set_of({"set", "--", "-s", "--key", "--help"});
  EXPECT_EQ(set.section, "-s");
  EXPECT_EQ(set.key, "--key");
  EXPECT_EQ(set.value, "--help");
  EXPECT_EQ(set_of({"set", "A", "b", "--", "--type=u8"}).value, "--type=u8");
}

TEST(CommandLine, verbs_may_be_names_and_values) {
  const auto set = set_of({"set", "flush", "get", "batch"});
  EXPECT_EQ(set.section + set.key + set.value, "flushgetbatch");
}

TEST(CommandLine, the_other_verbs_take_what_they_need) {
  EXPECT_EQ(request_of<register_request>({"register", "MYAPP"}).name, "MYAPP");
  request_of<flush_request>({"flush"});
  request_of<defaults_request>({"defaults"});
  const auto batch =
      std::get<batch_command>(*parse_command_line({"batch", "f", "--all-or-nothing"}).command);
  EXPECT_EQ(batch.file, "f");
  EXPECT_TRUE(batch.all_or_nothing);
  EXPECT_EQ(std::get<batch_command>(*parse_command_line({"batch"}).command).file, "");
  EXPECT_EQ(std::get<batch_command>(*parse_command_line({"batch", "-"}).command).file, "-");
  EXPECT_EQ(std::get<check_command>(*parse_command_line({"check", "f"}).command).file, "f");
  EXPECT_TRUE(std::get<check_command>(*parse_command_line({"check", "f", "--json"}).command).json);
  EXPECT_TRUE(std::get<status_command>(*parse_command_line({"status", "--json"}).command).json);
}

TEST(CommandLine, what_is_no_command_is_wrong_usage_and_says_why) {
  EXPECT_EQ(complaint_of({}), "A subcommand is required (see: cfc --help)");
  EXPECT_EQ(complaint_of({"get", "A"}), "get: KEY is required (see: cfc get --help)");
  EXPECT_EQ(complaint_of({"set", "A", "b"}), "set: VALUE is required (see: cfc set --help)");
  EXPECT_EQ(complaint_of({"frobnicate"}), "unknown verb \"frobnicate\" (see: cfc --help)");
  EXPECT_EQ(complaint_of({"gte", "LAN", "LanIPAddr"}),
            "unknown verb \"gte\"; did you mean get? (see: cfc --help)");
  EXPECT_EQ(complaint_of({"wireless", "stat"}),
            "wireless: unknown verb \"stat\" (see: cfc wireless --help)");
  EXPECT_EQ(complaint_of({"firmware", "wirte", "x"}),
            "firmware: unknown verb \"wirte\"; did you mean write? (see: cfc firmware --help)");
  EXPECT_THAT(complaint_of({"get", "A", "b", "c"}), HasSubstr("not expected: c"));
  EXPECT_THAT(complaint_of({"set", "A", "b", "c", "d"}), HasSubstr("not expected: d"));
  EXPECT_THAT(complaint_of({"get", "A", "b", "--tpye=u8"}), HasSubstr("not expected: --tpye=u8"));
  EXPECT_THAT(complaint_of({"get", "A", "b", "--type", "u9"}), HasSubstr("u9 not in {string,u8"));
  EXPECT_THAT(complaint_of({"get", "A", "b", "--type"}), HasSubstr("--type"));
  EXPECT_THAT(complaint_of({"get", "A", "b", "--type=u8", "--type=u8"}), HasSubstr("--type"));
  EXPECT_THAT(complaint_of({"set", "A", "b", "c", "--json"}), HasSubstr("--json"));
  EXPECT_THAT(complaint_of({"flush", "now"}), HasSubstr("now"));
  EXPECT_THAT(complaint_of({"check"}), HasSubstr("FILE is required"));
  EXPECT_THAT(complaint_of({"register"}), HasSubstr("NAME is required"));
  EXPECT_THAT(complaint_of({"get", "A", "b", "flush"}), HasSubstr("flush"));
}

TEST(CommandLine, a_complaint_stays_on_one_line) {
  EXPECT_THAT(complaint_of({"get", "A", "b", "x\ny\x1b"}), HasSubstr("x\\x0ay\\x1b"));
}

TEST(CommandLine, help_and_version_are_texts) {
  const parsed_line help = parse_command_line({"--help"});
  EXPECT_EQ(help.status, exit_status::done);
  for (const char* verb :
       {"get", "set", "register", "flush", "defaults", "batch", "check", "status"}) {
    EXPECT_THAT(help.text, HasSubstr("\n  "s + verb + " "));
  }
  EXPECT_THAT(help.text, HasSubstr("Exit status: 0 done"));
  EXPECT_THAT(parse_command_line({"set", "--help"}).text, HasSubstr("cfc set [OPTIONS] SECTION"));
  EXPECT_THAT(parse_command_line({"--version"}).text, testing::MatchesRegex("cfc [0-9.]+"));
}

TEST(CommandLine, an_option_is_not_abbreviated) {
  EXPECT_EQ(complaint_of({"get", "A", "b", "--js"}),
            "get: The following argument was not expected: --js (see: cfc get --help)");
  // The word after it is not its value: nothing is known of it.
  EXPECT_EQ(complaint_of({"get", "A", "b", "--typ", "u8"}),
            "get: The following arguments were not expected: u8 --typ (see: cfc get --help)");
}

TEST(CommandLine, an_unknown_letter_is_not_split_into_known_ones) {
  EXPECT_EQ(complaint_of({"firmware", "pack", "--type", "multi", "-xo", "f", "p", "-ox"}),
            "firmware pack: The following argument was not expected: -xo (see: cfc firmware pack "
            "--help)");
}

TEST(CommandLine, a_negative_number_is_a_word) {
  EXPECT_EQ(request_of<get_request>({"get", "A", "-5"}).key, "-5");
  EXPECT_EQ(
      std::get<wireless_channels_command>(
          std::get<wireless_command>(*parse_command_line({"wireless", "channels", "-5"}).command))
          .region,
      -5);
}

TEST(CommandLine, a_flag_takes_no_value) {
  EXPECT_THAT(complaint_of({"get", "A", "b", "--json=x"}), HasSubstr("--json = x"));
}

TEST(CommandLine, a_value_may_be_the_next_word_and_look_like_an_option) {
  const auto pack =
      std::get<firmware_pack_command>(*parse_command_line({"firmware", "pack", "--name", "--type",
                                                           "-o=f", "--type=", "kernel", "part"})
                                           .command);
  EXPECT_EQ(pack.name, "--type");
  EXPECT_EQ(pack.file, "=f");
  EXPECT_EQ(pack.type, "kernel");
}

TEST(CommandLine, a_value_is_judged_before_what_is_missing_and_that_before_what_is_too_much) {
  EXPECT_EQ(complaint_of({"get", "--type=u9", "--foo"}),
            "get: --type: u9 not in {string,u8,u16,u32,ip,binary} (see: cfc get --help)");
  EXPECT_EQ(complaint_of({"get", "--foo"}), "get: SECTION is required (see: cfc get --help)");
  EXPECT_EQ(complaint_of({"firmware", "pack", "p"}),
            "firmware pack: --type is required (see: cfc firmware pack --help)");
  EXPECT_EQ(complaint_of({"get", "A", "b", "--type"}),
            "get: --type: 1 required TYPE:{string,u8,u16,u32,ip,binary} missing (see: cfc get "
            "--help)");
  EXPECT_EQ(complaint_of({"get", "A", "b", "--type=u8", "--type=u8"}),
            "get: --type: At Most 1 required but received 2 (see: cfc get --help)");
}

TEST(CommandLine, a_word_before_the_verb_is_not_expected_and_the_verb_is_found_all_the_same) {
  EXPECT_EQ(complaint_of({"frob", "flush"}),
            "flush: The following argument was not expected: frob (see: cfc flush --help)");
  EXPECT_EQ(complaint_of({"--", "flush"}), "A subcommand is required (see: cfc --help)");
  EXPECT_EQ(complaint_of({"wireless", "frob"}),
            "wireless: unknown verb \"frob\" (see: cfc wireless --help)");
}

TEST(CommandLine, one_line_after_another_is_read_from_its_beginning) {
  EXPECT_EQ(complaint_of({"get", "A", "b", "-hx", "--type"}).substr(0, 11), "get: --type");
  EXPECT_EQ(request_of<get_request>({"get", "A", "b"}).section, "A");
}

TEST(CommandLine, help_explains_a_verb_as_its_option_does) {
  const std::vector<std::vector<std::string>> rows = {
      {}, {"get"}, {"firmware"}, {"wireless", "events"}};
  for (std::vector<std::string> words : rows) {
    std::vector<std::string> asked = words;
    asked.insert(asked.begin(), "help");
    words.emplace_back("--help");
    const parsed_line explained = parse_command_line(asked);
    EXPECT_EQ(explained.status, exit_status::done);
    EXPECT_EQ(explained.text, parse_command_line(words).text);
    EXPECT_NE(explained.text, "");
  }
}

TEST(CommandLine, help_of_an_unknown_verb_names_the_nearest) {
  EXPECT_EQ(complaint_of({"help", "gte"}),
            "help: unknown verb \"gte\"; did you mean get? (see: cfc help --help)");
  EXPECT_EQ(complaint_of({"help", "firmware", "wirte"}),
            "help: unknown verb \"wirte\"; did you mean write? (see: cfc help --help)");
  EXPECT_EQ(complaint_of({"help", "get", "LAN"}),
            "help: unknown verb \"LAN\" (see: cfc help --help)");
}
