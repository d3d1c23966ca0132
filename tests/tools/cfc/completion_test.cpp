// The bash completion, sourced by a bash and asked as readline would ask it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/cfc/run_program.h"

using std::string;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

namespace {

std::vector<string> lines_of(const string& text) {
  std::istringstream stream{text};
  std::vector<string> lines;
  for (string each; std::getline(stream, each);) {
    lines.push_back(each);
  }
  return lines;
}

string quoted_for_bash(const string& word) {
  return "'" + std::regex_replace(word, std::regex{"'"}, "'\\''") + "'";
}

/// What completing the last of these words offers. The factory file is one of the test's own.
std::vector<string> offers(const std::vector<string>& words) {
  string script = "source " PROREFLAX_SOURCE_DIR
                  "/tools/completion/cfc.bash\n"
                  "CFC_FACTORY_FILE=/dev/fd/3\n"
                  "COMP_WORDS=(";
  for (const string& each : words) {
    script += quoted_for_bash(each) + " ";
  }
  script += ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) +
            "\n_cfc cfc \"${COMP_WORDS[-1]}\" 3<<'END'\n"
            "\n[LAN]\nLanIPAddr=10.0.0.1\nLanMask=255.0.0.0\nab=\n[WAN]\nConnType=1\n"
            "[TWO WORDS]\nb c=1\n[LAN]\nLanLate=1\nEND\n"
            "printf '%s\\n' \"${COMPREPLY[@]}\"";
  const ended bash = started_program{"/bin/bash", {"--norc", "-c", script}}.wait();
  EXPECT_EQ(bash.err, "");
  std::vector<string> lines = lines_of(bash.out);
  std::erase(lines, "");
  return lines;
}

std::vector<string> found_in(const string& text, const char* pattern) {
  const std::regex wanted{pattern};
  std::vector<string> found;
  for (std::sregex_iterator each{text.begin(), text.end(), wanted}, end; each != end; ++each) {
    found.push_back((*each)[1]);
  }
  return found;
}

}  // namespace

TEST(Completion, is_registered_for_cfc) {
  const ended bash = started_program{"/bin/bash",
                                     {"--norc", "-c",
                                      "source " PROREFLAX_SOURCE_DIR
                                      "/tools/completion/cfc.bash && complete -p cfc"}}
                         .wait();
  EXPECT_EQ(bash.out, "complete -F _cfc cfc\n");
}

TEST(Completion, offers_the_verbs_that_the_program_knows) {
  const string help = run_cfc({"--help"}).out;
  const string verbs = help.substr(help.find("Subcommands:"));
  EXPECT_THAT(offers({"cfc", ""}), UnorderedElementsAreArray(found_in(verbs, "\n  ([a-z]+) ")));
  EXPECT_THAT(offers({"cfc", "s"}), UnorderedElementsAre("set", "status", "show", "sections"));
  EXPECT_THAT(offers({"cfc", "x"}), IsEmpty());
  EXPECT_THAT(offers({"cfc", "help", "fl"}), ElementsAre("flush"));
}

TEST(Completion, offers_the_options_that_each_verb_knows) {
  EXPECT_THAT(offers({"cfc", "-"}), UnorderedElementsAre("--help", "--version"));
  for (const string& verb : offers({"cfc", ""})) {
    const string help = run_cfc({verb, "--help"}).out;
    EXPECT_THAT(offers({"cfc", verb, "--"}),
                UnorderedElementsAreArray(found_in(help, "[ ,](--[a-z-]+)[ \n]")))
        << verb;
  }
}

TEST(Completion, offers_the_verbs_of_a_family_and_their_options) {
  for (const char* family : {"wireless", "firmware"}) {
    const string help = run_cfc({family, "--help"}).out;
    const std::vector<string> verbs =
        found_in(help.substr(help.find("Subcommands:")), "\n  ([a-z]+) ");
    EXPECT_THAT(offers({"cfc", family, ""}), UnorderedElementsAreArray(verbs));
    for (const string& verb : verbs) {
      EXPECT_THAT(offers({"cfc", family, verb, "--"}),
                  UnorderedElementsAreArray(
                      found_in(run_cfc({family, verb, "--help"}).out, "[ ,](--[a-z-]+)[ \n]")))
          << verb;
    }
  }
  EXPECT_THAT(offers({"cfc", "wireless", "channels", ""}), ElementsAre("1", "2", "3", "4", "5"));
  for (const char* verb : {"info", "write", "pack"}) {
    EXPECT_THAT(offers({"cfc", "firmware", verb, PROREFLAX_SOURCE_DIR "/CMakeLi"}),
                ElementsAre(PROREFLAX_SOURCE_DIR "/CMakeLists.txt"));
  }
  EXPECT_THAT(offers({"cfc", "firmware", "pack", "--type", ""}),
              UnorderedElementsAre("kernel", "ramdisk", "multi"));
  EXPECT_THAT(
      offers({"cfc", "firmware", "pack", "--type", "multi", "-o", PROREFLAX_SOURCE_DIR "/CMakeLi"}),
      ElementsAre(PROREFLAX_SOURCE_DIR "/CMakeLists.txt"));
}

TEST(Completion, offers_the_types) {
  EXPECT_THAT(offers({"cfc", "get", "--type", ""}),
              UnorderedElementsAre("string", "u8", "u16", "u32", "ip", "binary"));
  EXPECT_THAT(offers({"cfc", "set", "A", "b", "--type", "u"}),
              UnorderedElementsAre("u8", "u16", "u32"));
  // bash breaks a word at "=".
  EXPECT_THAT(offers({"cfc", "get", "--type", "=", "i"}), ElementsAre("ip"));
}

TEST(Completion, offers_files_to_batch_and_check) {
  for (const char* verb : {"batch", "check", "import"}) {
    EXPECT_THAT(offers({"cfc", verb, PROREFLAX_SOURCE_DIR "/CMakeLi"}),
                ElementsAre(PROREFLAX_SOURCE_DIR "/CMakeLists.txt"));
  }
  EXPECT_THAT(offers({"cfc", "batch", "--json", PROREFLAX_SOURCE_DIR "/CMakePre"}),
              Contains(PROREFLAX_SOURCE_DIR "/CMakePresets.json"));
}

TEST(Completion, offers_the_sections_of_the_factory_file) {
  EXPECT_THAT(offers({"cfc", "get", ""}), UnorderedElementsAre("LAN", "WAN", "TWO\\ WORDS"));
  EXPECT_THAT(offers({"cfc", "set", "--type", "u8", "W"}), ElementsAre("WAN"));
  EXPECT_THAT(offers({"cfc", "flush", ""}), IsEmpty());
}

TEST(Completion, offers_the_keys_of_the_section_in_the_factory_file) {
  EXPECT_THAT(offers({"cfc", "get", "LAN", ""}),
              UnorderedElementsAre("LanIPAddr", "LanMask", "LanLate", "ab"));
  EXPECT_THAT(offers({"cfc", "set", "--type", "ip", "LAN", "LanI"}), ElementsAre("LanIPAddr"));
  EXPECT_THAT(offers({"cfc", "get", "TWO\\ WORDS", ""}), ElementsAre("b\\ c"));
  EXPECT_THAT(offers({"cfc", "get", "NONE", ""}), IsEmpty());
  EXPECT_THAT(offers({"cfc", "get", "LAN", "ab", ""}), IsEmpty());
}

TEST(Completion, offers_the_sections_and_keys_that_the_program_knows) {
  const string cfc = PROREFLAX_DEVICE_ROOT "/programs/cfc";
  EXPECT_THAT(
      offers({cfc, "show", "WLS_"}),
      UnorderedElementsAre("WLS_DOMAIN", "WLS_WEP", "WLS_EXT", "WLS_WPA", "WLS_ACL", "WLS_WDS"));
  EXPECT_THAT(offers({cfc, "edit", "SN"}), UnorderedElementsAre("SNTPC", "SNXCAM"));
  // The factory file's beside them.
  EXPECT_THAT(offers({cfc, "get", "LAN", "LanI"}), ElementsAre("LanIPAddr"));
  EXPECT_THAT(offers({cfc, "get", "LAN", "LanL"}), ElementsAre("LanLate"));
  EXPECT_THAT(offers({cfc, "set", "RPTIPS_DB", ""}),
              UnorderedElementsAre("host\\[0\\]", "host\\[1\\]", "port\\[0\\]", "port\\[1\\]"));
}

TEST(Completion, offers_the_actions_of_acl) {
  EXPECT_THAT(offers({"cfc", "acl", ""}), UnorderedElementsAre("list", "add", "delete"));
}

TEST(Completion, is_silent_without_a_factory_file) {
  const ended bash = started_program{"/bin/bash",
                                     {"--norc", "-c",
                                      "source " PROREFLAX_SOURCE_DIR
                                      "/tools/completion/cfc.bash; CFC_FACTORY_FILE=/nowhere; "
                                      "COMP_WORDS=(cfc get ''); COMP_CWORD=2; _cfc cfc ''; "
                                      "echo ${#COMPREPLY[@]}"}}
                         .wait();
  EXPECT_EQ(bash.out, "0\n");
  EXPECT_EQ(bash.err, "");
}
