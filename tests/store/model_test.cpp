// Long random sequences of calls, against the naive store. Names are few and short so that they
// meet often, and some share a chain or a whole hash; the seeds are fixed, so a failure comes
// again.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "store/section_store.h"
#include "tests/store/loaded_store.h"
#include "tests/store/naive_store.h"

using namespace loaded_store;

namespace {

constexpr const char* names_of_sections[] = {
    "A", "I", "Q", "B", "Aa", "BB", "LANBOGOLOJ", "LAN", "lan", "LAN2", "a section with 24 chars."};
constexpr const char* names_of_keys[] = {"k",   "Aa",  "BB", "LAN", "LANBOGOLOJ", "key",
                                         "Key", "kez", "ke", "A",   "I",          "Q"};

/// Both stores, asked the same.
class Model : public loaded_store::test {
 protected:
  void run(std::uint32_t seed, int steps) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random.seed(seed);
    EXPECT_EQ(config_center_close(), 0U);
    naive = {};
    for (int step = 0; step < steps && !HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      take_step();
      compare();
    }
  }

 private:
  std::size_t below(std::size_t limit) { return random() % limit; }

  template <std::size_t N>
  const char* one_of(const char* const (&all)[N]) {
    return all[below(N)];
  }

  std::string random_value() {
    static constexpr std::size_t lengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 30, 198, 199};
    const std::size_t length = lengths[below(std::size(lengths))];
    return std::string(length, static_cast<char>('a' + below(26)));
  }

  void take_step() {
    const std::size_t dice = below(naive.loaded ? 1000 : 100);
    if (dice < 2) {
      load_random_text();
    } else if (dice < 4) {
      load_own_export();
    } else if (dice < 5) {
      EXPECT_EQ(config_center_close(), 0U);
      naive = {};
    } else if (dice < 50) {
      allocate_section();
    } else if (dice % 2 == 0) {
      get_value();
    } else {
      set_value();
    }
  }

  void allocate_section() {
    const char* const name = one_of(names_of_sections);
    const cfg_segment* const known = section(name);
    const cfg_segment* const allocated = segment_alloc(name);
    ASSERT_NE(allocated, nullptr);
    EXPECT_TRUE(known == nullptr || allocated == known);
    EXPECT_EQ(naive.allocate(name).name, std::string{cfg_segment_name(allocated)});
  }

  void get_value() {
    const char* const name = one_of(names_of_sections);
    const char* const key = one_of(names_of_keys);
    std::string expected;
    const std::uint32_t result = naive.get(name, key, &expected);
    EXPECT_EQ(value(name, key), result == 0 ? expected : "?" + std::to_string(result));
  }

  void set_value() {
    const char* const name = one_of(names_of_sections);
    const char* const key = one_of(names_of_keys);
    const std::string text = random_value();
    const cfg_item* const old = entry(name, key);
    const bool fits = old != nullptr && text.size() <= old->val_len;
    const std::uint32_t result = cfc_set_val(name, key, text.c_str());
    EXPECT_EQ(result, naive.set(name, key, text));
    if (result == 0 && old != nullptr) {
      EXPECT_EQ(entry(name, key) == old, fits);
    }
  }

  /// Some lines of a text are malformed now and then: it must then be refused as a whole.
  void load_random_text() {
    std::string text = below(2) == 0 ? "\n" : "";
    for (std::size_t lines = below(60); lines > 0; --lines) {
      const std::size_t dice = below(1000);
      if (dice < 5) {
        text += one_of({"a=\n", "=v\n", "kv\n", "[]\n", "[A]\r\n", "[a]x\n", "kvkv\n"});
      } else if (dice < 300) {
        text += "[" + std::string{one_of(names_of_sections)} + "]\n";
      } else {
        text += std::string{one_of(names_of_keys)} + "=" + random_value() + "\n";
      }
    }
    text = (below(4) == 0 ? "" : "[A]\n") + text + (below(20) == 0 ? "x=y" : "");
    EXPECT_EQ(load(text), naive.load(text));
  }

  void load_own_export() {
    const std::string text = exported();
    EXPECT_EQ(load(text), naive.load(text));
    EXPECT_EQ(exported(), naive.loaded ? text : "");
  }

  void compare() {
    constexpr std::uint32_t after_load = CFG_INITIALIZED | CFG_LOADED;
    EXPECT_EQ(g_config_mgmt.flags, (naive.loaded ? after_load : 0) | (naive.dirty ? CFG_DIRTY : 0));
    EXPECT_EQ(g_config_mgmt.cache != nullptr, naive.has_cache);
    EXPECT_TRUE(is_well_formed());
    EXPECT_EQ(exported(), naive.exported());
    for (const naive_store::section& each : naive.sections) {
      EXPECT_EQ(cursor(each.name), each.entries.empty() ? "" : each.entries[each.cursor].key);
    }
  }

  naive_store naive;
  std::mt19937 random;
};

}  // namespace

TEST_F(Model, store_and_naive_store_agree_from_before_any_load_on) {
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    run(seed, 300);
  }
}

TEST_F(Model, store_and_naive_store_agree_over_a_long_life) {
  run(4711, 2000);
}
