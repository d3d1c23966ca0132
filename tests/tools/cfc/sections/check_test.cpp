#include "tools/cfc/sections/check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/cfc/run_program.h"

using std::string;
using testing::HasSubstr;

TEST(CheckVerb, a_well_formed_text_is_done_and_silent) {
  const ended check = run_cfc({"check", "-"}, "\n[A]\nk=v\n");
  EXPECT_EQ(check.status, 0);
  EXPECT_EQ(check.out + check.err, "");
}

TEST(CheckVerb, faults_are_told_as_file_and_line_and_end_in_1) {
  const ended check = run_cfc({"check", "-"}, "k=v\n[A]\n=vv\n");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, "");
  EXPECT_EQ(check.err,
            "stdin:1: the entry stands in front of the first section header\n"
            "stdin:3: the line is no entry: there is no \"=\", or no key in front of it\n");
}

TEST(CheckVerb, a_fault_of_the_whole_text_has_no_line) {
  const ended check = run_cfc({"check", "/dev/null"});
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.err, "/dev/null: the text holds no section header\n");
}

TEST(CheckVerb, json_holds_every_fault) {
  const ended check = run_cfc({"check", "--json", "-"}, "[A]\nkv\n" + string(1, '\0') + "\n");
  EXPECT_EQ(check.status, 1);
  const auto report = nlohmann::json::parse(check.out);
  EXPECT_EQ(report["file"], "stdin");
  EXPECT_EQ(report["accepted"], false);
  ASSERT_EQ(report["faults"].size(), 2U);
  EXPECT_EQ(report["faults"][0]["line"], 2);
  EXPECT_EQ(report["faults"][0]["rule"], "too-short");
  EXPECT_EQ(report["faults"][1]["rule"], "nul-byte");
  EXPECT_THAT(report["faults"][1]["message"].get<string>(), HasSubstr("byte 1"));
}

TEST(CheckVerb, json_of_a_well_formed_text_is_accepted) {
  const ended check = run_cfc({"check", "--json", "-"}, "[A]\n");
  EXPECT_EQ(check.status, 0);
  const auto report = nlohmann::json::parse(check.out);
  EXPECT_EQ(report["accepted"], true);
  EXPECT_TRUE(report["faults"].empty());
}

TEST(CheckVerb, a_file_that_cannot_be_read_ends_in_1) {
  const ended missing = run_cfc({"check", "/nowhere"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "cfc: check: /nowhere: cannot be opened: No such file or directory\n");
  EXPECT_EQ(run_cfc({"check", "/"}).err, "cfc: check: /: cannot be read: Is a directory\n");
}

TEST(CheckVerb, what_never_ends_is_given_up) {
  EXPECT_THAT(run_cfc({"check", "/dev/zero"}).err, HasSubstr("more than 65536 bytes"));
  const ended noise = run_cfc({"check", "--json", "/dev/urandom"});
  EXPECT_EQ(noise.status, 1);
  EXPECT_TRUE(nlohmann::json::parse(noise.out).contains("failure"));
}

TEST(CheckVerb, says_that_it_gave_up_on_a_text_of_nothing_but_faults) {
  string text = "[A]\n";
  for (int i = 0; i < 10001; ++i) {
    text += "x\n";
  }
  EXPECT_THAT(run_cfc({"check", "-"}, text).err,
              testing::EndsWith("\ncfc: check: stdin: more faults than can be of use: the rest was "
                                "not looked at\n"));
}
