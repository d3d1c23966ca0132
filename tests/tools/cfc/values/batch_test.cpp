#include "tools/cfc/values/batch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/sem.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "settings/transaction.h"
#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"
#include "tests/tools/cfc/run_program.h"

using namespace cfc;
using namespace proreflax::settings;
using nlohmann::json;
using std::string;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

ended run_batch(std::string_view text) {
  return run_cfc({"batch"}, text);
}

ended run_all_or_nothing(std::string_view text) {
  return run_cfc({"batch", "--all-or-nothing"}, text);
}

std::vector<json> objects_of(const string& lines) {
  std::istringstream stream{lines};
  std::vector<json> objects;
  for (string each; std::getline(stream, each);) {
    objects.push_back(json::parse(each));
  }
  return objects;
}

string fault_of(std::string_view text) {
  const auto line = read_batch_line(1, text);
  EXPECT_TRUE(line && !line->asked) << text;
  return line ? line->fault : "";
}

}  // namespace

// ---- one line -----------------------------------------------------------------------------------

TEST(BatchLine, is_read_as_the_command_line_is) {
  const auto line = read_batch_line(7, "set --type u8 'A B' b -5 # why\r\n");
  ASSERT_TRUE(line && line->asked);
  EXPECT_EQ(line->number, 7U);
  const auto& set = std::get<set_request>(*line->asked);
  EXPECT_EQ(set.section, "A B");
  EXPECT_EQ(set.value, "-5");
  EXPECT_EQ(set.kind, value_kind::u8);
}

TEST(BatchLine, blank_lines_and_comments_are_none) {
  for (const char* text : {"\n", "", "  \t\n", "# set A b c\n", "   # x\r\n", "\r\n"}) {
    EXPECT_FALSE(read_batch_line(1, text)) << text;
  }
}

TEST(BatchLine, what_is_no_command_says_why) {
  EXPECT_EQ(fault_of("set A 'b c\n"), "a single quote is not closed");
  EXPECT_EQ(fault_of("set A b\n"), "set: VALUE is required (see: cfc set --help)");
  EXPECT_THAT(fault_of("frob\n"), HasSubstr("unknown verb \"frob\""));
  EXPECT_EQ(fault_of(std::string_view{"get A\0 b\n", 9}), "the line holds a NUL byte");
  EXPECT_EQ(fault_of("get A b --json\n"), "--json is an option of the batch as a whole");
  for (const char* text : {"batch x\n", "check x\n", "status\n", "--help\n", "get --help\n"}) {
    EXPECT_EQ(fault_of(text),
              "no command of a batch: it takes get, set, register, flush and defaults");
  }
}

// ---- line by line -------------------------------------------------------------------------------

TEST(BatchVerb, carries_out_every_line_and_reports_it_with_its_number) {
  scripted_service service;
  const ended batch = run_batch(
      "# a comment\n"
      "register A\n"
      "\n"
      "set A b ' two words '\n"
      "get A b\n"
      "flush\n"
      "defaults");
  EXPECT_EQ(batch.status, 0);
  EXPECT_EQ(batch.out, "2: done\n4: done\n5:  two words \n6: done\n7: done\n");
  EXPECT_EQ(batch.err, "");
  EXPECT_THAT(service.requests(),
              ElementsAre("register A", "set A b= two words ", "get A b", "flush", "defaults"));
}

TEST(BatchVerb, reads_a_file_and_names_it) {
  const ended batch = run_cfc({"batch", PROREFLAX_SOURCE_DIR "/.gitignore"});
  EXPECT_EQ(batch.status, 2);
  EXPECT_THAT(batch.err, HasSubstr(PROREFLAX_SOURCE_DIR "/.gitignore:1: "));
  const ended missing = run_cfc({"batch", "/nowhere"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "cfc: batch: /nowhere: cannot be opened: No such file or directory\n");
}

TEST(BatchVerb, a_line_that_fails_does_not_keep_the_next_from_being_tried) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch = run_batch("get A none\nset A b\nget A b\nset X b c\n");
  EXPECT_EQ(batch.out, "3: 1\n");
  EXPECT_EQ(
      batch.err,
      "stdin:1: get section \"A\" key \"none\": 201 CFC_ERR_NO_KEY: the section holds no such "
      "key\n"
      "stdin:2: set: VALUE is required (see: cfc set --help)\n"
      "stdin:4: set section \"X\" key \"b\": 209 CFC_ERR_NO_SECTION: the store holds no such "
      "section\n");
}

TEST(BatchVerb, ends_with_the_status_of_the_first_line_that_failed) {
  scripted_service service;
  service.has_section("A");
  EXPECT_EQ(run_batch("flush\nget A none\nfrob\n").status, 3);
  EXPECT_EQ(run_batch("flush\nfrob\nget A none\n").status, 2);
  EXPECT_EQ(run_batch("set A b ''\nfrob\n").status, 1);
  EXPECT_EQ(run_batch("").status, 0);
}

TEST(BatchVerb, reports_each_line_before_it_reads_the_next) {
  scripted_service service;
  service.holds("A", "b", "1");
  // The second line is what the first one answered: it can only be written once that is read.
  const ended shell =
      started_program{"/bin/bash",
                      {"-c", "coproc cfc { " PROREFLAX_DEVICE_ROOT "/programs/cfc batch; }; "
                             "echo 'get A b' >&${cfc[1]}; read -r answer <&${cfc[0]}; "
                             "echo \"set A b '$answer'\" >&${cfc[1]}; read -r answer <&${cfc[0]}; "
                             "echo \"$answer\""}}
          .wait();
  EXPECT_EQ(shell.out, "2: done\n");
  EXPECT_EQ(service.value("A", "b"), "1: 1");
}

TEST(BatchVerb, json_is_one_object_a_line) {
  scripted_service service;
  service.holds("A", "b", "0x0a");
  const ended batch =
      run_cfc({"batch", "--json", "-"}, "get A b --type u8\nset A b\nget A c\nflush\n");
  EXPECT_EQ(batch.status, 2);
  const auto results = objects_of(batch.out);
  ASSERT_EQ(results.size(), 4U);
  EXPECT_EQ(results[0],
            json::parse(R"({"line":1,"command":"get","section":"A","key":"b","type":"u8",
                            "state":"done","status":0,"value":10,"code":0,"name":"CFC_OK"})"));
  EXPECT_EQ(results[1], json::parse(R"j({"line":2,"state":"failed","status":2,
                             "message":"set: VALUE is required (see: cfc set --help)"})j"));
  EXPECT_EQ(results[2],
            json::parse(R"({"line":3,"command":"get","section":"A","key":"c","type":"string",
                            "state":"failed","status":3,"code":201,"name":"CFC_ERR_NO_KEY",
                            "message":"the section holds no such key"})"));
  EXPECT_EQ(results[3], json::parse(R"({"line":4,"command":"flush","state":"done","status":0,
                                        "code":0,"name":"CFC_OK"})"));
}

TEST(BatchVerb, without_a_service_every_line_says_so) {
  const ended batch = run_batch("get A b\nflush\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err, HasSubstr("stdin:1: get section \"A\" key \"b\": 230 CFC_ERR_NO_SEM"));
  EXPECT_THAT(batch.err, HasSubstr("stdin:2: flush: 230 CFC_ERR_NO_SEM"));
}

TEST(BatchVerb, what_is_no_text_is_given_up) {
  for (const auto& options :
       {std::vector<string>{"batch", "/dev/zero"}, {"batch", "--all-or-nothing", "/dev/zero"}}) {
    const ended batch = run_cfc(options);
    EXPECT_EQ(batch.status, 1);
    EXPECT_THAT(batch.err, HasSubstr("line 1 has more than 65536 bytes"));
  }
}

// ---- all or nothing -----------------------------------------------------------------------------

TEST(AllOrNothing, carries_out_all_lines) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch = run_all_or_nothing("get A b\nset A b 2\nset A c 3\nget A b\nflush\n");
  EXPECT_EQ(batch.status, 0);
  EXPECT_EQ(batch.out, "1: 1\n2: done\n3: done\n4: 2\n5: done\n");
  EXPECT_EQ(batch.err, "");
  EXPECT_EQ(service.value("A", "b"), "2");
  EXPECT_EQ(service.value("A", "c"), "3");
  EXPECT_EQ(service.queue().lock_value(), 1);
}

TEST(AllOrNothing, screens_every_line_before_anything_is_sent) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch = run_all_or_nothing(
      "set A b 2\n"
      "set A\n"
      "set A b 300 --type u8\n"
      "set A b ''\n"
      "get A 'x=y'\n"
      "defaults\n"
      "register B\n"
      "flush\n"
      "set A b 'unclosed\n");
  EXPECT_EQ(batch.status, 2);
  EXPECT_EQ(batch.out, "");
  EXPECT_THAT(service.requests(), IsEmpty());
  for (const char* complaint :
       {"stdin:2: set: KEY is required",
        "stdin:3: set section \"A\" key \"b\": 205 CFC_ERR_BAD_VALUE",
        "stdin:4: set section \"A\" key \"b\": 204 CFC_ERR_BAD_ARGUMENT: a key of one character",
        "stdin:5: get section \"A\" key \"x=y\": 204 CFC_ERR_BAD_ARGUMENT: the key holds \"=\"",
        "stdin:6: defaults: cannot be undone, so --all-or-nothing does not take it\n",
        "stdin:7: register section \"B\": cannot be undone, so --all-or-nothing does not take it\n",
        "stdin:8: flush: with --all-or-nothing a flush must be the last command\n",
        "stdin:9: a single quote is not closed\n", "cfc: batch: stdin: nothing was changed\n"}) {
    EXPECT_THAT(batch.err, HasSubstr(complaint));
  }
  EXPECT_THAT(batch.err, testing::Not(HasSubstr("stdin:1:")));
}

TEST(AllOrNothing, a_missing_section_is_found_before_anything_is_set) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch = run_all_or_nothing("set A b 2\nset X b 2\nset Y b 2\n");
  EXPECT_EQ(batch.status, 3);
  EXPECT_EQ(batch.err,
            "stdin:2: set section \"X\" key \"b\": 209 CFC_ERR_NO_SECTION: the store holds no such "
            "section\n"
            "stdin:3: set section \"Y\" key \"b\": 209 CFC_ERR_NO_SECTION: the store holds no such "
            "section\n"
            "cfc: batch: stdin: nothing was changed\n");
  EXPECT_THAT(service.requests(), ElementsAre("get A b", "get X b", "get Y b"));
  EXPECT_EQ(service.queue().lock_value(), 1);
}

TEST(AllOrNothing, an_old_value_that_could_not_be_put_back_is_found_before_anything_is_set) {
  scripted_service service;
  service.holds("A", "b", "1\r");
  const ended batch = run_all_or_nothing("set A b 2\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err,
              HasSubstr("its present value could not be put back: the value holds a CR"));
  EXPECT_EQ(service.value("A", "b"), "1\r");
}

TEST(AllOrNothing, undoes_in_reverse_order_when_a_line_fails) {
  scripted_service service;
  service.holds("A", "b", "old b");
  service.holds("A", "c", "old c");
  // Two old values are read; the fourth line, a get, fails as the sixth request.
  const ended batch =
      run_all_or_nothing("set A b 2\nset A c 3\nset A b 4\nget A none\nset A c 5\n");
  EXPECT_EQ(batch.status, 3);
  EXPECT_EQ(batch.out, "");
  EXPECT_EQ(
      batch.err,
      "stdin:4: get section \"A\" key \"none\": 201 CFC_ERR_NO_KEY: the section holds no such "
      "key\n"
      "cfc: batch: stdin: a line failed; of the sets before it 3 were put back and 0 were "
      "not\n");
  EXPECT_THAT(service.requests(),
              ElementsAre("get A b", "get A c", "set A b=2", "set A c=3", "set A b=4", "get A none",
                          "set A b=2", "set A c=old c", "set A b=old b"));
  EXPECT_EQ(service.queue().lock_value(), 1);
}

TEST(AllOrNothing, a_typed_value_is_put_back_as_it_stood) {
  scripted_service service;
  service.holds("A", "b", "007");
  EXPECT_EQ(run_all_or_nothing("set --type u8 A b 1\nset --type u8 A b 2\nget A none\n").status, 3);
  EXPECT_THAT(service.requests(), ElementsAre("get A b", "set A b=0x01", "set A b=0x02",
                                              "get A none", "set A b=0x01", "set A b=007"));
}

TEST(AllOrNothing, a_key_that_was_not_there_before_is_named_with_what_stays_in_it) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch =
      run_all_or_nothing("set A new 5 --type u8\nset A b 2\nset A new 6 --type u8\nget A none\n");
  EXPECT_EQ(batch.status, 3);
  EXPECT_THAT(batch.err,
              HasSubstr("stdin:1: section \"A\" key \"new\" was not there before, and a key cannot "
                        "be removed: it stays with \"0x05\"\n"));
  EXPECT_THAT(batch.err, HasSubstr("2 were put back and 1 were not\n"));
  EXPECT_EQ(service.value("A", "new"), "0x05");
  EXPECT_EQ(service.value("A", "b"), "1");
}

TEST(AllOrNothing, a_set_that_the_service_refuses_undoes_those_before_it) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.holds("A", "c", "1");
  service.answers(4, 208);
  const ended batch = run_all_or_nothing("set A b 2\nset A c 2\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err, HasSubstr("stdin:2: set section \"A\" key \"c\": 208 CFC_ERR_BUSY"));
  // What was refused did not happen: its key is not written again.
  EXPECT_THAT(service.requests(),
              ElementsAre("get A b", "get A c", "set A b=2", "set A c=2", "set A b=1"));
}

TEST(AllOrNothing, a_set_that_may_have_happened_is_put_back_and_told_as_failed) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.answers(2, EIO);
  const ended batch = run_all_or_nothing("set A b 2\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_EQ(batch.err,
            "stdin:1: set section \"A\" key \"b\": 5: Input/output error\n"
            "cfc: batch: stdin: a line failed; of the sets before it 0 were put back and 0 were "
            "not\n");
  EXPECT_THAT(service.requests(), ElementsAre("get A b", "set A b=2", "set A b=1"));
}

TEST(AllOrNothing, a_new_key_that_never_came_to_be_is_not_named) {
  scripted_service service;
  service.has_section("A");
  service.answers(2, EIO);
  const ended batch = run_all_or_nothing("set A new 2\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err, testing::Not(HasSubstr("was not there before")));
  EXPECT_THAT(batch.err, HasSubstr("0 were put back and 0 were not\n"));
  EXPECT_THAT(service.requests(), ElementsAre("get A new", "set A new=2", "get A new"));
}

TEST(AllOrNothing, a_value_that_its_getter_would_not_read_is_put_back_all_the_same) {
  scripted_service service;
  service.holds("LAN", "LanGw", "junk");
  EXPECT_EQ(run_all_or_nothing("set LAN LanGw 10.0.0.5\nget LAN none\n").status, 3);
  EXPECT_THAT(service.requests(), ElementsAre("get LAN LanGw", "set LAN LanGw=10.0.0.5",
                                              "get LAN none", "set LAN LanGw=junk"));
}

TEST(AllOrNothing, ends_with_the_status_of_the_first_line_that_is_refused) {
  EXPECT_EQ(run_all_or_nothing("set A b 300 --type u8\nfrob\n").status, 1);
  EXPECT_EQ(run_all_or_nothing("frob\nset A b 300 --type u8\n").status, 2);
}

TEST(AllOrNothing, a_flush_that_fails_undoes_the_sets) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.answers(3, 222);
  const ended batch = run_all_or_nothing("set A b 2\nflush\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err, HasSubstr("stdin:2: flush: 222 CFC_ERR_FLASH_W"));
  EXPECT_EQ(service.value("A", "b"), "1");
}

TEST(AllOrNothing, an_undo_that_fails_is_told_with_what_stays) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.answers(4, 208);
  const ended batch = run_all_or_nothing("set A b 2\nget A none\n");
  EXPECT_THAT(batch.err,
              HasSubstr("stdin:1: section \"A\" key \"b\" could not be put back (208 CFC_ERR_BUSY: "
                        "the store is being written out; try again): it stays with \"2\"\n"));
  EXPECT_THAT(batch.err, HasSubstr("0 were put back and 1 were not"));
}

TEST(AllOrNothing, a_service_that_vanishes_leaves_nothing_unsaid) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.before_answer(3, [&] { service.queue().remove_queue(); });
  const ended batch = run_all_or_nothing("set A b 2\nset A b 3\nset A b 4\n");
  EXPECT_EQ(batch.status, 1);
  // The second set was sent and its answer lost: it may hold.
  // EIDRM for a client that waits already, EINVAL for one that is only about to.
  EXPECT_THAT(batch.err, testing::ContainsRegex("stdin:2: set section \"A\" key \"b\": (" +
                                                std::to_string(EIDRM) + "|22): I"));
  EXPECT_THAT(batch.err, HasSubstr("stdin:1: section \"A\" key \"b\" could not be put back"));
  EXPECT_THAT(batch.err, HasSubstr("stdin:2: section \"A\" key \"b\" could not be put back"));
  EXPECT_THAT(batch.err, HasSubstr("): what it holds cannot be read (22: Invalid argument)\n"));
  EXPECT_THAT(batch.err, HasSubstr("0 were put back and 2 were not"));
}

TEST(AllOrNothing, json_tells_the_state_of_every_line) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch = run_cfc({"batch", "--all-or-nothing", "--json"},
                              "set A b 2\nset A new 5\nget A none\nflush\n");
  EXPECT_EQ(batch.status, 3);
  const auto results = objects_of(batch.out);
  ASSERT_EQ(results.size(), 4U);
  EXPECT_EQ(results[0]["state"], "undone");
  EXPECT_EQ(results[1]["state"], "stays");
  EXPECT_THAT(results[1]["left_behind"].get<string>(), HasSubstr("stays with \"5\""));
  EXPECT_EQ(results[2]["state"], "failed");
  EXPECT_EQ(results[2]["code"], 201);
  EXPECT_EQ(results[3],
            json::parse(R"({"line":4,"command":"flush","state":"skipped","status":0})"));
}

TEST(AllOrNothing, without_a_service_nothing_is_tried) {
  const ended batch = run_all_or_nothing("set A b 2\nget A b\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_EQ(batch.out, "");
  EXPECT_EQ(batch.err,
            "cfc: batch: stdin: 230 CFC_ERR_NO_SEM: the access lock does not exist: "
            "config-center is not running; nothing was changed\n");
}

TEST(AllOrNothing, a_text_that_cannot_be_read_to_its_end_changes_nothing) {
  scripted_service service;
  service.holds("A", "b", "1");
  const ended batch = run_all_or_nothing("set A b 2\n" + string(70000, 'x'));
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err, HasSubstr("line 2 has more than 65536 bytes"));
  EXPECT_THAT(service.requests(), IsEmpty());
}

TEST(AllOrNothing, more_lines_than_make_sense_are_refused) {
  string text;
  for (int i = 0; i < 50001; ++i) {
    text += "'\n";
  }
  const ended batch = run_all_or_nothing(text);
  EXPECT_EQ(batch.status, 1);
  EXPECT_THAT(batch.err, HasSubstr("more than 50000 commands"));
}

TEST(AllOrNothing, the_lock_is_held_from_the_first_request_to_the_last) {
  scripted_service service;
  service.holds("A", "b", "1");
  std::optional<started_program> other;
  service.before_answer(1, [&] {
    other.emplace("cfc", std::vector<string>{"get", "A", "other"});
    while (semctl(service.queue().lock_id(), 0, GETNCNT) == 0) {
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(run_all_or_nothing("set A b 2\nset A b 3\n").status, 0);
  EXPECT_EQ(other->wait().status, 3);
  EXPECT_THAT(service.requests(), ElementsAre("get A b", "set A b=2", "set A b=3", "get A other"));
}

TEST(AllOrNothing, without_it_each_line_takes_the_lock_for_itself) {
  scripted_service service;
  service.holds("A", "b", "1");
  std::optional<started_program> other;
  service.before_answer(1, [&] {
    other.emplace("cfc", std::vector<string>{"get", "A", "other"});
    while (semctl(service.queue().lock_id(), 0, GETNCNT) == 0) {
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(run_batch("set A b 2\nset A b 3\n").status, 0);
  other->wait();
  EXPECT_THAT(service.requests(), ElementsAre("set A b=2", "get A other", "set A b=3"));
}

TEST(AllOrNothing, a_signal_waits_until_the_batch_is_done) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    scripted_service service;
    service.holds("A", "b", "1");
    const ended batch = run_cfc_and_signal_it(signal, service, 2, {"batch", "--all-or-nothing"},
                                              "set A b 2\nset A b 3\n");
    EXPECT_EQ(batch.status, -signal);
    EXPECT_EQ(service.value("A", "b"), "3");
    EXPECT_EQ(service.queue().lock_value(), 1);
  }
}
