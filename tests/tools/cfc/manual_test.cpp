// The manual page names what the program knows: a verb, option or code that is added and not
// written down goes red here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "tests/support/files.h"
#include "tests/tools/cfc/run_program.h"

using std::string;
using testing::HasSubstr;

namespace {

string manual() {
  return files::text_of(PROREFLAX_SOURCE_DIR "/docs/man/cfc.1");
}

std::vector<string> found_in(const string& text, const char* pattern) {
  const std::regex wanted{pattern};
  std::vector<string> found;
  for (std::sregex_iterator each{text.begin(), text.end(), wanted}, end; each != end; ++each) {
    found.push_back((*each)[1]);
  }
  return found;
}

std::vector<string> verbs() {
  const string help = run_cfc({"--help"}).out;
  return found_in(help.substr(help.find("Subcommands:")), "\n  ([a-z]+) ");
}

}  // namespace

TEST(Manual, names_every_verb) {
  const string page = manual();
  ASSERT_EQ(verbs().size(), 19U);
  for (const string& verb : verbs()) {
    EXPECT_THAT(page, HasSubstr("\n.It Cm " + verb)) << verb;
    EXPECT_THAT(page, HasSubstr("\n.Cm " + verb)) << verb << " in the synopsis";
  }
}

TEST(Manual, names_every_option) {
  const string page = manual();
  for (const string& verb : verbs()) {
    for (const string& option : found_in(run_cfc({verb, "--help"}).out, "[ ,]-(-[a-z-]+)[ \n]")) {
      const string written = std::regex_replace(option, std::regex{"-"}, "\\-");
      EXPECT_THAT(page, HasSubstr("Fl " + written)) << verb;
    }
  }
}

TEST(Manual, names_every_verb_of_a_family) {
  const string page = manual();
  for (const string& family : verbs()) {
    const string help = run_cfc({family, "--help"}).out;
    const std::size_t members = help.find("Subcommands:");
    for (const string& verb :
         found_in(members == string::npos ? "" : help.substr(members), "\n  ([a-z]+) ")) {
      EXPECT_THAT(page, HasSubstr("\n.It Cm " + family + " " + verb)) << family;
      EXPECT_THAT(page, HasSubstr("\n.Cm " + family + " " + verb)) << family << " in the synopsis";
      for (const string& option :
           found_in(run_cfc({family, verb, "--help"}).out, "[ ,]-(-[a-z-]+)[ \n]")) {
        const string written = std::regex_replace(option, std::regex{"-"}, "\\-");
        EXPECT_THAT(page, HasSubstr("Fl " + written)) << family << " " << verb;
      }
    }
  }
}

TEST(Manual, names_every_exit_status_and_type) {
  const string page = manual();
  for (const char* status : {".It 0", ".It 1", ".It 2", ".It 3"}) {
    EXPECT_THAT(page, HasSubstr(status));
  }
  for (const char* type : {"string", "u8", "u16", "u32", "ip", "binary"}) {
    EXPECT_THAT(page, HasSubstr(string{"\n.It Cm "} + type + "\n"));
  }
}
