#include "settings/ini_check.h"

#include <array>

#include "store/ini_line.h"

namespace proreflax::settings {
namespace {

struct fault_row {
  line_error fault;
  std::string_view rule;
  std::string_view sentence;
};

/// The faults of one line that lies in the loader's buffer as a whole, in the order of line_error.
constexpr std::array fault_rows{
    fault_row{line_error::none, "none", "no fault"},
    fault_row{line_error::begins_with_nul, "nul-byte", "the line begins with a NUL byte"},
    fault_row{line_error::too_short, "too-short",
              "the line is too short: an entry has at least 4 bytes with its LF, so a key of one "
              "character needs a value, and a header needs a name"},
    fault_row{line_error::no_line_feed, "no-line-feed", "the last line does not end in LF"},
    fault_row{line_error::header_not_closed, "header-not-closed",
              "the section header does not end in \"]\""},
    fault_row{line_error::name_too_long, "name-too-long",
              "the section name has more than 24 bytes"},
    fault_row{line_error::no_key, "no-key",
              "the line is no entry: there is no \"=\", or no key in front of it"},
    fault_row{line_error::key_too_long, "key-too-long", "the key has more than 49 bytes"},
    fault_row{line_error::value_too_long, "value-too-long", "the value has more than 199 bytes"},
    fault_row{line_error::no_section_yet, "no-section-yet",
              "the entry stands in front of the first section header"},
};
static_assert(line_name_max == 24 && line_key_max == 49 && line_value_max == 199,
              "the sentences name the limits");

constexpr const fault_row& row_of(line_error fault) {
  return fault_rows[static_cast<std::size_t>(fault)];
}

constexpr bool rows_follow_the_faults() {
  std::size_t row = 0;
  for (const fault_row& each : fault_rows) {
    if (static_cast<std::size_t>(each.fault) != row++) {
      return false;
    }
  }
  return true;
}
static_assert(rows_follow_the_faults());

/// A fault that only the bytes behind the loader's view explain.
struct named_fault {
  std::string_view rule;
  std::string sentence;
};

named_fault name_fault(line_error fault, std::string_view text) {
  const std::size_t nul = text.find('\0');
  if (nul != std::string_view::npos) {
    return {"nul-byte", "byte " + std::to_string(nul + 1) +
                            " of the line is a NUL, which ends it for the loader"};
  }
  if (fault == line_error::header_not_closed && text.ends_with("]\r\n")) {
    return {"header-not-closed", "a CR stands between the \"]\" of the section header and the LF"};
  }
  return {row_of(fault).rule, std::string{row_of(fault).sentence}};
}

bool is_entry(line_error fault) {
  return fault == line_error::none || fault == line_error::key_too_long ||
         fault == line_error::value_too_long;
}

}  // namespace

void ini_check::found(std::string_view rule, std::string sentence) {
  if (!gave_up()) {
    faults_.push_back({line_number_, rule, std::move(sentence)});
  }
}

void ini_check::line(std::string_view text) {
  ++line_number_;
  // A malformed header was meant as one: the entries below it are not blamed for it.
  header_seen_ = header_seen_ || text.starts_with('[');
  if (text.ends_with('\n')) {
    judge(text);
    return;
  }
  const fault_row& row = row_of(line_error::no_line_feed);
  found(row.rule, std::string{row.sentence});
  judge(std::string{text} + '\n');  // what else is wrong with it
}

void ini_check::judge(std::string_view text) {
  if (text.size() >= line_buffer_bytes) {
    found("line-too-long", "the line has " + std::to_string(text.size()) +
                               " bytes with its LF; the loader reads at most " +
                               std::to_string(line_buffer_bytes - 1));
    return;
  }
  std::array<char, line_buffer_bytes> buffer{};
  text.copy(buffer.data(), text.size());
  const ini_line line = read_ini_line(buffer.data());
  if (line.error != line_error::none) {
    const auto [rule, sentence] = name_fault(line.error, text);
    found(rule, sentence);
  }
  if (line.type == line_type::entry && is_entry(line.error)) {
    require_section();
  }
}

void ini_check::require_section() {
  if (!header_seen_) {
    const fault_row& row = row_of(line_error::no_section_yet);
    found(row.rule, std::string{row.sentence});
  }
}

void ini_check::end() {
  if (!header_seen_) {
    line_number_ = 0;
    found("no-section", "the text holds no section header");
  }
}

}  // namespace proreflax::settings
