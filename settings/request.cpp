#include "settings/request.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "settings/known_sections.h"
#include "settings/message_text.h"
#include "settings/name_rules.h"
#include "settings/result_text.h"
#include "settings/service_state.h"

namespace proreflax::settings {
namespace {

/// Room for the longest value that a reply can hold, and its NUL.
using value_text = std::array<char, 257>;

answer refused(std::uint32_t code, std::string sentence) {
  return {.code = code, .sentence = std::move(sentence)};
}

answer refused_by_rule(const std::optional<std::string>& broken) {
  return broken ? refused(CFC_ERR_BAD_ARGUMENT, *broken) : answer{};
}

answer in_general(std::uint32_t code) {
  return code == CFC_OK ? answer{} : refused(code, result_sentence(code));
}

answer first_refusal(std::initializer_list<answer> answers) {
  const auto* const refusal = std::ranges::find_if_not(answers, &answer::ok);
  return refusal == answers.end() ? answer{} : *refusal;
}

answer screen_names(const std::string& section, const std::string& key) {
  return first_refusal(
      {refused_by_rule(broken_section_rule(section)), refused_by_rule(broken_key_rule(key))});
}

/// What the getter of a known section would not read is not set, unless it is forced.
answer screen_known_value(const set_request& set, const typed_value& value) {
  const auto known = set.force ? std::nullopt : find_known_key(set.section, set.key);
  if (!known) {
    return {};
  }
  const parsed_value read = read_stored(known->which, stored_text(value));
  return read.code == CFC_OK
             ? answer{}
             : refused(read.code, read.sentence + " (--force sets it all the same)");
}

answer screen_value(const set_request& set) {
  const parsed_value parsed = parse_value(set.kind, set.value);
  if (parsed.code != CFC_OK) {
    return refused(parsed.code, parsed.sentence);
  }
  return first_refusal({refused_by_rule(broken_entry_rule(set.key, set.value)),
                        screen_known_value(set, parsed.value)});
}

struct screener {
  answer operator()(const get_request& get) const { return screen_names(get.section, get.key); }
  answer operator()(const set_request& set) const {
    return first_refusal({screen_names(set.section, set.key), screen_value(set)});
  }
  answer operator()(const register_request& application) const {
    return refused_by_rule(broken_section_rule(application.name));
  }
  answer operator()(flush_request /*flush*/) const { return {}; }
  answer operator()(defaults_request /*defaults*/) const { return {}; }
};

// ---- get --------------------------------------------------------------------------------------

/// Makes one typed get into a value of its own type.
template <typename Value, typename Get>
answer got(Get get) {
  Value value{};
  const std::uint32_t code = get(value);
  return code == CFC_OK ? answer{.value = std::move(value)} : in_general(code);
}

template <typename Number>
answer get_number(int locked, const get_request& get,
                  std::uint32_t (*read)(int, const char*, const char*, Number*)) {
  return got<Number>(
      [&](Number& number) { return read(locked, get.section.c_str(), get.key.c_str(), &number); });
}

answer get_address(int locked, const get_request& get) {
  return got<ipv4_address>([&](ipv4_address& address) {
    return __cfc_get_ip(locked, get.section.c_str(), get.key.c_str(), &address.number);
  });
}

answer get_string(int locked, const get_request& get) {
  return got<std::string>([&](std::string& value) {
    value_text text{};
    const std::uint32_t code =
        __cfc_get_string(locked, get.section.c_str(), get.key.c_str(), text.data(), text.size());
    value = text.data();
    return code;
  });
}

/// Needs the lock held: the library does not tell how many bytes are stored, so the text is read
/// first, and the same text must still be there when its bytes are.
answer get_bytes(const get_request& get) {
  answer text = get_string(static_cast<int>(lock_flag::held), get);
  if (!text.ok()) {
    return text;
  }
  const std::size_t length = std::get<std::string>(*text.value).size();
  if (length == 0) {
    return {.value = binary_data{}};
  }
  return got<binary_data>([&](binary_data& bytes) {
    auto count = static_cast<std::int32_t>(std::max<std::size_t>(1, (length - 1) / 2));
    bytes.resize(static_cast<std::size_t>(count));
    return __cfc_get_binary(static_cast<int>(lock_flag::held), get.section.c_str(), get.key.c_str(),
                            bytes.data(), &count);
  });
}

answer get_binary(const get_request& get, lock_flag lock) {
  if (lock == lock_flag::held) {
    return get_bytes(get);
  }
  const access_lock own_lock;
  return own_lock.held() ? get_bytes(get) : in_general(own_lock.result());
}

answer get_value(const get_request& get, lock_flag lock) {
  const int locked = static_cast<int>(lock);
  switch (get.kind) {
    case value_kind::u8:
      return get_number(locked, get, __cfc_get_u8);
    case value_kind::u16:
      return get_number(locked, get, __cfc_get_u16);
    case value_kind::u32:
      return get_number(locked, get, __cfc_get_u32);
    case value_kind::ip:
      return get_address(locked, get);
    case value_kind::binary:
      return get_binary(get, lock);
    case value_kind::string:
      break;
  }
  return get_string(locked, get);
}

/// Codes of a getter that speak of the stored text.
bool blames_the_stored_text(std::uint32_t code) {
  constexpr std::array<std::uint32_t, 6> codes{CFC_ERR_BAD_ARGUMENT, CFC_ERR_BAD_VALUE,
                                               CFC_ERR_BAD_DIGIT,    CFC_ERR_OVERFLOW,
                                               CFC_ERR_NO_ROOM,      CFC_ERR_NOT_AN_ADDRESS};
  return std::ranges::find(codes, code) != codes.end();
}

answer with_kind_rule(answer result, value_kind kind) {
  if (kind != value_kind::string && blames_the_stored_text(result.code)) {
    result.sentence.append("; the stored value is not of type ").append(name_of(kind));
    result.sentence.append(", which is ").append(kind_rule(kind));
  }
  return result;
}

// ---- set --------------------------------------------------------------------------------------

struct setter {
  int locked;
  const char* section;
  const char* key;

  std::uint32_t operator()(const std::string& value) const {
    return __cfc_set_string(locked, section, key, value.c_str());
  }
  std::uint32_t operator()(std::uint8_t value) const {
    return __cfc_set_u8(locked, section, key, value);
  }
  std::uint32_t operator()(std::uint16_t value) const {
    return __cfc_set_u16(locked, section, key, value);
  }
  std::uint32_t operator()(std::uint32_t value) const {
    return __cfc_set_u32(locked, section, key, value);
  }
  std::uint32_t operator()(ipv4_address value) const {
    return __cfc_set_ip(locked, section, key, value.number);
  }
  std::uint32_t operator()(const binary_data& value) const {
    return __cfc_set_binary(locked, section, key, value.data(),
                            static_cast<std::int32_t>(value.size()));
  }
};

/// What was screened here and is refused all the same was refused by the service.
answer from_service(std::uint32_t code) {
  return code == CFC_ERR_BAD_ARGUMENT ? refused(code, "the service refused section, key or value")
                                      : in_general(code);
}

struct requester {
  lock_flag lock;

  bool held() const { return lock == lock_flag::held; }

  answer operator()(const get_request& get) const {
    return with_kind_rule(get_value(get, lock), get.kind);
  }
  answer operator()(const set_request& set) const {
    const setter write{static_cast<int>(lock), set.section.c_str(), set.key.c_str()};
    return from_service(std::visit(write, parse_value(set.kind, set.value).value));
  }
  answer operator()(const register_request& application) const {
    const auto add = held() ? cfc_add_app_sem : cfc_add_app_nosem;
    return from_service(add(application.name.c_str()));
  }
  answer operator()(flush_request /*flush*/) const {
    return in_general(held() ? cfc_flush_all_sem() : cfc_flush_all_nosem());
  }
  answer operator()(defaults_request /*defaults*/) const { return in_general(cfc_to_default()); }
};

std::string entry_names(const std::string& section, const std::string& key) {
  return " section " + quoted(section) + " key " + quoted(key);
}

struct namer {
  std::string operator()(const get_request& get) const { return entry_names(get.section, get.key); }
  std::string operator()(const set_request& set) const { return entry_names(set.section, set.key); }
  std::string operator()(const register_request& application) const {
    return " section " + quoted(application.name);
  }
  std::string operator()(flush_request /*flush*/) const { return {}; }
  std::string operator()(defaults_request /*defaults*/) const { return {}; }
};

}  // namespace

std::string_view verb_of(const request& asked) {
  constexpr std::array<std::string_view, 5> verbs{"get", "set", "register", "flush", "defaults"};
  static_assert(verbs.size() == std::variant_size_v<request>);
  return verbs[asked.index()];
}

std::string subject_of(const request& asked) {
  return std::string{verb_of(asked)} + std::visit(namer{}, asked);
}

answer screen(const request& asked) {
  return std::visit(screener{}, asked);
}

answer carry_out(const request& asked, lock_flag lock) {
  if (answer refusal = screen(asked); !refusal.ok()) {
    return refusal;
  }
  if (lock == lock_flag::take && service_was_killed()) {
    return refused(CFC_ERR_NO_SEM, std::string{killed_service});
  }
  return std::visit(requester{lock}, asked);
}

}  // namespace proreflax::settings
