#include "tools/cfc/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cfc;
using std::string;
using namespace std::string_literals;
using testing::HasSubstr;
using words = std::vector<string>;

namespace {

template <typename Command>
Command store_command_of(const words& line) {
  const parsed_line parsed = parse_command_line(line);
  EXPECT_EQ(parsed.text, "");
  return std::get<Command>(std::get<store_command>(parsed.command.value()));
}

set_command set_of(const words& line) {
  return store_command_of<set_command>(line);
}

string complaint_of(const words& line) {
  const parsed_line parsed = parse_command_line(line);
  EXPECT_FALSE(parsed.command);
  EXPECT_EQ(parsed.status, exit_status::wrong_usage);
  return parsed.text;
}

}  // namespace

TEST(CommandLine, get_takes_section_and_key) {
  const auto get = store_command_of<get_command>({"get", "LAN", "LanIPAddr"});
  EXPECT_EQ(get.section, "LAN");
  EXPECT_EQ(get.key, "LanIPAddr");
  EXPECT_EQ(get.kind, value_kind::string);
  EXPECT_FALSE(get.json);
}

TEST(CommandLine, options_stand_anywhere) {
  for (const words& line : {words{"get", "--type", "ip", "--json", "A", "b"},
                            words{"get", "A", "--json", "b", "--type=ip"}}) {
    const auto get = store_command_of<get_command>(line);
    EXPECT_EQ(get.section + "/" + get.key, "A/b");
    EXPECT_EQ(get.kind, value_kind::ip);
    EXPECT_TRUE(get.json);
  }
}

TEST(CommandLine, every_type_has_its_name) {
  for (std::size_t i = 0; i < kind_names.size(); ++i) {
    const auto get =
        store_command_of<get_command>({"get", "A", "b", "--type", string{kind_names[i]}});
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
  EXPECT_EQ(store_command_of<register_command>({"register", "MYAPP"}).name, "MYAPP");
  store_command_of<flush_command>({"flush"});
  store_command_of<defaults_command>({"defaults"});
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
  EXPECT_THAT(complaint_of({"frob"}), HasSubstr("subcommand is required"));
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
