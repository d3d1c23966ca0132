// The verbs of whole sections against the real service, which loaded the device's factory file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/device_root.h"
#include "tests/support/files.h"
#include "tests/support/request_queue.h"
#include "tests/support/service_process.h"
#include "tests/tools/cfc/run_program.h"

using nlohmann::json;
using std::string;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

string shipped_factory_text() {
  return files::text_of(PROREFLAX_SOURCE_DIR "/device/etc/config-file.ini");
}

class CfcSections : public testing::Test {
 protected:
  CfcSections() { start_with(shipped_factory_text()); }
  ~CfcSections() override {
    unsetenv("VISUAL");
    unsetenv("EDITOR");
    unsetenv("TMPDIR");
  }

  /// A device of this factory text, nothing changed since.
  void start_with(const string& factory) {
    service_.reset();
    device_root::clear();
    device_root::install_flash_tool();
    set_factory(factory);
    service_.emplace();
  }

  static void set_factory(const string& text) { device_root::write("/etc/config-file.ini", text); }

  static string value(const string& section, const string& key) {
    return run_cfc({"get", section, key}).out;
  }

  /// Runs `edit` with a shell script for an editor; $1 is the file.
  static ended edit(const string& section, const string& script) {
    set_editor(script);
    return run_cfc({"edit", section});
  }

  static void set_editor(const string& script, const char* variable = "VISUAL") {
    const string path = "/var/editor-of-" + string{variable};
    device_root::write(path, "#!/bin/sh\n" + script + "\n");
    setenv(variable, ("/bin/sh " + device_root::path(path).string()).c_str(), 1);
  }

  /// The same on a terminal where an answer is typed. The editor makes a text that is refused,
  /// corrects it when it is started again, and notes what it found each time.
  static ended edit_twice(const string& answer) {
    device_root::write("/var/seen", "");
    set_editor("cat \"$1\" >>" + device_root::path("/var/seen").string() +
               "\nif grep -q '^LanGw=x' \"$1\"; then sed -i 's/^LanGw=x/LanGw=10.0.0.9/' \"$1\"\n"
               "else printf '# mine\\nConnType=7\\nLanGw=x\\n' >\"$1\"; fi");
    return run_cfc_on_terminal({"edit", "LAN"}, answer);
  }

  /// The editor waits for end_editor(); then it sets LanGw to 10.0.0.9.
  static void set_waiting_editor() {
    std::filesystem::remove(device_root::path("/var/go"));
    std::filesystem::remove(device_root::path("/var/ended"));
    device_root::write("/var/file", "");
    set_editor("printf %s \"$1\" >" + device_root::path("/var/file").string() + "\nuntil [ -e " +
               device_root::path("/var/go").string() +
               " ]; do sleep 0.02; done\nsed -i 's/^LanGw=.*/LanGw=10.0.0.9/' \"$1\"\ntouch " +
               device_root::path("/var/ended").string());
  }

  /// The path of the file in which the waiting editor works; empty when it never starts.
  static string file_in_editor() {
    const auto path = [] { return device_root::read("/var/file").value_or(""); };
    eventually([&] { return path() != ""; });
    return path();
  }

  /// Returns when it has seen the word: whoever started it may be gone, and it would wait for ever.
  static void end_editor() {
    device_root::write("/var/go", "");
    EXPECT_TRUE(eventually([] { return device_root::exists("/var/ended"); }));
  }

  static string seen() { return device_root::read("/var/seen").value_or(""); }

  std::optional<service_process> service_;
};

}  // namespace

// ---- show and sections --------------------------------------------------------------------------

TEST_F(CfcSections, show_prints_a_section_as_a_person_reads_it) {
  const ended lan = run_cfc({"show", "LAN"});
  EXPECT_EQ(lan.status, 0) << lan.err;
  EXPECT_THAT(lan.out, StartsWith("[LAN]\nConnType    0               u32\n"
                                  "LanIPAddr   192.168.62.1    ip\n"));
  EXPECT_THAT(run_cfc({"show", "WLS_ACL"}).out, HasSubstr("macFilters[0..79]  empty"));
  EXPECT_THAT(run_cfc({"show", "WIRELESS"}).out, HasSubstr(" 02:00:5e:10:20:30 "));
}

TEST_F(CfcSections, show_hides_passwords_unless_secrets_are_asked_for) {
  EXPECT_THAT(run_cfc({"show", "WEBLOG"}).out,
              AllOf(HasSubstr("user_name  admin"), HasSubstr("password   (hidden)")));
  EXPECT_THAT(run_cfc({"show", "WEBLOG", "--secrets"}).out, HasSubstr("password   admin"));
  EXPECT_THAT(run_cfc({"show", "WEBLOG", "--json"}).out, HasSubstr("\"hidden\":true"));
  EXPECT_THAT(run_cfc({"show", "WEBLOG", "--json", "--secrets"}).out, Not(HasSubstr("hidden")));
}

TEST_F(CfcSections, show_prints_every_section_and_so_does_json) {
  const ended all = run_cfc({"show"});
  EXPECT_EQ(all.status, 0) << all.err;
  EXPECT_THAT(all.out, Not(HasSubstr("(not set)")));
  EXPECT_THAT(all.out, Not(HasSubstr("its value is none")));
  EXPECT_THAT(all.out, Not(HasSubstr("change-me-please")));
  std::istringstream lines{run_cfc({"show", "--json"}).out};
  int count = 0;
  for (string each; std::getline(lines, each); ++count) {
    EXPECT_FALSE(json::parse(each)["entries"].empty());
  }
  EXPECT_EQ(count, 45);
}

TEST_F(CfcSections, an_unknown_section_is_not_there) {
  const ended show = run_cfc({"show", "NONE"});
  EXPECT_EQ(show.status, 3);
  EXPECT_EQ(show.out, "");
  EXPECT_THAT(show.err, HasSubstr("\"NONE\" is not known here"));
  for (const string name : {"NONE", ""}) {
    const ended edit = run_cfc({"edit", name});
    EXPECT_EQ(edit.status, 3);
    EXPECT_EQ(edit.err, "cfc: edit: section \"" + name +
                            "\" is not known here; cfc sections lists those that are\n");
  }
  EXPECT_EQ(run_cfc({"sections", "NONE"}).status, 3);
}

TEST_F(CfcSections, sections_are_listed_without_the_service) {
  service_.reset();
  EXPECT_THAT(run_cfc({"sections"}).out, HasSubstr("\nLAN\n  ConnType "));
  EXPECT_THAT(run_cfc({"sections", "WLS_ACL"}).out, StartsWith("WLS_ACL\n  macFilters[0..79] "));
  const json schema = json::parse(run_cfc({"sections", "WLS_ACL", "--json"}).out);
  EXPECT_EQ(schema["section"], "WLS_ACL");
  EXPECT_EQ(schema["fields"][0]["count"], 80);
  EXPECT_EQ(schema["fields"][0]["bytes"], 6);
}

TEST_F(CfcSections, without_a_service_every_verb_says_so) {
  service_->end(SIGKILL);
  for (const std::vector<string>& words :
       {std::vector<string>{"show"}, {"export"}, {"edit", "LAN"}, {"acl", "list"}, {"time"}}) {
    const ended refused = run_cfc(words);
    EXPECT_EQ(refused.status, 1) << words[0];
    EXPECT_EQ(refused.out, "") << words[0];
    EXPECT_THAT(refused.err, HasSubstr("230 CFC_ERR_NO_SEM")) << words[0];
  }
  const ended diff = run_cfc({"diff"});
  EXPECT_EQ(diff.status, 2);
  EXPECT_THAT(diff.err, AllOf(StartsWith("cfc: diff: section \""), HasSubstr("\": 230 ")));
}

// ---- set ----------------------------------------------------------------------------------------

TEST_F(CfcSections, set_refuses_what_a_getter_would_not_read_unless_forced) {
  const ended refused = run_cfc({"set", "LAN", "LanIPAddr", "10.0.0"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("this key takes an IPv4 address"));
  EXPECT_EQ(value("LAN", "LanIPAddr"), "192.168.62.1\n");
  EXPECT_EQ(run_cfc({"set", "LAN", "LanIPAddr", "10.0.0", "--force"}).status, 0);
  EXPECT_EQ(value("LAN", "LanIPAddr"), "10.0.0\n");
  EXPECT_THAT(run_cfc({"show", "LAN"}).out, HasSubstr("ip (its value is none)"));
}

// ---- export and import --------------------------------------------------------------------------

TEST_F(CfcSections, what_is_exported_is_what_the_loader_and_import_read) {
  for (const std::vector<string>& words : {std::vector<string>{"export"}, {"export", "--json"}}) {
    const string before = run_cfc(words).out;
    ASSERT_EQ(run_cfc({"set", "LAN", "LanIPAddr", "10.0.0.5"}).status, 0);
    ASSERT_EQ(run_cfc({"set", "WEBLOG", "password", "other"}).status, 0);
    ASSERT_NE(run_cfc(words).out, before);
    const ended import = run_cfc({"import", "-"}, before);
    EXPECT_EQ(import.status, 0) << import.err;
    EXPECT_EQ(import.out + import.err, "");
    EXPECT_EQ(run_cfc(words).out, before);
  }
  EXPECT_EQ(run_cfc({"check", "-"}, run_cfc({"export"}).out).status, 0);
}

TEST_F(CfcSections, an_import_is_refused_as_a_whole_with_its_lines) {
  const ended grammar = run_cfc({"import", "-"}, "[LAN]\nConnType=7\nnothing\n");
  EXPECT_EQ(grammar.status, 1);
  EXPECT_THAT(grammar.err, HasSubstr("stdin:3: "));
  const ended rule = run_cfc({"import", "-"}, "[LAN]\nConnType=7\nLanGw=x\n");
  EXPECT_EQ(rule.status, 1);
  EXPECT_THAT(rule.err, HasSubstr("stdin:3: set section \"LAN\" key \"LanGw\""));
  const ended section =
      run_cfc({"import", "-"}, "{\"LAN\":{\"ConnType\":7},\"NONE\":{\"k\":\"v\"}}");
  EXPECT_EQ(section.status, 3);
  EXPECT_THAT(section.err, HasSubstr("209 CFC_ERR_NO_SECTION"));
  EXPECT_EQ(run_cfc({"import", "/nowhere"}).status, 1);
  EXPECT_EQ(value("LAN", "ConnType"), "0x00000000\n");
}

// ---- diff ---------------------------------------------------------------------------------------

TEST_F(CfcSections, diff_tells_what_differs_from_the_factory_file) {
  const ended same = run_cfc({"diff"});
  EXPECT_EQ(same.status, 0) << same.err;
  EXPECT_EQ(same.out, "");
  ASSERT_EQ(run_cfc({"set", "LAN", "ConnType", "0"}).status, 0);  // says the same
  EXPECT_EQ(run_cfc({"diff"}).status, 0);
  ASSERT_EQ(run_cfc({"set", "LAN", "LanIPAddr", "10.0.0.5"}).status, 0);
  ASSERT_EQ(run_cfc({"set", "WEBLOG", "password", "other"}).status, 0);
  const ended other = run_cfc({"diff"});
  EXPECT_EQ(other.status, 1);
  EXPECT_EQ(other.out,
            "[LAN]\n-LanIPAddr=192.168.62.1\n+LanIPAddr=10.0.0.5\n"
            "[WEBLOG]\n-password=(hidden)\n+password=(hidden)\n");
  EXPECT_THAT(run_cfc({"diff", "--secrets"}).out, EndsWith("-password=admin\n+password=other\n"));
}

TEST_F(CfcSections, diff_without_a_factory_file_is_trouble) {
  std::filesystem::remove(device_root::path("/etc/config-file.ini"));
  const ended trouble = run_cfc({"diff"});
  EXPECT_EQ(trouble.status, 2);
  EXPECT_THAT(trouble.err, HasSubstr("config-file.ini: cannot be opened"));
}

TEST_F(CfcSections, diff_tells_what_only_one_side_has) {
  start_with("[LAN]\nConnType=0x00000000\n[WEBLOG]\npassword=\n[MYAPP]\nkey=v\n");
  const ended same = run_cfc({"diff"});
  EXPECT_EQ(same.status, 0) << same.err;
  EXPECT_EQ(same.out + same.err, "");
  ASSERT_EQ(run_cfc({"set", "LAN", "ConnType", "0x00000007"}).status, 0);
  ASSERT_EQ(run_cfc({"set", "LAN", "LanGw", "10.0.0.1"}).status, 0);
  ASSERT_EQ(run_cfc({"set", "WEBLOG", "password", "new"}).status, 0);
  EXPECT_EQ(run_cfc({"diff"}).out,
            "[LAN]\n-ConnType=0\n+ConnType=7\n+LanGw=10.0.0.1\n"
            "[WEBLOG]\n-password=\n+password=(hidden)\n");
  set_factory("[USERS_DB]\npasswd[0]=secret\n");
  const ended other = run_cfc({"diff"});
  EXPECT_EQ(other.status, 1);
  EXPECT_THAT(other.out, StartsWith("[USERS_DB]\n-passwd[0]=(hidden)\n[LAN]\n+ConnType=7\n"));
}

TEST_F(CfcSections, diff_takes_the_last_of_several_factory_values_as_the_loader_does) {
  start_with("[LAN]\nConnType=1\nConnType=2\n");
  EXPECT_EQ(value("LAN", "ConnType"), "2\n");
  EXPECT_EQ(run_cfc({"diff"}).status, 0);
}

TEST_F(CfcSections, diff_keeps_control_characters_from_the_terminal) {
  start_with("[MY\x1b]\nke\x1by=\x1b[2J\n");
  ASSERT_EQ(run_cfc({"set", "MY\x1b", "ke\x1by", "v"}).status, 0);
  EXPECT_EQ(run_cfc({"diff"}).out, "[MY\\x1b]\n-ke\\x1by=\\x1b[2J\n+ke\\x1by=v\n");
}

TEST_F(CfcSections, diff_with_a_factory_file_that_breaks_the_rules_is_trouble) {
  set_factory("[LAN]\nConnType=7\nnothing\n");
  const ended trouble = run_cfc({"diff"});
  EXPECT_EQ(trouble.status, 2);
  EXPECT_EQ(trouble.out, "");
  EXPECT_THAT(trouble.err,
              EndsWith("/etc/config-file.ini: breaks the rules that cfc check tells\n"));
}

// ---- edit ---------------------------------------------------------------------------------------

TEST_F(CfcSections, edit_sets_what_was_changed) {
  const ended edited = edit("LAN", "sed -i 's/^LanIPAddr=.*/LanIPAddr=10.0.0.5/' \"$1\"");
  EXPECT_EQ(edited.status, 0) << edited.err;
  EXPECT_EQ(value("LAN", "LanIPAddr"), "10.0.0.5\n");
  EXPECT_EQ(value("LAN", "ConnType"), "0x00000000\n");
}

TEST_F(CfcSections, edit_takes_addresses_with_colons) {
  const ended edited =
      edit("WLS_ACL", "sed -i 's/^\\(macFilters.5.\\)=.*/\\1=00:0c:43:28:80:01/' \"$1\"");
  EXPECT_EQ(edited.status, 0) << edited.err;
  EXPECT_EQ(value("WLS_ACL", "macFilters[5]"), "0x018028430c00\n");
}

TEST_F(CfcSections, edit_refuses_the_whole_text_with_line_numbers) {
  const ended refused = edit("LAN", "printf 'ConnType=7\\nLanGw=x\\n' >\"$1\"");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err,
              AllOf(StartsWith("LAN:2: key \"LanGw\""), HasSubstr("nothing was changed")));
  EXPECT_EQ(value("LAN", "ConnType"), "0x00000000\n");
}

TEST_F(CfcSections, edit_goes_on_with_the_refused_text_unless_the_answer_is_no) {
  for (const char* answer : {"y\n", "Yes\n", "\n"}) {
    ASSERT_EQ(run_cfc({"set", "LAN", "ConnType", "0"}).status, 0);
    ASSERT_EQ(run_cfc({"set", "LAN", "LanGw", "10.0.0.1"}).status, 0);
    const ended edited = edit_twice(answer);
    EXPECT_EQ(edited.status, 0) << answer;
    EXPECT_EQ(edited.out, "");
    EXPECT_THAT(edited.err,
                AllOf(StartsWith("LAN:3: key \"LanGw\": "), EndsWith("\nGo on editing? [Y/n]\n")));
    EXPECT_EQ(std::ranges::count(edited.err, '\n'), 2) << edited.err;
    EXPECT_THAT(seen(),
                AllOf(StartsWith("# Section LAN."), EndsWith("\n# mine\nConnType=7\nLanGw=x\n")));
    EXPECT_EQ(value("LAN", "ConnType"), "0x00000007\n") << answer;
    EXPECT_EQ(value("LAN", "LanGw"), "10.0.0.9\n") << answer;
  }
}

TEST_F(CfcSections, edit_gives_a_refused_text_up_when_the_answer_is_no_or_none) {
  const string before = run_cfc({"show", "LAN"}).out;
  for (const char* answer : {"n\n", "No\n", "\x04"}) {
    const ended refused = edit_twice(answer);
    EXPECT_EQ(refused.status, 1) << answer;
    EXPECT_THAT(refused.err,
                AllOf(StartsWith("LAN:3: key \"LanGw\": "),
                      EndsWith("\nGo on editing? [Y/n]\n"
                               "cfc: edit: the text was refused; nothing was changed\n")));
    EXPECT_THAT(seen(), Not(HasSubstr("# mine"))) << "no second editor";
    EXPECT_EQ(run_cfc({"show", "LAN"}).out, before) << answer;
  }
}

TEST_F(CfcSections, edit_does_not_ask_without_a_terminal) {
  const ended refused = edit("LAN", "echo LanGw=x >\"$1\"");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, Not(HasSubstr("Go on editing")));
  EXPECT_THAT(refused.err, EndsWith("\ncfc: edit: the text was refused; nothing was changed\n"));
}

TEST_F(CfcSections, edit_survives_the_keys_that_interrupt_its_editor) {
  set_waiting_editor();
  started_program edit{"cfc", {"edit", "LAN"}};
  ASSERT_NE(file_in_editor(), "");
  edit.send(SIGINT);
  edit.send(SIGQUIT);
  end_editor();
  EXPECT_EQ(edit.wait().status, 0);
  EXPECT_EQ(value("LAN", "LanGw"), "10.0.0.9\n");
}

TEST_F(CfcSections, edit_that_a_signal_ends_leaves_no_file) {
  for (const int signal : {SIGHUP, SIGTERM}) {
    set_waiting_editor();
    started_program edit{"cfc", {"edit", "LAN"}};
    const string file = file_in_editor();
    EXPECT_TRUE(std::filesystem::exists(file)) << file;
    edit.send(signal);
    EXPECT_EQ(edit.wait().status, -signal);
    EXPECT_FALSE(std::filesystem::exists(file)) << file;
    end_editor();
  }
}

TEST_F(CfcSections, edit_survives_a_signal_that_it_was_started_to_ignore) {
  set_waiting_editor();
  const auto before = std::signal(SIGHUP, SIG_IGN);  // as nohup does
  started_program edit{"cfc", {"edit", "LAN"}};
  std::signal(SIGHUP, before);
  ASSERT_NE(file_in_editor(), "");
  edit.send(SIGHUP);
  end_editor();
  EXPECT_EQ(edit.wait().status, 0);
  EXPECT_EQ(value("LAN", "LanGw"), "10.0.0.9\n");
}

TEST_F(CfcSections, the_editor_itself_can_be_interrupted) {
  for (const char* key : {"INT", "QUIT", "PIPE"}) {
    const ended edited =
        edit("LAN", string{"echo LanGw=10.0.0.9 >\"$1\"; ulimit -c 0; kill -"} + key + " $$");
    EXPECT_EQ(edited.status, 1) << key;
    EXPECT_THAT(edited.err, EndsWith("cfc: edit: the editor failed; nothing was changed\n")) << key;
  }
}

TEST_F(CfcSections, an_editor_that_took_the_place_of_its_shell_can_be_interrupted) {
  set_editor("echo LanGw=10.0.0.9 >\"$1\"; kill -INT $$");
  setenv("VISUAL", ("exec " + string{std::getenv("VISUAL")}).c_str(), 1);
  const ended edited = run_cfc({"edit", "LAN"});
  EXPECT_EQ(edited.status, 1);
  EXPECT_EQ(edited.err, "cfc: edit: the editor failed; nothing was changed\n");
}

TEST_F(CfcSections, edit_changes_nothing_when_the_editor_fails_or_changes_nothing) {
  EXPECT_EQ(edit("LAN", "echo ConnType=7 >\"$1\"; exit 3").status, 1);
  EXPECT_EQ(value("LAN", "ConnType"), "0x00000000\n");
  const ended same = edit("LAN", "true");
  EXPECT_EQ(same.status, 0);
  EXPECT_EQ(same.err, "cfc: edit: nothing was changed\n");
}

TEST_F(CfcSections, the_edited_file_is_its_owners_alone_and_gone_afterwards) {
  const string seen = device_root::path("/var/seen");
  EXPECT_EQ(edit("WEBLOG", "stat -c '%a %n' \"$1\" >" + seen).status, 0);
  const string text = device_root::read("/var/seen").value_or("");
  ASSERT_THAT(text, StartsWith("600 "));
  EXPECT_FALSE(std::filesystem::exists(text.substr(4, text.size() - 5)));
}

TEST_F(CfcSections, the_edited_file_lies_in_tmpdir_or_in_tmp) {
  const string folder = device_root::path("/var");
  const string seen_path = device_root::path("/var/seen");
  for (const auto& [variable, place] :
       {std::pair{folder, folder}, {string{}, string{"/tmp"}}, {string{"unset"}, string{"/tmp"}}}) {
    if (variable == "unset") {
      unsetenv("TMPDIR");
    } else {
      setenv("TMPDIR", variable.c_str(), 1);
    }
    EXPECT_EQ(edit("LAN", "echo \"$1\" >" + seen_path).status, 0);
    EXPECT_THAT(seen(), StartsWith(place + "/cfc-")) << variable;
  }
}

TEST_F(CfcSections, edit_says_that_it_cannot_make_its_file) {
  setenv("TMPDIR", "/nowhere", 1);
  const ended refused = edit("LAN", "echo started >" + device_root::path("/var/seen").string());
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err,
            "cfc: edit: no temporary file: No such file or directory; nothing was changed\n");
  EXPECT_FALSE(device_root::exists("/var/seen"));
}

TEST_F(CfcSections, edit_says_that_the_editor_removed_the_file) {
  const ended refused = edit("LAN", "rm \"$1\"");
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err, "cfc: edit: the edited file is gone; nothing was changed\n");
}

TEST_F(CfcSections, the_editor_is_visual_or_editor_or_vi) {
  namespace fs = std::filesystem;
  const auto note = [](const string& name) {
    return "echo " + name + " >>" + device_root::path("/var/seen").string();
  };
  device_root::write("/var/vi", "#!/bin/sh\n" + note("vi") + "\n");
  fs::permissions(device_root::path("/var/vi"), fs::perms::owner_all);
  const string path = std::getenv("PATH");
  setenv("PATH", (device_root::path("/var").string() + ":" + path).c_str(), 1);
  EXPECT_EQ(run_cfc({"edit", "LAN"}).status, 0);
  set_editor(note("EDITOR"), "EDITOR");
  EXPECT_EQ(run_cfc({"edit", "LAN"}).status, 0);
  set_editor(note("VISUAL"), "VISUAL");
  EXPECT_EQ(run_cfc({"edit", "LAN"}).status, 0);
  setenv("VISUAL", "", 1);
  EXPECT_EQ(run_cfc({"edit", "LAN"}).status, 0);
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(seen(), "vi\nEDITOR\nVISUAL\nEDITOR\n");
}

// ---- acl and time -------------------------------------------------------------------------------

TEST_F(CfcSections, the_access_list_is_edited_by_address) {
  EXPECT_EQ(run_cfc({"acl", "list"}).out, "");
  EXPECT_EQ(run_cfc({"acl", "add", "00:0c:43:28:80:01"}).status, 0);
  EXPECT_EQ(run_cfc({"acl", "add", "000C43288002"}).status, 0);
  EXPECT_EQ(run_cfc({"acl", "list"}).out, "00:0c:43:28:80:01\n00:0c:43:28:80:02\n");
  EXPECT_EQ(run_cfc({"acl", "delete", "00:0c:43:28:80:01"}).status, 0);
  EXPECT_EQ(run_cfc({"acl", "list"}).out, "00:0c:43:28:80:02\n");
}

TEST_F(CfcSections, what_is_no_address_is_wrong_usage) {
  for (const char* address :
       {"", "00:0c:43:28:80", "00:00:00:00:00:00", "00-0c-43-28-80-01", "00:0c:43:28:80:01:02"}) {
    EXPECT_EQ(run_cfc({"acl", "add", address}).status, 2) << address;
  }
  EXPECT_EQ(run_cfc({"acl", "add"}).status, 2);
  EXPECT_EQ(run_cfc({"acl", "delete", "000c432880"}).err,
            "cfc: acl: \"000c432880\" is no MAC address: six bytes, not all zero, each as two "
            "hexadecimal digits, with colons between them or without\n");
  EXPECT_EQ(run_cfc({"acl", "list", "00:0c:43:28:80:01"}).status, 2);
  EXPECT_EQ(run_cfc({"acl", "frob"}).status, 2);
}

TEST_F(CfcSections, a_full_access_list_says_so) {
  std::string full = "[WLS_ACL]\n";
  for (int i = 0; i < 80; ++i) {
    full += "macFilters[" + std::to_string(i) + "]=0x0000000001" + (i < 10 ? "0" : "") +
            std::to_string(i) + "\n";
  }
  ASSERT_EQ(run_cfc({"import", "-"}, full).status, 0);
  const ended add = run_cfc({"acl", "add", "00:0c:43:28:80:01"});
  EXPECT_EQ(add.status, 1);
  EXPECT_THAT(add.err, HasSubstr("the access list is full"));
}

TEST_F(CfcSections, a_device_without_an_access_list_says_so) {
  start_with("[LAN]\nConnType=0\n");
  for (const std::vector<string>& words :
       {std::vector<string>{"acl", "list"}, {"acl", "add", "00:0c:43:28:80:01"}}) {
    const ended acl = run_cfc(words);
    EXPECT_EQ(acl.status, 3);
    EXPECT_EQ(acl.out, "");
    EXPECT_THAT(acl.err, StartsWith("cfc: acl: 209 CFC_ERR_NO_SECTION: "));
  }
}

TEST_F(CfcSections, time_tells_offset_and_local_time) {
  ASSERT_EQ(run_cfc({"set", "SNTPC", "tzdetail", "(GMT-03:30) Newfoundland"}).status, 0);
  EXPECT_THAT(run_cfc({"time"}).out, StartsWith("offset: -03:30 (-12600 seconds)\nlocal time: "));
  const json told = json::parse(run_cfc({"time", "--json"}).out);
  EXPECT_EQ(told["offset_seconds"], -12600);
  EXPECT_FALSE(told["local_time"].get<string>().empty());
}

TEST_F(CfcSections, local_time_is_one_line) {
  const ended time = run_cfc({"time"});
  EXPECT_EQ(time.status, 0) << time.err;
  EXPECT_EQ(std::ranges::count(time.out, '\n'), 2) << time.out;
  EXPECT_THAT(json::parse(run_cfc({"time", "--json"}).out)["local_time"].get<string>(),
              Not(HasSubstr("\n")));
}

TEST_F(CfcSections, a_device_without_a_time_zone_has_no_time) {
  start_with("[LAN]\nConnType=0\n");
  const ended time = run_cfc({"time"});
  EXPECT_EQ(time.status, 3);
  EXPECT_EQ(time.out, "");
  EXPECT_THAT(time.err, StartsWith("cfc: time: section \"SNTPC\": 209 CFC_ERR_NO_SECTION: "));
}
