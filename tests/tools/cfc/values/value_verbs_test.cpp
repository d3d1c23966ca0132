#include "tools/cfc/values/value_verbs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/msg.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"
#include "tests/tools/cfc/run_program.h"

using namespace cfc;
using namespace proreflax::settings;
using nlohmann::json;
using std::string;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using words = std::vector<string>;

namespace {

/// Runs a line that must fail, with nothing on standard output; gives standard error.
string complaint_of(const words& command, int status) {
  const ended failed = run_cfc(command);
  EXPECT_EQ(failed.status, status) << failed.err;
  EXPECT_EQ(failed.out, "");
  return failed.err;
}

/// Until a client that holds the lock waits for room on the queue.
void wait_until_asleep_with_lock(const request_queue& queue, pid_t client) {
  int asleep = 0;
  while (queue.lock_value() != 0 || asleep < 20) {
    std::ifstream file{"/proc/" + std::to_string(client) + "/stat"};
    string id;
    string name;
    string state;
    file >> id >> name >> state;
    asleep = state == "S" && queue.lock_value() == 0 ? asleep + 1 : 0;
    usleep(1000);
  }
}

}  // namespace

// ---- get ----------------------------------------------------------------------------------------

TEST(GetVerb, prints_the_value_bare) {
  scripted_service service;
  for (const string value : {"10.0.0.5", " two  words ", "", "caf\xc3\xa9 \xff\x01", "0x0a"}) {
    service.holds("LAN", "key", value);
    const ended get = run_cfc({"get", "LAN", "key"});
    EXPECT_EQ(get.status, 0);
    EXPECT_EQ(get.out, line(value));
    EXPECT_EQ(get.err, "");
  }
}

TEST(GetVerb, the_longest_value_is_printed_whole) {
  scripted_service service;
  service.holds("LAN", "key", string(199, 'v'));
  EXPECT_EQ(run_cfc({"get", "LAN", "key"}).out, line(string(199, 'v')));
}

TEST(GetVerb, unset_is_never_mistaken_for_empty) {
  scripted_service service;
  service.holds("LAN", "empty", "");
  EXPECT_EQ(run_cfc({"get", "LAN", "empty"}).status, 0);
  EXPECT_EQ(complaint_of({"get", "LAN", "none"}, 3),
            "cfc: get section \"LAN\" key \"none\": 201 CFC_ERR_NO_KEY: the section holds no such "
            "key\n");
  EXPECT_EQ(
      complaint_of({"get", "WAN", "none"}, 3),
      "cfc: get section \"WAN\" key \"none\": 209 CFC_ERR_NO_SECTION: the store holds no such "
      "section\n");
}

TEST(GetVerb, typed_values_are_shown_in_their_own_form) {
  scripted_service service;
  service.holds("A", "n", "0x0a");
  service.holds("A", "ip", "010.0.0.5");
  service.holds("A", "neg", "-1");
  service.holds("A", "mac", "0x430c00");
  service.holds("A", "none", "");
  EXPECT_EQ(run_cfc({"get", "A", "n", "--type", "u8"}).out, "10\n");
  EXPECT_EQ(run_cfc({"get", "A", "n", "--type", "u16"}).out, "10\n");
  EXPECT_EQ(run_cfc({"get", "A", "n", "--type", "u32"}).out, "10\n");
  EXPECT_EQ(run_cfc({"get", "A", "neg", "--type", "u32"}).out, "4294967295\n");
  EXPECT_EQ(run_cfc({"get", "A", "ip", "--type", "ip"}).out, "10.0.0.5\n");
  EXPECT_EQ(run_cfc({"get", "A", "ip", "--type", "string"}).out, "010.0.0.5\n");
  EXPECT_EQ(run_cfc({"get", "A", "mac", "--type", "binary"}).out, "00:0c:43\n");
  EXPECT_EQ(run_cfc({"get", "A", "none", "--type", "binary"}).out, "\n");
}

TEST(GetVerb, all_98_bytes_of_binary_data_are_read) {
  scripted_service service;
  string text;
  for (int i = 0; i < 98; ++i) {
    text += i == 0 ? "ab" : ":ab";
  }
  EXPECT_EQ(run_cfc({"set", "A", "b", text, "--type", "binary"}).status, 3);
  service.has_section("A");
  ASSERT_EQ(run_cfc({"set", "A", "b", text, "--type", "binary"}).status, 0);
  EXPECT_EQ(run_cfc({"get", "A", "b", "--type", "binary"}).out, line(text));
}

TEST(GetVerb, a_stored_text_of_another_type_is_refused_with_the_types_rule) {
  scripted_service service;
  service.holds("A", "word", "abc");
  service.holds("A", "big", "256");
  service.holds("A", "wrap", "4294967296");
  service.holds("A", "long", "0x00000000000000");
  service.holds("A", "empty", "");
  service.holds("A", "hex", "0x123");
  service.holds("A", "one", "x");
  const auto complaint = [](const char* key, const char* type) {
    return complaint_of({"get", "A", key, "--type", type}, 1);
  };
  EXPECT_EQ(complaint("big", "u8"),
            "cfc: get section \"A\" key \"big\": 205 CFC_ERR_BAD_VALUE: the value is malformed or "
            "out of range; the stored value is not of type u8, which is a number from 0 to 255, "
            "decimal or hexadecimal after 0x\n");
  EXPECT_THAT(complaint("word", "u16"), HasSubstr("210 CFC_ERR_BAD_DIGIT"));
  EXPECT_THAT(complaint("wrap", "u32"), HasSubstr("211 CFC_ERR_OVERFLOW"));
  EXPECT_THAT(complaint("long", "u32"), HasSubstr("212 CFC_ERR_NO_ROOM"));
  EXPECT_THAT(complaint("empty", "u32"), HasSubstr("204 CFC_ERR_BAD_ARGUMENT"));
  EXPECT_THAT(complaint("word", "ip"), HasSubstr("4294967295 CFC_ERR_NOT_AN_ADDRESS"));
  EXPECT_THAT(complaint("hex", "binary"), HasSubstr("205 CFC_ERR_BAD_VALUE"));
  EXPECT_THAT(complaint("word", "binary"), HasSubstr("of type binary, which is 1 to 98 bytes"));
  EXPECT_THAT(complaint("one", "binary"), HasSubstr("205 CFC_ERR_BAD_VALUE"));
}

TEST(GetVerb, json_holds_the_value_in_its_own_type) {
  scripted_service service;
  service.holds("A", "n", "0x0a");
  service.holds("A", "mac", "0x430c00");
  service.holds("A", "raw", "a\xff");
  const auto get = [](const char* key, const char* type) {
    return json::parse(run_cfc({"get", "A", key, "--json", "--type", type}).out);
  };
  EXPECT_EQ(get("n", "u8"), json::parse(R"({"section":"A","key":"n","type":"u8","value":10,
                                            "code":0,"name":"CFC_OK"})"));
  EXPECT_EQ(get("n", "string")["value"], "0x0a");
  EXPECT_EQ(get("mac", "binary")["value"], "00:0c:43");
  EXPECT_EQ(get("raw", "string")["value"], "a\xef\xbf\xbd");
  EXPECT_EQ(get("raw", "string")["bytes"], "61:ff");
}

TEST(GetVerb, json_of_a_failure_has_no_value) {
  scripted_service service;
  const ended get = run_cfc({"get", "A", "b", "--json"});
  EXPECT_EQ(get.status, 3);
  EXPECT_EQ(json::parse(get.out),
            json::parse(R"({"section":"A","key":"b","type":"string","code":209,
                            "name":"CFC_ERR_NO_SECTION",
                            "message":"the store holds no such section"})"));
  EXPECT_THAT(get.err, HasSubstr("209 CFC_ERR_NO_SECTION"));
}

// ---- set ----------------------------------------------------------------------------------------

TEST(SetVerb, sends_the_value_and_prints_nothing) {
  scripted_service service;
  service.has_section("A");
  for (const string value : {"10.0.0.5", " two  words ", "-5", "[x,y]", "--json"}) {
    const ended set = run_cfc({"set", "A", "b", value});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.out + set.err, "");
    EXPECT_EQ(service.value("A", "b"), value);
  }
  EXPECT_EQ(run_cfc({"set", "A", "bb", ""}).status, 0);
  EXPECT_EQ(service.value("A", "bb"), "");
}

TEST(SetVerb, typed_values_are_stored_in_the_librarys_form) {
  scripted_service service;
  service.has_section("A");
  const auto stored = [&](const char* type, const char* text) {
    EXPECT_EQ(run_cfc({"set", "A", "b", text, "--type", type}).status, 0);
    return *service.value("A", "b");
  };
  EXPECT_EQ(stored("u8", "10"), "0x0a");
  EXPECT_EQ(stored("u16", "443"), "0x01bb");
  EXPECT_EQ(stored("u32", "3232251393"), "0xc0a83e01");
  EXPECT_EQ(stored("u32", "-1"), "0xffffffff");
  EXPECT_EQ(stored("ip", "010.0.0.5"), "10.0.0.5");
  EXPECT_EQ(stored("binary", "00:0c:43"), "0x430c00");
  EXPECT_EQ(stored("string", "0010"), "0010");
}

TEST(SetVerb, bad_input_is_refused_before_anything_is_sent) {
  scripted_service service;
  service.has_section("A");
  EXPECT_EQ(complaint_of({"set", "A", "b", string(200, 'v')}, 1),
            "cfc: set section \"A\" key \"b\": 204 CFC_ERR_BAD_ARGUMENT: the value has 200 "
            "characters; at most 199 are taken\n");
  EXPECT_THAT(complaint_of({"set", "A", "b", "x\ny"}, 1), EndsWith("which is forbidden in it\n"));
  EXPECT_THAT(complaint_of({"set", "", "b", "x"}, 1), EndsWith(": the section name is empty\n"));
  EXPECT_THAT(complaint_of({"set", "A", "b=c", "x"}, 1), HasSubstr("the key holds \"=\""));
  EXPECT_THAT(complaint_of({"set", "A", "b", ""}, 1), HasSubstr("a key of one character"));
  EXPECT_THAT(complaint_of({"set", "A", "b", "256", "--type", "u8"}, 1),
              HasSubstr("205 CFC_ERR_BAD_VALUE: the value is \"256\"; a value of type u8 is"));
  EXPECT_THAT(complaint_of({"set", "A", "b", "1.2.3", "--type", "ip"}, 1),
              HasSubstr("CFC_ERR_NOT_AN_ADDRESS: the value is \"1.2.3\""));
  EXPECT_THAT(complaint_of({"get", string(25, 's'), "b"}, 1), HasSubstr("at most 24"));
  EXPECT_THAT(complaint_of({"get", "A", "[b"}, 1), HasSubstr("begins with \"[\""));
  EXPECT_THAT(complaint_of({"register", "a\nb"}, 1),
              HasSubstr("register section \"a\\x0ab\": 204"));
  EXPECT_THAT(service.requests(), IsEmpty());
}

TEST(SetVerb, what_the_service_refuses_is_told_as_its_refusal) {
  scripted_service service;
  service.answers(1, 204);
  service.answers(2, 208);
  service.answers(3, 250);
  EXPECT_EQ(complaint_of({"set", "A", "b", "x"}, 1),
            "cfc: set section \"A\" key \"b\": 204 CFC_ERR_BAD_ARGUMENT: the service refused "
            "section, key or value\n");
  EXPECT_THAT(complaint_of({"set", "A", "b", "x"}, 1), HasSubstr("208 CFC_ERR_BUSY"));
  EXPECT_THAT(complaint_of({"set", "A", "b", "x"}, 1), HasSubstr("250: unknown result code"));
  EXPECT_THAT(complaint_of({"set", "A", "b", "x"}, 3), HasSubstr("209 CFC_ERR_NO_SECTION"));
}

// ---- register, flush, defaults ------------------------------------------------------------------

TEST(StoreVerbs, register_flush_and_defaults_ask_for_what_they_say) {
  scripted_service service;
  for (const words& command : {words{"register", "MYAPP"}, {"flush"}, {"defaults"}}) {
    const ended run = run_cfc(command);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
  }
  EXPECT_THAT(service.requests(), ElementsAre("register MYAPP", "flush", "defaults"));
}

TEST(StoreVerbs, their_failures_are_named) {
  scripted_service service;
  service.answers(1, 222);
  service.answers(2, 206);
  service.answers(3, 12);
  EXPECT_THAT(complaint_of({"flush"}, 1), testing::StartsWith("cfc: flush: 222 CFC_ERR_FLASH_W: "));
  EXPECT_THAT(complaint_of({"defaults"}, 1), HasSubstr("cfc: defaults: 206 CFC_ERR_NO_FILE: "));
  EXPECT_EQ(complaint_of({"register", "X"}, 1),
            "cfc: register section \"X\": 12 CFC_ERR_NO_MEMORY: out of memory\n");
}

// ---- no service, or a broken one ----------------------------------------------------------------

TEST(WithoutAService, every_verb_ends_in_1_and_says_that_none_runs) {
  for (const words& command : {words{"get", "A", "b"},
                               {"get", "A", "b", "--type", "u8"},
                               {"get", "A", "b", "--type", "ip"},
                               {"get", "A", "b", "--type", "binary"},
                               {"set", "A", "b", "c"},
                               {"register", "A"},
                               {"flush"},
                               {"defaults"}}) {
    EXPECT_THAT(complaint_of(command, 1),
                EndsWith(": 230 CFC_ERR_NO_SEM: the access lock does not exist: "
                         "config-center is not running\n"));
  }
}

TEST(WithoutAService, a_missing_queue_is_told_apart) {
  request_queue queue;
  queue.remove_queue();
  EXPECT_THAT(complaint_of({"get", "A", "b"}, 1),
              EndsWith(": 231 CFC_ERR_NO_MSQ: the request queue does not exist: "
                       "config-center is not running\n"));
}

TEST(BrokenService, a_reply_that_is_too_long_is_an_errno_in_words) {
  scripted_service service;
  service.answers_too_long(1);
  EXPECT_EQ(complaint_of({"get", "A", "b"}, 1),
            "cfc: get section \"A\" key \"b\": 7: Argument list too long\n");
}

TEST(BrokenService, a_queue_that_vanishes_ends_the_wait) {
  scripted_service service;
  service.before_answer(1, [&] { service.queue().remove_queue(); });
  // EIDRM for a client that waits already, EINVAL for one that is only about to.
  EXPECT_THAT(complaint_of({"get", "A", "b"}, 1),
              testing::ContainsRegex("\": (" + std::to_string(EIDRM) + "|22): I"));
}

TEST(BrokenService, the_librarys_line_about_a_failed_send_stays_off_standard_output) {
  request_queue queue;
  msqid_ds state{};
  ASSERT_EQ(msgctl(queue.queue_id(), IPC_STAT, &state), 0);
  state.msg_qbytes = 1;
  ASSERT_EQ(msgctl(queue.queue_id(), IPC_SET, &state), 0);
  started_program get{"cfc", {"get", "A", "b"}};
  wait_until_asleep_with_lock(queue, get.pid());
  queue.remove_queue();
  const ended failed = get.wait();
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(failed.out, "");
  EXPECT_THAT(failed.err, HasSubstr("cfc: get section \"A\" key \"b\": " + std::to_string(EIDRM) +
                                    ": Identifier removed\n"));
  EXPECT_THAT(failed.err, testing::ContainsRegex("msq_id=[0-9]+, mtype=1, real_len=[0-9]+\n"));
}

// ---- JSON ---------------------------------------------------------------------------------------

TEST(ValueAsJson, names_that_are_no_utf8_break_nothing) {
  const nlohmann::json object =
      nlohmann::json::parse(json_of(get_request{"\xff", "\xc3"}, {.code = 209}));
  EXPECT_EQ(object["section"], "\xef\xbf\xbd");
}

TEST(ValueAsJson, a_code_without_a_name_stands_alone) {
  const nlohmann::json object =
      nlohmann::json::parse(json_of(get_request{"A", "b"}, {.code = 43, .sentence = "gone"}));
  EXPECT_EQ(object["code"], 43);
  EXPECT_EQ(object["message"], "gone");
  EXPECT_FALSE(object.contains("name"));
}
