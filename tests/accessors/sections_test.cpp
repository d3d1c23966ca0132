// Every accessor against the listing: what it asks for and in which order, what it writes and
// where, where it stops, and how it treats the lock. Each test goes over all sections.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "tests/accessors/listed_accessors.h"
#include "tests/accessors/listing.h"
#include "tests/accessors/section_values.h"
#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

namespace {

constexpr std::uint32_t failure = 77;  // no code of the library's own
constexpr std::size_t value_max = 199;

/// A section with a value for each of its elements.
struct section_trial {
  const listed_section& section;
  const accessor_pair& accessors;
  std::vector<element> elements;
  std::vector<section_value> values;

  std::uint32_t get(guarded_record& record) const { return accessors.get(record.get()); }
  std::uint32_t set(const guarded_record& record) const { return accessors.set(record.get()); }

  /// A record as a getter leaves it that read the first `count` elements.
  guarded_record read_up_to(std::size_t count) const {
    guarded_record record{section};
    for (std::size_t i = 0; i < count; ++i) {
      record.put(elements[i], values[i]);
    }
    return record;
  }

  guarded_record whole_record() const { return read_up_to(elements.size()); }

  std::vector<std::string> keys_up_to(std::size_t count) const {
    std::vector<std::string> keys;
    std::transform(elements.begin(), elements.begin() + static_cast<std::ptrdiff_t>(count),
                   std::back_inserter(keys), [](const element& each) { return each.key; });
    return keys;
  }

  std::vector<std::string> all_keys() const { return keys_up_to(elements.size()); }
};

std::vector<std::string> keys_of(const std::vector<seen_request>& requests) {
  std::vector<std::string> keys;
  std::transform(requests.begin(), requests.end(), std::back_inserter(keys),
                 [](const seen_request& each) { return each.key; });
  return keys;
}

std::uint16_t size_of(std::string_view name) {
  return static_cast<std::uint16_t>(name.size() + 1);
}

bytes get_request(const std::string& section, const std::string& key) {
  const std::uint16_t behind_key = static_cast<std::uint16_t>(size_of(section) + size_of(key));
  return row(own_reply_type(), u32(10), u16(0), u16(size_of(section)), u16(behind_key), u16(0),
             text(section), text(key));
}

bytes set_request(const std::string& section, const std::string& key, const std::string& value) {
  const std::uint16_t behind_key = static_cast<std::uint16_t>(size_of(section) + size_of(key));
  return row(own_reply_type(), u32(9), u16(0), u16(size_of(section)), u16(behind_key),
             u16(size_of(value)), text(section), text(key), text(value));
}

class Sections : public testing::Test {
 protected:
  /// Calls `check` with every section and values of its own. The service holds none of its keys.
  template <typename Check>
  void for_every_section(Check check) {
    ASSERT_EQ(listed_sections().size(), 46U);
    for (const listed_section& section : listed_sections()) {
      SCOPED_TRACE(section.getter);
      service.starts_anew();
      service.has_section(section.name);
      check(section_trial{section, accessors_of(section.getter), elements_of(section),
                          random_values(section, random)});
    }
  }

  /// Calls `check` with every section and the index of each of its elements that `counts`. The
  /// service holds all values, and fails nothing.
  template <typename Counts, typename Check>
  void for_every_element(Counts counts, Check check) {
    int checked = 0;
    for_every_section([&](const section_trial& trial) {
      for (std::size_t i = 0; i < trial.elements.size(); ++i) {
        if (!counts(trial.elements[i])) {
          continue;
        }
        SCOPED_TRACE(trial.elements[i].key);
        service.starts_anew();
        hold(service, trial.section, trial.values);
        check(trial, i);
        ++checked;
      }
    });
    EXPECT_GT(checked, 0);
  }

  scripted_service service;
  std::mt19937 random{20080131};
};

bool is_scalar(const element& each) {
  return !each.field->is_array;
}

bool ends_array(const element& each) {
  return each.field->is_array && each.is_last;
}

}  // namespace

// ---- Requests and values ------------------------------------------------------------------------

TEST_F(Sections, a_getter_asks_for_every_key_in_order) {
  for_every_section([&](const section_trial& trial) {
    hold(service, trial.section, trial.values);
    guarded_record record{trial.section};
    EXPECT_EQ(trial.get(record), 0U);
    const std::vector<seen_request> requests = service.take_requests();
    EXPECT_EQ(keys_of(requests), trial.all_keys());
    for (const seen_request& request : requests) {
      EXPECT_EQ(request.text, get_request(trial.section.name, request.key)) << request.key;
    }
  });
}

TEST_F(Sections, a_setter_writes_every_key_in_order_and_each_in_the_text_of_its_kind) {
  for_every_section([&](const section_trial& trial) {
    EXPECT_EQ(trial.set(trial.whole_record()), 0U);
    const std::vector<seen_request> requests = service.take_requests();
    ASSERT_EQ(keys_of(requests), trial.all_keys());
    for (std::size_t i = 0; i < requests.size(); ++i) {
      EXPECT_EQ(requests[i].value, trial.values[i].text) << requests[i].key;
      EXPECT_EQ(requests[i].text,
                set_request(trial.section.name, requests[i].key, trial.values[i].text))
          << requests[i].key;
    }
  });
}

TEST_F(Sections, a_getter_fills_each_field_and_touches_nothing_beside_it) {
  for_every_section([&](const section_trial& trial) {
    hold(service, trial.section, trial.values);
    guarded_record record{trial.section};
    EXPECT_EQ(trial.get(record), 0U);
    EXPECT_EQ(record, trial.whole_record());
  });
}

TEST_F(Sections, a_setter_leaves_its_record_as_it_is) {
  for_every_section([&](const section_trial& trial) {
    const guarded_record record = trial.whole_record();
    EXPECT_EQ(trial.set(record), 0U);
    EXPECT_EQ(record, trial.whole_record());
  });
}

TEST_F(Sections, what_is_set_is_what_is_got) {
  for (int round = 0; round < 20; ++round) {
    for_every_section([&](const section_trial& trial) {
      EXPECT_EQ(trial.set(trial.whole_record()), 0U);
      guarded_record record{trial.section};
      EXPECT_EQ(trial.get(record), 0U);
      EXPECT_EQ(record, trial.whole_record());
    });
  }
}

// ---- Kinds and capacities -----------------------------------------------------------------------

namespace {

/// What a getter makes of one stored text: a result, and what the field holds then, nothing when it
/// is untouched.
struct reading {
  std::string stored;
  std::uint32_t result;
  std::optional<bytes> content;
  std::optional<std::uint16_t> claim = std::nullopt;  // instead of a stored text
};

/// Readings that every number and address shares: 15 characters are read, 16 are not.
std::vector<reading> with_number_lengths(std::vector<reading> readings, const bytes& one) {
  readings.push_back({"000000000000001", 0, one});
  readings.push_back({"0000000000000001", 212, std::nullopt});
  return readings;
}

std::vector<reading> text_readings(std::size_t capacity) {
  const std::string longest(std::min(capacity - 1, value_max), 'x');
  std::vector<reading> readings{{"", 0, text("")}, {longest, 0, text(longest)}};
  if (capacity <= value_max) {
    readings.push_back({std::string(capacity, 'x'), 212, std::nullopt});
    return readings;
  }
  // No reply carries so long a text. One that only claims it is refused for the room it would need,
  // or else because the text is not there.
  const auto claim = static_cast<std::uint16_t>(capacity);
  readings.push_back({"", 205, std::nullopt, static_cast<std::uint16_t>(claim - 1)});
  readings.push_back({"", 212, std::nullopt, claim});
  return readings;
}

std::vector<reading> binary_readings(std::size_t count) {
  bytes most(count);
  for (std::size_t i = 0; i < count; ++i) {
    most[i] = static_cast<std::uint8_t>(i + 1);
  }
  bytes too_many = most;
  too_many.push_back(1);
  bytes two(count);
  two[0] = 1;
  two[1] = 2;
  return {{binary_value(most).text, 0, most},
          {binary_value(too_many).text, 212, std::nullopt},
          {"0x0201", 0, two},
          {"0X0201", 0, two},
          {"", 0, bytes(count)},
          {"0x020", 205, bytes(count)}};
}

std::vector<reading> readings_of(const listed_field& field) {
  switch (field.kind) {
    case field_kind::u8:
      return with_number_lengths({{"0xff", 0, bytes{0xFF}},
                                  {"256", 205, std::nullopt},
                                  {"-1", 205, std::nullopt},
                                  {"x", 210, std::nullopt}},
                                 bytes{1});
    case field_kind::u16:
      return with_number_lengths({{"65535", 0, u16(65535)},
                                  {"65536", 205, std::nullopt},
                                  {"-1", 205, std::nullopt},
                                  {"x", 210, std::nullopt}},
                                 u16(1));
    case field_kind::u32:
      return with_number_lengths({{"4294967295", 0, u32(0xFFFFFFFF)},
                                  {"-1", 0, u32(0xFFFFFFFF)},
                                  {"10.0.0.5", 210, u32(0)}},
                                 u32(1));
    case field_kind::ip:
      return {{"10.0.0.5", 0, u32(0x0A000005)},
              {"192.168.062.001", 0, u32(0xC0A83E01)},
              {"192.168.062.0001", 212, std::nullopt},
              {"10.0.0", 0xFFFFFFFF, std::nullopt},
              {"1", 0xFFFFFFFF, std::nullopt}};
    case field_kind::text:
      return text_readings(field.bytes);
    case field_kind::binary:
      return binary_readings(field.bytes);
  }
  return {};
}

}  // namespace

TEST_F(Sections, a_getter_reads_each_field_as_its_kind_up_to_its_capacity) {
  const auto decides = [](const element& each) { return each.is_last; };
  for_every_element(decides, [&](const section_trial& trial, std::size_t i) {
    const element& tried = trial.elements[i];
    for (const reading& each : readings_of(*tried.field)) {
      SCOPED_TRACE("\"" + each.stored + "\"");
      service.obeys();
      service.holds(trial.section.name, tried.key, each.stored);
      if (each.claim) {
        service.claims(trial.section.name, tried.key, *each.claim);
      }
      guarded_record expected = trial.read_up_to(each.result == 0 ? trial.elements.size() : i);
      guarded_record record{trial.section};
      if (each.result == 0) {
        // Only what stands behind a shorter text's NUL is
        // left of the value that was expected there.
        expected.put(tried, bytes(trial.elements[i].field->bytes, 0xA5));
      }
      if (each.content) {
        expected.put(tried, *each.content);
      }
      EXPECT_EQ(trial.get(record), each.result);
      EXPECT_EQ(record, expected);
    }
  });
}

TEST_F(Sections, a_text_of_200_characters_is_not_sent_and_ends_the_setter_with_204) {
  const auto holds_200 = [](const element& each) {
    return each.is_last && each.field->kind == field_kind::text && each.field->bytes > 200;
  };
  for_every_element(holds_200, [&](const section_trial& trial, std::size_t i) {
    guarded_record record = trial.whole_record();
    record.put(trial.elements[i], text_value(std::string(199, 'y')));
    EXPECT_EQ(trial.set(record), 0U);
    EXPECT_EQ(keys_of(service.take_requests()), trial.all_keys());
    record.put(trial.elements[i], text_value(std::string(200, 'y')));
    EXPECT_EQ(trial.set(record), 204U);
    EXPECT_EQ(keys_of(service.take_requests()), trial.keys_up_to(i));
  });
}

// ---- The stop rule ------------------------------------------------------------------------------

TEST_F(Sections, a_getter_stops_at_the_scalar_that_fails) {
  for_every_element(is_scalar, [&](const section_trial& trial, std::size_t i) {
    service.fails(trial.section.name, trial.elements[i].key, failure);
    guarded_record record{trial.section};
    EXPECT_EQ(trial.get(record), failure);
    EXPECT_EQ(record, trial.read_up_to(i));
    EXPECT_EQ(keys_of(service.take_requests()), trial.keys_up_to(i + 1));
    EXPECT_EQ(service.lock_value(), 1);
  });
}

TEST_F(Sections, a_setter_stops_at_the_scalar_that_fails_and_what_it_wrote_stands) {
  for_every_element(is_scalar, [&](const section_trial& trial, std::size_t i) {
    service.starts_anew();
    service.fails(trial.section.name, trial.elements[i].key, failure);
    EXPECT_EQ(trial.set(trial.whole_record()), failure);
    EXPECT_EQ(keys_of(service.take_requests()), trial.keys_up_to(i + 1));
    for (std::size_t k = 0; k < trial.elements.size(); ++k) {
      const auto stored = service.value(trial.section.name, trial.elements[k].key);
      EXPECT_EQ(stored, k < i ? std::optional{trial.values[k].text} : std::nullopt);
    }
    EXPECT_EQ(service.lock_value(), 1);
  });
}

// ---- The array rule -----------------------------------------------------------------------------

namespace {

/// The index of an array's first element, from that of its last.
std::size_t first_of(const section_trial& trial, std::size_t last) {
  return last + 1 - trial.elements[last].field->count;
}

}  // namespace

TEST_F(Sections, a_getter_forgets_failures_of_all_but_an_arrays_last_element) {
  for_every_element(ends_array, [&](const section_trial& trial, std::size_t last) {
    guarded_record expected{trial.section};
    for (std::size_t i = 0; i < trial.elements.size(); ++i) {
      if (i >= first_of(trial, last) && i < last) {
        service.fails(trial.section.name, trial.elements[i].key, failure);
      } else {
        expected.put(trial.elements[i], trial.values[i]);
      }
    }
    guarded_record record{trial.section};
    EXPECT_EQ(trial.get(record), 0U);
    EXPECT_EQ(record, expected);
    EXPECT_EQ(keys_of(service.take_requests()), trial.all_keys());
  });
}

TEST_F(Sections, a_getter_stops_behind_an_array_whose_last_element_fails) {
  for_every_element(ends_array, [&](const section_trial& trial, std::size_t last) {
    service.fails(trial.section.name, trial.elements[first_of(trial, last)].key, failure + 1);
    service.fails(trial.section.name, trial.elements[last].key, failure);
    guarded_record expected = trial.read_up_to(last);
    expected.put(trial.elements[first_of(trial, last)],
                 bytes(trial.elements[last].field->bytes, 0xA5));
    guarded_record record{trial.section};
    EXPECT_EQ(trial.get(record), failure);
    EXPECT_EQ(record, expected);
    EXPECT_EQ(keys_of(service.take_requests()), trial.keys_up_to(last + 1));
    EXPECT_EQ(service.lock_value(), 1);
  });
}

TEST_F(Sections, a_setter_forgets_failures_of_all_but_an_arrays_last_element) {
  for_every_element(ends_array, [&](const section_trial& trial, std::size_t last) {
    service.starts_anew();
    for (std::size_t i = first_of(trial, last); i < last; ++i) {
      service.fails(trial.section.name, trial.elements[i].key, failure);
    }
    EXPECT_EQ(trial.set(trial.whole_record()), 0U);
    EXPECT_EQ(keys_of(service.take_requests()), trial.all_keys());
    EXPECT_EQ(service.value(trial.section.name, trial.elements[last].key), trial.values[last].text);
    EXPECT_EQ(service.value(trial.section.name, trial.elements.back().key),
              trial.values.back().text);
  });
}

TEST_F(Sections, a_setter_stops_behind_an_array_whose_last_element_fails) {
  for_every_element(ends_array, [&](const section_trial& trial, std::size_t last) {
    service.fails(trial.section.name, trial.elements[first_of(trial, last)].key, failure + 1);
    service.fails(trial.section.name, trial.elements[last].key, failure);
    EXPECT_EQ(trial.set(trial.whole_record()), failure);
    EXPECT_EQ(keys_of(service.take_requests()), trial.keys_up_to(last + 1));
    EXPECT_EQ(service.lock_value(), 1);
  });
}

// ---- The lock -----------------------------------------------------------------------------------

namespace {

bool all_under_lock(const std::vector<seen_request>& requests) {
  return std::all_of(requests.begin(), requests.end(),
                     [](const seen_request& each) { return each.lock_held; });
}

/// The lock was taken once and given back once since the last faults::reset(), and is free.
void expect_one_hold_of_the_lock(const scripted_service& service) {
  EXPECT_EQ(faults::calls(faults::call::semget), 1);
  EXPECT_EQ(faults::calls(faults::call::msgget), 1);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(service.lock_value(), 1);
}

}  // namespace

TEST_F(Sections, a_getter_takes_the_lock_once_and_holds_it_throughout) {
  for_every_section([&](const section_trial& trial) {
    hold(service, trial.section, trial.values);
    guarded_record record{trial.section};
    faults::reset();
    EXPECT_EQ(trial.get(record), 0U);
    expect_one_hold_of_the_lock(service);
    EXPECT_TRUE(all_under_lock(service.take_requests()));
  });
}

TEST_F(Sections, a_setter_takes_the_lock_once_and_holds_it_throughout) {
  for_every_section([&](const section_trial& trial) {
    const guarded_record record = trial.whole_record();
    faults::reset();
    EXPECT_EQ(trial.set(record), 0U);
    expect_one_hold_of_the_lock(service);
    EXPECT_TRUE(all_under_lock(service.take_requests()));
  });
}

TEST_F(Sections, accessors_that_fail_give_the_lock_back_once) {
  for_every_section([&](const section_trial& trial) {
    for (const element& each : trial.elements) {
      service.fails(trial.section.name, each.key, failure);
    }
    guarded_record record{trial.section};
    faults::reset();
    EXPECT_EQ(trial.get(record), failure);
    expect_one_hold_of_the_lock(service);
    faults::reset();
    EXPECT_EQ(trial.set(trial.whole_record()), failure);
    expect_one_hold_of_the_lock(service);
  });
}

/// The request, and for binary data the scratch text beside it.
TEST_F(Sections, accessors_allocate_nothing_of_their_own) {
  for_every_section([&](const section_trial& trial) {
    const auto of_requests =
        static_cast<int>(trial.elements.size() +
                         static_cast<std::size_t>(std::count_if(
                             trial.elements.begin(), trial.elements.end(), [](const element& each) {
                               return each.field->kind == field_kind::binary;
                             })));
    guarded_record record = trial.whole_record();
    faults::reset();
    EXPECT_EQ(trial.set(record), 0U);
    EXPECT_EQ(faults::calls(faults::call::malloc), of_requests);
    faults::reset();
    EXPECT_EQ(trial.get(record), 0U);
    EXPECT_EQ(faults::calls(faults::call::malloc), of_requests);
  });
}

TEST_F(Sections, a_getter_ends_with_12_at_a_key_for_which_there_is_no_memory) {
  for_every_section([&](const section_trial& trial) {
    hold(service, trial.section, trial.values);
    int allocation = 0;
    for (std::size_t i = 0; i < trial.elements.size(); ++i) {
      const element& each = trial.elements[i];
      ++allocation;
      if (each.is_last) {
        faults::fail(faults::call::malloc, allocation, ENOMEM);
        guarded_record record{trial.section};
        EXPECT_EQ(trial.get(record), 12U) << each.key;
        EXPECT_EQ(record, trial.read_up_to(i)) << each.key;
        EXPECT_EQ(service.lock_value(), 1);
      }
      allocation += each.field->kind == field_kind::binary ? 1 : 0;
    }
    faults::reset();
  });
}

namespace {

/// Every accessor, where there is no service to answer: each gives `code` and touches nothing.
void expect_no_accessor_starts(std::uint32_t code) {
  std::mt19937 random{1};
  for (const listed_section& section : listed_sections()) {
    SCOPED_TRACE(section.getter);
    const section_trial trial{section, accessors_of(section.getter), elements_of(section),
                              random_values(section, random)};
    guarded_record record{section};
    EXPECT_EQ(trial.get(record), code);
    EXPECT_EQ(record, guarded_record{section});
    record = trial.whole_record();
    EXPECT_EQ(trial.set(record), code);
    EXPECT_EQ(record, trial.whole_record());
  }
}

}  // namespace

TEST(SectionsWithoutService, give_230_and_leave_the_record_as_it_is) {
  faults::reset();
  expect_no_accessor_starts(230);
  EXPECT_EQ(faults::calls(faults::call::semop), 0);
  EXPECT_EQ(faults::calls(faults::call::msgsnd), 0);
}

TEST(SectionsWithoutQueue, give_231_and_leave_record_and_lock_as_they_are) {
  request_queue queue;
  queue.remove_queue();
  faults::reset();
  expect_no_accessor_starts(231);
  EXPECT_EQ(queue.lock_value(), 1);
  EXPECT_EQ(faults::calls(faults::call::msgsnd), 0);
}

// ---- The shared library -------------------------------------------------------------------------

TEST(SectionsLibrary, exports_every_accessor) {
  void* library = dlopen(PROREFLAX_DEVICE_ROOT "/lib/proreflax.so.0", RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const listed_section& section : listed_sections()) {
    EXPECT_NE(dlsym(library, section.getter.c_str()), nullptr) << section.getter;
    EXPECT_NE(dlsym(library, section.setter.c_str()), nullptr) << section.setter;
  }
  EXPECT_NE(dlsym(library, "gui_wls_ac_add"), nullptr);
  EXPECT_NE(dlsym(library, "gui_wls_ac_delete"), nullptr);
  dlclose(library);
}
