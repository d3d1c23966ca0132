#include "tools/cfc/sections/edit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "tests/support/files.h"
#include "tests/support/scripted_service.h"
#include "tests/tools/cfc/run_program.h"

using namespace cfc;
using namespace proreflax::settings;
using std::string;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// LAN with each number 0 and each address 10.0.0.1, but no DnsSrv2.
section_values lan() {
  section_values values{.section = find_known_section("LAN"), .entries = {}, .sentence = {}};
  for (const known_key& each : keys_of(*values.section)) {
    values.entries.push_back({each, kind_of(each.which) == value_kind::ip ? "10.0.0.1" : "0x00"});
  }
  values.entries.back().text.reset();
  return values;
}

const set_request& set_of(const transaction_step& line) {
  return std::get<set_request>(line.asked.value());
}

/// A section whose keys, in the order of its table, hold these texts; further keys are not there.
section_values section_with(const char* section, const std::vector<std::optional<string>>& texts) {
  section_values values{.section = find_known_section(section), .entries = {}, .sentence = {}};
  for (const known_key& each : keys_of(*values.section)) {
    const std::size_t place = values.entries.size();
    values.entries.push_back({each, place < texts.size() ? texts[place] : std::nullopt});
  }
  return values;
}

/// What the only changed line of a text sets, as "KEY=VALUE"; empty unless there is just one.
string only_set_of(const edited_text& edited) {
  EXPECT_TRUE(edited.faults.empty());
  EXPECT_EQ(edited.sets.size(), 1U);
  return edited.sets.size() == 1 ? set_of(edited.sets[0]).key + "=" + set_of(edited.sets[0]).value
                                 : "";
}

/// Section LAN on a service that does what a test wants, and an editor that puts LanGw=10.0.0.9 in
/// the place of the text. Six values are read, then the former one of LanGw; the eighth request
/// sets it.
class EditOfASection : public testing::Test {
 protected:
  EditOfASection() {
    const string editor = folder_.path() / "editor";
    files::write(editor, "echo LanGw=10.0.0.9 >\"$1\"\n");
    setenv("VISUAL", ("/bin/sh " + editor).c_str(), 1);
    setenv("TMPDIR", folder_.path().c_str(), 1);
  }
  ~EditOfASection() override {
    unsetenv("TMPDIR");
    unsetenv("VISUAL");
  }

  std::vector<string> names_in_folder() const {
    std::vector<string> names;
    for (const auto& each : std::filesystem::directory_iterator{folder_.path()}) {
      names.push_back(each.path().filename());
    }
    return names;
  }

  files::temporary_folder folder_;
  scripted_service service_;
};

}  // namespace

TEST(EditedText, the_text_as_it_was_changes_nothing) {
  const edited_text edited = read_edited(lan(), text_to_edit(lan()));
  EXPECT_TRUE(edited.sets.empty());
  EXPECT_TRUE(edited.faults.empty());
}

TEST(EditedText, the_text_shows_values_as_a_person_reads_them) {
  const string text = text_to_edit(lan());
  EXPECT_THAT(text, HasSubstr("\nConnType=0\nLanIPAddr=10.0.0.1\n"));
  EXPECT_THAT(text, HasSubstr("\n# DnsSrv2=\n"));
}

TEST(EditedText, only_changed_lines_are_set_and_missing_ones_stay) {
  const edited_text edited =
      read_edited(lan(), "# note\n\nConnType=2\nLanIPAddr=10.0.0.1\nDnsSrv2=10.0.0.9");
  ASSERT_EQ(edited.sets.size(), 2U);
  EXPECT_EQ(edited.sets[0].number, 3U);
  EXPECT_EQ(set_of(edited.sets[0]).key + "=" + set_of(edited.sets[0]).value, "ConnType=2");
  EXPECT_EQ(set_of(edited.sets[0]).kind, value_kind::u32);
  EXPECT_EQ(set_of(edited.sets[1]).key, "DnsSrv2");
}

TEST(EditedText, what_is_wrong_is_told_with_its_line) {
  const edited_text edited = read_edited(
      lan(), "ConnType=x\nnothing\nFrob=1\nLanGw=10.0.0.2\nLanGw=10.0.0.3\nLanIPAddr=\n");
  std::vector<std::size_t> lines;
  for (const edit_fault& each : edited.faults) {
    lines.push_back(each.line);
  }
  EXPECT_EQ(lines, (std::vector<std::size_t>{1, 2, 3, 5, 6}));
  EXPECT_THAT(edited.faults[0].sentence, HasSubstr("u32"));
  EXPECT_THAT(edited.faults[2].sentence, HasSubstr("section \"LAN\" has no key \"Frob\""));
  EXPECT_THAT(edited.faults[3].sentence, HasSubstr("twice"));
}

TEST(EditedText, a_value_may_hold_an_equals_sign) {
  EXPECT_EQ(only_set_of(read_edited(section_with("WEBLOG", {"admin"}), "user_name=a=b\n")),
            "user_name=a=b");
}

TEST(EditedText, a_key_that_is_not_there_can_be_made_with_an_empty_value) {
  EXPECT_EQ(only_set_of(read_edited(section_with("WEBLOG", {"admin"}), "password=\n")),
            "password=");
}

TEST(EditedText, bytes_can_be_emptied) {
  EXPECT_EQ(
      only_set_of(read_edited(section_with("WLS_ACL", {"0x018028430c00"}), "macFilters[0]=\n")),
      "macFilters[0]=");
}

TEST_F(EditOfASection, a_section_that_the_device_lacks_is_not_there) {
  service_.has_section("WEBLOG");
  const ended edit = run_cfc({"edit", "LAN"});
  EXPECT_EQ(edit.status, 3);
  EXPECT_THAT(edit.err, StartsWith("cfc: edit: section \"LAN\": 209 CFC_ERR_NO_SECTION: "));
  EXPECT_THAT(service_.requests(), ElementsAre("get LAN ConnType"));
}

TEST_F(EditOfASection, a_set_that_the_service_refuses_is_told_with_its_line) {
  service_.holds("LAN", "LanGw", "10.0.0.1");
  service_.answers(8, 208);
  const ended edit = run_cfc({"edit", "LAN"});
  EXPECT_EQ(edit.status, 1);
  EXPECT_EQ(edit.err,
            "LAN:1: set section \"LAN\" key \"LanGw\": 208 CFC_ERR_BUSY: the store is being "
            "written out; try again\n"
            "cfc: edit: LAN: a line failed; of the sets before it 0 were put back and 0 were "
            "not\n");
  EXPECT_EQ(service_.value("LAN", "LanGw"), "10.0.0.1");
}

TEST_F(EditOfASection, the_keys_that_interrupt_end_the_program_again_behind_its_editor) {
  service_.holds("LAN", "LanGw", "10.0.0.1");
  std::size_t last = 0;
  for (const int signal : {SIGINT, SIGQUIT}) {
    last += 7;
    EXPECT_EQ(run_cfc_and_signal_it(signal, service_, last, {"edit", "LAN"}).status, -signal);
    EXPECT_EQ(service_.requests().size(), last);
    EXPECT_EQ(service_.value("LAN", "LanGw"), "10.0.0.1");
    EXPECT_THAT(names_in_folder(), ElementsAre("editor")) << "its file is gone";
  }
}
