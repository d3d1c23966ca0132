// What holds for every exported operation that talks to the service, typed or store-wide: one
// exchange each, the lock rule, errors that pass through, outputs untouched, and the failure of
// every call that can fail.
#include <gtest/gtest.h>
#include <proreflax/config.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/request_queue.h"

using faults::call;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

/// Everything that a getter may write, in the bytes of a pattern until it does.
struct outputs {
  outputs() { std::memset(static_cast<void*>(this), 0xA5, sizeof *this); }
  bool untouched() const { return std::memcmp(this, &fresh(), sizeof *this) == 0; }
  static const outputs& fresh() {
    static const outputs pattern;
    return pattern;
  }

  std::uint32_t number32;
  std::uint32_t address;
  std::uint16_t number16;
  std::uint8_t number8;
  std::uint8_t binary[5];
  char string[16];
};

enum class holding { not_held, held };

struct operation {
  const char* name;
  /// Asks for "LAN", "Key" or other names.
  std::function<std::uint32_t(const char* section, const char* key, outputs& out)> ask;
  holding lock;
  /// The value that its reply carries; "" for those that read nothing.
  const char* stored = "";
  int allocations = 1;
};

using operations = std::vector<operation>;

std::uint32_t get_binary(int locked, const char* section, const char* key, outputs& out) {
  std::int32_t count = sizeof out.binary;
  return __cfc_get_binary(locked, section, key, out.binary, &count);
}

/// The twelve typed operations with a locked flag.
operations typed(int locked) {
  using text = const char*;
  const auto lock = locked != 0 ? holding::held : holding::not_held;
  const std::uint8_t data[] = {1, 2, 3};
  const auto set_binary = [=](text section, text key, outputs&) {
    return __cfc_set_binary(locked, section, key, data, sizeof data);
  };
  const auto op = [=](auto function, auto... rest) {
    return
        [=](text section, text key, outputs&) { return function(locked, section, key, rest...); };
  };
  const auto into = [=](auto function, auto member) {
    return [=](text section, text key, outputs& out) {
      return function(locked, section, key, &(out.*member));
    };
  };
  const auto string = [=](text section, text key, outputs& out) {
    return __cfc_get_string(locked, section, key, out.string, sizeof out.string);
  };
  const auto binary = [=](text section, text key, outputs& out) {
    return get_binary(locked, section, key, out);
  };
  return {{"__cfc_get_u8", into(__cfc_get_u8, &outputs::number8), lock, "7"},
          {"__cfc_get_u16", into(__cfc_get_u16, &outputs::number16), lock, "7"},
          {"__cfc_get_u32", into(__cfc_get_u32, &outputs::number32), lock, "7"},
          {"__cfc_get_ip", into(__cfc_get_ip, &outputs::address), lock, "10.0.0.5"},
          {"__cfc_get_string", string, lock, "camera"},
          {"__cfc_get_binary", binary, lock, "0x0201", 2},
          {"__cfc_set_u8", op(__cfc_set_u8, std::uint8_t{7}), lock},
          {"__cfc_set_u16", op(__cfc_set_u16, std::uint16_t{7}), lock},
          {"__cfc_set_u32", op(__cfc_set_u32, std::uint32_t{7}), lock},
          {"__cfc_set_ip", op(__cfc_set_ip, std::uint32_t{7}), lock},
          {"__cfc_set_string", op(__cfc_set_string, text{"camera"}), lock},
          {"__cfc_set_binary", set_binary, lock, "", 2}};
}

/// The five store-wide requests.
operations store_wide() {
  using text = const char*;
  const auto plain = [](auto function) { return [=](text, text, outputs&) { return function(); }; };
  const auto naming = [](auto function) {
    return [=](text section, text, outputs&) { return function(section); };
  };
  return {{"cfc_add_app_sem", naming(cfc_add_app_sem), holding::held},
          {"cfc_add_app_nosem", naming(cfc_add_app_nosem), holding::not_held},
          {"cfc_flush_all_sem", plain(cfc_flush_all_sem), holding::held},
          {"cfc_flush_all_nosem", plain(cfc_flush_all_nosem), holding::not_held},
          {"cfc_to_default", plain(cfc_to_default), holding::not_held}};
}

operations all() {
  operations every = typed(0);
  for (const operations& more : {typed(1), store_wide()}) {
    every.insert(every.end(), more.begin(), more.end());
  }
  return every;
}

operations all_that_take_the_lock() {
  operations every = all();
  std::erase_if(every, [](const operation& each) { return each.lock == holding::held; });
  return every;
}

/// One run of an operation, with a reply on the queue
/// beforehand and the lock held where it must be.
class run {
 public:
  explicit run(const operation& asked) : asked_{asked} {
    if (asked.lock == holding::held) {
      EXPECT_EQ(cfc_get_mutex(), 0U);
    }
  }
  ~run() {
    faults::reset();
    EXPECT_EQ(queue.lock_value(), asked_.lock == holding::held ? 0 : 1) << asked_.name;
  }
  run(const run&) = delete;
  run& operator=(const run&) = delete;

  void reply() {
    if (*asked_.stored == '\0') {
      queue.reply_with(0);
    } else {
      queue.reply_with_value(asked_.stored);
    }
  }
  std::uint32_t ask(const char* section = "LAN", const char* key = "Key") {
    return asked_.ask(section, key, out);
  }
  /// Whether a request was sent; takes it off the queue.
  bool sent() { return queue.take().has_value(); }

  request_queue queue;
  outputs out;

 private:
  const operation& asked_;
};

}  // namespace

TEST(EveryOperation, that_takes_the_lock_gives_230_without_a_service) {
  for (const operation& each : all_that_take_the_lock()) {
    outputs out;
    EXPECT_EQ(each.ask("LAN", "Key", out), 230U) << each.name;
    EXPECT_TRUE(out.untouched()) << each.name;
  }
}

TEST(EveryOperation, that_takes_the_lock_gives_231_without_a_queue_and_the_lock_back) {
  for (const operation& each : all_that_take_the_lock()) {
    run now{each};
    now.queue.remove_queue();
    EXPECT_EQ(now.ask(), 231U) << each.name;
    EXPECT_TRUE(now.out.untouched()) << each.name;
  }
}

TEST(EveryOperation, is_one_exchange) {
  for (const operation& each : all()) {
    run now{each};
    now.reply();
    faults::reset();
    EXPECT_EQ(now.ask(), 0U) << each.name;
    EXPECT_EQ(faults::calls(call::msgsnd), 1) << each.name;
    EXPECT_EQ(faults::calls(call::msgrcv), 1) << each.name;
    EXPECT_EQ(faults::calls(call::malloc), each.allocations) << each.name;
    EXPECT_TRUE(now.sent()) << each.name;
    EXPECT_EQ(now.queue.waiting(), 0) << each.name;
    EXPECT_EQ(now.out.untouched(), *each.stored == '\0') << each.name;
  }
}

TEST(EveryOperation, sends_nothing_before_it_has_the_lock) {
  for (const operation& each : all_that_take_the_lock()) {
    run now{each};
    now.queue.set_lock_value(0);
    child asker{[&] {
      now.reply();
      return static_cast<int>(now.ask());
    }};
    EXPECT_TRUE(eventually([&] { return now.queue.waiting_for_lock() == 1; })) << each.name;
    EXPECT_FALSE(now.sent()) << each.name;
    now.queue.set_lock_value(1);
    EXPECT_EQ(asker.wait(), 0) << each.name;
    EXPECT_TRUE(now.sent()) << each.name;
  }
}

TEST(EveryOperation, with_any_locked_flag_but_0_leaves_the_lock_alone) {
  for (const int locked : {1, -1, 2, 256, 65536, std::numeric_limits<int>::min()}) {
    for (const operation& each : typed(locked)) {
      run now{each};
      now.reply();
      now.queue.set_lock_value(1);  // one that asked for it would wait for ever, were it taken
      faults::reset();
      EXPECT_EQ(now.ask(), 0U) << each.name << " " << locked;
      EXPECT_EQ(faults::calls(call::semget) + faults::calls(call::semop), 0)
          << each.name << " " << locked;
      now.queue.set_lock_value(0);
    }
  }
}

TEST(EveryOperation, gives_the_services_code_unchanged) {
  for (const operation& each : all()) {
    for (const std::uint32_t code : {1U, 12U, 201U, 204U, 205U, 206U, 208U, 209U, 212U, 215U, 218U,
                                     222U, 230U, 4242U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
      run now{each};
      now.queue.reply_with(code);
      EXPECT_EQ(now.ask(), code) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, on_a_value_refuses_a_bad_section_with_204_and_sends_nothing) {
  for (const int locked : {0, 1}) {
    for (const operation& each : typed(locked)) {
      for (const char* section :
           {static_cast<const char*>(nullptr), "", "a\r", "\nb", "1234567890123456789012345"}) {
        run now{each};
        now.reply();
        EXPECT_EQ(now.ask(section, "Key"), 204U) << each.name;
        EXPECT_FALSE(now.sent()) << each.name;
        EXPECT_TRUE(now.out.untouched()) << each.name;
      }
    }
  }
}

TEST(EveryOperation, on_a_value_refuses_a_bad_key_with_204_and_sends_nothing) {
  const std::string too_long(50, 'k');
  for (const int locked : {0, 1}) {
    for (const operation& each : typed(locked)) {
      for (const char* key : {static_cast<const char*>(nullptr), "", "[k", "k=", "*k", "k\r", "\nk",
                              too_long.c_str()}) {
        run now{each};
        now.reply();
        EXPECT_EQ(now.ask("LAN", key), 204U) << each.name;
        EXPECT_FALSE(now.sent()) << each.name;
        EXPECT_TRUE(now.out.untouched()) << each.name;
      }
    }
  }
}

TEST(EveryOperation, gives_E2BIG_for_a_reply_that_is_too_long_and_leaves_it_on_the_queue) {
  for (const operation& each : all()) {
    run now{each};
    now.queue.reply(bytes(500));
    EXPECT_EQ(now.ask(), static_cast<std::uint32_t>(E2BIG)) << each.name;
    EXPECT_TRUE(now.out.untouched()) << each.name;
    EXPECT_TRUE(now.sent()) << each.name;
    EXPECT_EQ(now.queue.waiting(), 1) << each.name;
  }
}

TEST(EveryOperation, gives_205_for_a_reply_that_ends_before_its_result_does) {
  for (const operation& each : all()) {
    for (const std::size_t size : {0U, 4U, 7U}) {
      run now{each};
      now.queue.reply(bytes(size));
      EXPECT_EQ(now.ask(), 205U) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, that_reads_gives_205_for_a_success_without_a_whole_header) {
  for (const operation& each : all()) {
    for (const std::size_t size : {8U, 15U}) {
      run now{each};
      now.queue.reply(bytes(size));
      EXPECT_EQ(now.ask(), *each.stored != '\0' ? 205U : 0U) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, that_reads_gives_205_for_a_value_beyond_the_record) {
  for (const operation& each : all()) {
    if (*each.stored != '\0') {
      run now{each};
      now.queue.reply(row(own_reply_type(), u32(0), u16(0), u16(0), u16(65535), u16(2)));
      EXPECT_EQ(now.ask(), 205U) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, that_reads_tests_its_room_before_the_records_bounds) {
  for (const operation& each : all()) {
    if (*each.stored != '\0') {
      run now{each};
      now.queue.reply(row(own_reply_type(), u32(0), u16(0), u16(0), u16(65535), u16(65535)));
      EXPECT_EQ(now.ask(), 212U) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, without_memory_gives_12_and_sends_nothing) {
  for (const operation& each : all()) {
    int failed = 0;
    for (bool happened = true; happened; failed += happened ? 1 : 0) {
      run now{each};
      now.reply();
      faults::fail(call::malloc, failed + 1);
      const std::uint32_t result = now.ask();
      happened = faults::happened();
      EXPECT_EQ(result, happened ? 12U : 0U) << each.name;
      EXPECT_EQ(now.sent(), !happened) << each.name;
      EXPECT_EQ(now.out.untouched(), happened || *each.stored == '\0') << each.name;
    }
    EXPECT_EQ(failed, each.allocations) << each.name;
  }
}

TEST(EveryOperation, gives_a_failed_sends_errno_and_prints_one_line) {
  for (const operation& each : all()) {
    for (const int error : {EACCES, EAGAIN, EIDRM, EINTR}) {
      run now{each};
      now.reply();
      faults::fail(call::msgsnd, 1, error);
      CaptureStdout();
      EXPECT_EQ(now.ask(), static_cast<std::uint32_t>(error)) << each.name;
      const std::string printed = GetCapturedStdout();
      const std::string start =
          "msq_id=" + std::to_string(now.queue.queue_id()) + ", mtype=1, real_len=";
      EXPECT_TRUE(faults::happened()) << each.name;
      EXPECT_EQ(printed.substr(0, start.size()), start) << each.name;
      EXPECT_EQ(printed.find('\n'), printed.size() - 1) << each.name;
      EXPECT_EQ(faults::calls(call::msgrcv), 0) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, gives_a_failed_receives_errno_and_prints_nothing) {
  for (const operation& each : all()) {
    for (const int error : {EACCES, EIDRM, EINTR}) {
      run now{each};
      now.reply();
      faults::fail(call::msgrcv, 1, error);
      CaptureStdout();
      EXPECT_EQ(now.ask(), static_cast<std::uint32_t>(error)) << each.name;
      EXPECT_EQ(GetCapturedStdout(), "") << each.name;
      EXPECT_TRUE(faults::happened()) << each.name;
      EXPECT_TRUE(now.sent()) << each.name;
      EXPECT_TRUE(now.out.untouched()) << each.name;
    }
  }
}

TEST(EveryOperation, that_takes_the_lock_gives_230_when_the_lookup_fails) {
  for (const operation& each : all_that_take_the_lock()) {
    run now{each};
    now.reply();
    faults::fail(call::semget, 1, EACCES);
    EXPECT_EQ(now.ask(), 230U) << each.name;
    EXPECT_FALSE(now.sent()) << each.name;
    EXPECT_TRUE(now.out.untouched()) << each.name;
  }
}

TEST(EveryOperation, that_takes_the_lock_gives_231_when_the_queues_lookup_fails) {
  for (const operation& each : all_that_take_the_lock()) {
    run now{each};
    now.reply();
    faults::fail(call::msgget, 1, EACCES);
    EXPECT_EQ(now.ask(), 231U) << each.name;
    EXPECT_FALSE(now.sent()) << each.name;
    EXPECT_TRUE(now.out.untouched()) << each.name;
  }
}

TEST(EveryOperation, that_takes_the_lock_outlasts_a_signal_during_the_wait) {
  for (const operation& each : all_that_take_the_lock()) {
    run now{each};
    now.reply();
    faults::fail(call::semop, 1, EINTR);
    EXPECT_EQ(now.ask(), 0U) << each.name;
    EXPECT_TRUE(faults::happened()) << each.name;
    EXPECT_EQ(faults::calls(call::semop), 3) << each.name;
  }
}

TEST(EveryOperation,
     whose_taking_or_giving_of_the_lock_fails_leaves_it_free_when_its_process_ends) {
  for (const operation& each : all_that_take_the_lock()) {
    for (const int nth : {1, 2}) {
      run now{each};
      child asker{[&] {
        now.reply();
        faults::fail(call::semop, nth, EIDRM);
        const std::uint32_t result = now.ask();
        return faults::happened() ? static_cast<int>(result) : 1;
      }};
      EXPECT_EQ(asker.wait(), 0) << each.name << ", failed semop " << nth;
      EXPECT_TRUE(now.sent()) << each.name;
    }
  }
}

TEST(EveryOperation, cut_behind_any_of_its_system_calls_leaves_the_lock_free) {
  for (const operation& each : all()) {
    const int system_calls = each.lock == holding::held ? 2 : 6;
    for (int nth = 1; nth <= system_calls; ++nth) {
      request_queue queue;
      child asker{[&] {
        if (each.lock == holding::held && cfc_get_mutex() != 0) {
          return 1;
        }
        outputs out;
        queue.reply_with_value(each.stored);
        faults::cut_after(nth);
        return static_cast<int>(each.ask("LAN", "Key", out));
      }};
      EXPECT_EQ(asker.wait(), faults::exit_cut) << each.name << ", call " << nth;
      EXPECT_EQ(queue.lock_value(), 1) << each.name << ", call " << nth;
    }
  }
}
