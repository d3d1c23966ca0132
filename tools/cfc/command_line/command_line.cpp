// Words are taken apart by getopt_long; what each verb takes is in the tables of verbs.cpp.
//
// getopt_long is asked for words in their order, and only for those that it should see: it would
// accept an abbreviated option and split an unknown one into letters, and a script that is mistyped
// must not be half understood. All of the line is read before anything is refused, so --help
// anywhere gives the help.
//
// A value may begin with a dash, and is given in scripts that do not look at it ("cfc set SENSOR
// Offset -5"): the word in VALUE's place is taken unchanged unless it is one of the verb's own
// options. After "--" every word is taken unchanged.
#include "tools/cfc/command_line/command_line.h"

#include <getopt.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "settings/message_text.h"
#include "settings/nearest_name.h"
#include "settings/typed_value.h"
#include "tools/cfc/command_line/help.h"
#include "tools/cfc/command_line/verbs.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

constexpr std::size_t image_name_max = 32;

constexpr bool is_option_of_set(std::string_view word) {
  return word.starts_with("--type=") || word == "--force" || word == "--help" || word == "-h";
}

/// The place of VALUE among the words of a `set`; the number of words when it has none.
std::size_t place_of_value(const std::vector<std::string>& words) {
  std::size_t positionals = 0;
  for (std::size_t i = 1; i < words.size() && words[i] != "--"; ++i) {
    if (words[i] == "--type" || words[i] == "--type=") {
      ++i;
    } else if (!is_option_of_set(words[i]) && ++positionals == 3) {
      return i;
    }
  }
  return words.size();
}

/// Puts VALUE after a "--" of its own, at the end.
void shield_value(std::vector<std::string>& words) {
  const std::size_t place =
      words.empty() || words[0] != "set" ? words.size() : place_of_value(words);
  if (place < words.size() && words[place].starts_with('-')) {
    std::string value = std::move(words[place]);
    words.erase(words.begin() + static_cast<std::ptrdiff_t>(place));
    words.emplace_back("--");
    words.push_back(std::move(value));
  }
}

/// An option that was given, and its value.
struct given_option {
  verb_option which;
  std::string value;
};

/// A line taken apart: the verb with what it was given, and what nobody asked for.
struct taken_line {
  const verb_row* family = nullptr;
  const verb_row* row = &program;
  std::vector<given_option> options;
  std::vector<std::string> positionals;
  std::vector<std::string> unexpected;
  std::string fault;  // of an option without its value

  const std::string* find(verb_option which) const {
    const auto found = std::ranges::find(options, which, &given_option::which);
    return found == options.end() ? nullptr : &found->value;
  }
  bool has(verb_option which) const { return find(which) != nullptr; }
  bool has(std::size_t positional) const { return positional < positionals.size(); }
  /// Empty for a positional that was left out.
  std::string at(std::size_t positional) const {
    return has(positional) ? positionals[positional] : std::string{};
  }
};

// ---- Taking the line apart ----------------------------------------------------------------------

/// Reads the words of one verb, and then those of the member that they lead to.
class word_reader {
 public:
  explicit word_reader(std::vector<std::string>& words) {
    words_.push_back(const_cast<char*>(program.name));
    for (std::string& each : words) {
      words_.push_back(each.data());
    }
    words_.push_back(nullptr);
  }

  taken_line read() {
    while (read_verb() && line_.fault.empty()) {
    }
    return std::move(line_);
  }

 private:
  /// What getopt_long knows of a verb.
  void describe_verb() {
    letters_ = "-:";
    options_.clear();
    for (const verb_option each : line_.row->options) {
      const option_row& row = row_of(each);
      const bool takes_value = row.argument != nullptr;
      options_.push_back(
          {row.name, takes_value ? required_argument : no_argument, nullptr, code_of(each)});
      if (row.letter != '\0') {
        letters_ += row.letter;
        letters_ += takes_value ? ":" : "";
      }
    }
    options_.push_back({});
  }

  /// True when another verb's words follow.
  bool read_verb() {
    describe_verb();
    optind = 0;
    opterr = 0;
    const verb_row* const row = line_.row;
    while (line_.fault.empty() && row == line_.row) {
      const int place = std::max(optind, 1);
      char* const word = words_[begin_ + static_cast<std::size_t>(place)];
      if (word == nullptr) {
        return false;
      }
      if (is_unknown(word)) {
        line_.unexpected.emplace_back(word);
        optind = place + 1;
      } else if (is_negative_number(word)) {
        take_word(word, place);
        optind = place + 1;
      } else if (!read_next(word, place)) {
        return false;
      }
    }
    return true;
  }

  /// False at the end of the verb's words.
  bool read_next(char* word, int place) {
    const int count = static_cast<int>(words_.size() - begin_) - 1;
    const int code =
        getopt_long(count, words_.data() + begin_, letters_.c_str(), options_.data(), nullptr);
    if (code == -1) {
      take_rest();
      return false;
    }
    const bool is_refused = code == ':' || code == '?';
    const verb_option* const which = option_of(is_refused ? optopt : code);
    if (code == in_order) {
      take_word(word, place);
    } else if (which != nullptr && code == ':') {
      lack_value(*which);
    } else if (which != nullptr && code == '?') {
      refuse_value(word, *which);
    } else if (which != nullptr) {
      take_option(word, *which);
    }
    return true;
  }

  bool is_known_name(std::string_view name) const {
    return std::ranges::any_of(line_.row->options,
                               [&](verb_option each) { return name == row_of(each).name; });
  }

  bool is_unknown(std::string_view word) const {
    if (word.size() < 2 || word[0] != '-' || word == "--" || is_negative_number(word)) {
      return false;
    }
    return word[1] == '-' ? !is_known_name(word.substr(2, word.find('=') - 2))
                          : std::ranges::none_of(line_.row->options, [&](verb_option each) {
                              return word[1] == row_of(each).letter;
                            });
  }

  static bool is_negative_number(std::string_view word) {
    return word.size() > 1 && word[0] == '-' && word[1] >= '0' && word[1] <= '9';
  }

  void take_word(const char* word, int place) {
    const verb_row& row = *line_.row;
    const auto member = std::ranges::find_if(
        row.members, [&](const verb_row& each) { return std::string_view{word} == each.name; });
    if (member != row.members.end()) {
      line_.family = &row;
      line_.row = &*member;
      begin_ += static_cast<std::size_t>(place);
    } else if (can_take_another(row)) {
      line_.positionals.emplace_back(word);
    } else {
      line_.unexpected.emplace_back(word);
    }
  }

  bool can_take_another(const verb_row& row) const {
    return !row.positionals.empty() &&
           (line_.positionals.size() < row.positionals.size() || row.positionals.back().repeats);
  }

  /// The words after "--".
  void take_rest() {
    for (char** each = words_.data() + begin_ + optind; *each != nullptr; ++each) {
      if (can_take_another(*line_.row)) {
        line_.positionals.emplace_back(*each);
      } else {
        line_.unexpected.emplace_back(*each);
      }
    }
  }

  /// The option that getopt_long means by a code; null for a letter that the verb does not know.
  const verb_option* option_of(int code) const {
    const auto found = std::ranges::find_if(line_.row->options, [&](verb_option each) {
      return code == code_of(each) || code == row_of(each).letter;
    });
    return found == line_.row->options.end() ? nullptr : &*found;
  }

  /// An empty value after "=" is the next word.
  void take_option(std::string_view word, verb_option which) {
    if (optarg != nullptr && *optarg == '\0' && word.ends_with('=')) {
      optarg = words_[begin_ + static_cast<std::size_t>(optind)];
      if (optarg == nullptr) {
        lack_value(which);
        return;
      }
      ++optind;
    }
    line_.options.push_back({which, optarg == nullptr ? "" : optarg});
  }

  /// A flag takes no value after "=".
  void refuse_value(std::string_view word, verb_option which) {
    line_.fault = "Could not convert: --";
    line_.fault += row_of(which).name;
    line_.fault += " = ";
    line_.fault += word.substr(word.find('=') + 1);
  }

  void lack_value(verb_option which) {
    line_.fault = "--";
    line_.fault += row_of(which).name;
    line_.fault += ": 1 required" + argument_of(row_of(which)) + " missing";
  }

  static constexpr int code_of(verb_option which) { return first_code + static_cast<int>(which); }

  static constexpr int in_order = 1;      // what getopt_long calls a word that is not an option
  static constexpr int first_code = 256;  // of the long options: above every letter

  std::vector<char*> words_;
  std::size_t begin_ = 0;  // the word of the verb whose words are read
  std::string letters_;
  std::vector<option> options_;
  taken_line line_;
};

// ---- Judging it ---------------------------------------------------------------------------------

/// Whether a word is one of "{a,b}".
bool is_among(std::string_view choices, std::string_view word) {
  choices = choices.substr(1, choices.size() - 2);
  while (true) {
    const std::size_t end = choices.find(',');
    if (choices.substr(0, end) == word) {
      return true;
    }
    if (end == std::string_view::npos) {
      return false;
    }
    choices.remove_prefix(end + 1);
  }
}

std::string fault_of_choice(const char* choices, const std::string& word) {
  return choices == nullptr || is_among(choices, word) ? std::string{}
                                                       : word + " not in " + choices;
}

/// A number as `set --type u32` takes it.
parsed_value number_of(const std::string& word) {
  return parse_value(value_kind::u32, word);
}

std::string fault_of_number(const std::string& word) {
  const parsed_value number = number_of(word);
  return number.code == CFC_OK ? std::string{} : word + ": " + number.sentence;
}

/// Why a value cannot be taken; empty when it can.
std::string fault_of(const given_option& given) {
  switch (given.which) {
    case verb_option::name:
      return given.value.size() > image_name_max ? "more than 32 bytes" : "";
    case verb_option::load:
    case verb_option::entry:
    case verb_option::time:
      return fault_of_number(given.value);
    default:
      return fault_of_choice(row_of(given.which).choices, given.value);
  }
}

std::string fault_of_positionals(const taken_line& line) {
  for (std::size_t i = 0; line.has(i) && i < line.row->positionals.size(); ++i) {
    const positional_row& row = line.row->positionals[i];
    if (const std::string fault = fault_of_choice(row.choices, line.positionals[i]);
        !fault.empty()) {
      return std::string{row.name} + ": " + fault;
    }
  }
  return {};
}

/// Flags may be repeated.
std::string fault_of_options(const taken_line& line) {
  for (const verb_option which : line.row->options) {
    const std::string name = std::string{"--"} + row_of(which).name + ": ";
    std::size_t count = 0;
    for (const given_option& each : line.options) {
      const std::string fault = each.which == which ? fault_of(each) : std::string{};
      if (!fault.empty()) {
        return name + fault;
      }
      count += each.which == which ? 1 : 0;
    }
    if (count > 1 && row_of(which).argument != nullptr) {
      return name + "At Most 1 required but received " + std::to_string(count);
    }
  }
  return {};
}

/// The word in a verb's place, and the verb that it is likely to be.
std::string unknown_verb(const std::string& word, const verb_row& family) {
  nearest_name nearest{word};
  for (const verb_row& each : family.members) {
    nearest.offer(each.name);
  }
  std::string fault = "unknown verb \"" + word + "\"";
  if (!nearest.name().empty()) {
    fault += "; did you mean ";
    fault += nearest.name();
    fault += "?";
  }
  return fault;
}

std::string first_missing(const taken_line& line) {
  if (!line.row->members.empty()) {
    // After "--" even a verb is not taken for one.
    const auto is_verb = [&](const std::string& word) {
      return std::ranges::any_of(line.row->members,
                                 [&](const verb_row& each) { return word == each.name; });
    };
    const auto word = std::ranges::find_if(line.unexpected, [&](const std::string& each) {
      return !each.starts_with('-') && !is_verb(each);
    });
    return word == line.unexpected.end() ? "A subcommand is required"
                                         : unknown_verb(*word, *line.row);
  }
  for (const verb_option each : line.row->options) {
    if (row_of(each).required && !line.has(each)) {
      return std::string{"--"} + row_of(each).name + " is required";
    }
  }
  for (std::size_t i = line.positionals.size(); i < line.row->positionals.size(); ++i) {
    if (line.row->positionals[i].required) {
      return std::string{line.row->positionals[i].name} + " is required";
    }
  }
  return {};
}

/// The last is named first.
std::string fault_of_unexpected(const taken_line& line) {
  const std::vector<std::string>& words = line.unexpected;
  if (words.empty()) {
    return {};
  }
  std::string fault = words.size() > 1 ? "The following arguments were not expected:"
                                       : "The following argument was not expected:";
  for (auto each = words.rbegin(); each != words.rend(); ++each) {
    fault += ' ';
    fault += *each;
  }
  return fault;
}

std::string complaint(const taken_line& line, const std::string& fault) {
  std::string verbs;
  for (const verb_row* each : {line.family, line.row}) {
    if (each != nullptr && each != &program) {
      verbs += verbs.empty() ? "" : " ";
      verbs += each->name;
    }
  }
  std::string text = printable(verbs.empty() ? fault : verbs + ": " + fault);
  text += " (see: cfc ";
  text += verbs;
  text += verbs.empty() ? "--help)" : " --help)";
  return text;
}

// ---- The command --------------------------------------------------------------------------------

value_kind kind_of(const taken_line& line) {
  const std::string* const type = line.find(verb_option::value_type);
  const auto* const name =
      type == nullptr ? kind_names.begin() : std::ranges::find(kind_names, *type);
  return static_cast<value_kind>(name - kind_names.begin());
}

/// Decimal, octal after 0 or hexadecimal after 0x.
bool read_region(const std::string& word, int& region) {
  char* end = nullptr;
  errno = 0;
  const long long number = std::strtoll(word.c_str(), &end, 0);
  region = static_cast<int>(number);
  return errno == 0 && *end == '\0' && number == region;
}

std::optional<std::uint32_t> number_of(const taken_line& line, verb_option which) {
  const std::string* const word = line.find(which);
  return word == nullptr ? std::nullopt
                         : std::optional{std::get<std::uint32_t>(number_of(*word).value)};
}

firmware_pack_command pack_command_of(const taken_line& line) {
  const std::string* const name = line.find(verb_option::name);
  return {.type = *line.find(verb_option::image_type),
          .file = *line.find(verb_option::output),
          .parts = line.positionals,
          .name = name == nullptr ? std::string{} : *name,
          .load_address = number_of(line, verb_option::load).value_or(0),
          .entry_point = number_of(line, verb_option::entry),
          .time = number_of(line, verb_option::time)};
}

/// Nothing, and a fault, for what only the verb itself can judge.
std::optional<any_command> channels_command_of(const taken_line& line, std::string& fault) {
  wireless_channels_command command{.region = 0, .json = line.has(verb_option::json)};
  if (!read_region(line.at(0), command.region)) {
    fault = "Could not convert: REGION = " + line.at(0);
    return std::nullopt;
  }
  return wireless_command{command};
}

std::optional<any_command> acl_command_of(const taken_line& line, std::string& fault) {
  acl_command command{.action = acl_command::list, .address = line.at(1)};
  if (line.at(0) != "list") {
    command.action = line.at(0) == "add" ? acl_command::add : acl_command::remove;
  }
  if (line.has(1) == (command.action == acl_command::list)) {
    fault = "MAC: add and delete take one address, list takes none";
    return std::nullopt;
  }
  return command;
}

std::optional<any_command> command_of(const taken_line& line, std::string& fault) {
  const bool json = line.has(verb_option::json) || line.has(verb_option::json_object);
  const bool secrets = line.has(verb_option::secrets);
  switch (line.row->which) {
    case verb::get:
      return store_command{get_request{line.at(0), line.at(1), kind_of(line)}, json};
    case verb::set:
      return store_command{set_request{line.at(0), line.at(1), line.at(2), kind_of(line),
                                       line.has(verb_option::force)}};
    case verb::register_section:
      return store_command{register_request{line.at(0)}};
    case verb::flush:
      return store_command{flush_request{}};
    case verb::defaults:
      return store_command{defaults_request{}};
    case verb::batch:
      return batch_command{line.at(0), line.has(verb_option::all_or_nothing), json};
    case verb::check:
      return check_command{line.at(0), json};
    case verb::status:
      return status_command{json};
    case verb::show:
      return show_command{line.at(0), secrets, json};
    case verb::sections:
      return sections_command{line.at(0), json};
    case verb::export_all:
      return export_command{json};
    case verb::import:
      return import_command{line.at(0)};
    case verb::diff:
      return diff_command{secrets};
    case verb::edit:
      return edit_command{line.at(0)};
    case verb::acl:
      return acl_command_of(line, fault);
    case verb::time:
      return time_command{json};
    case verb::wireless_status:
      return wireless_command{wireless_status_command{json}};
    case verb::wireless_events:
      return wireless_command{wireless_events_command{json}};
    case verb::wireless_stations:
      return wireless_command{wireless_stations_command{json}};
    case verb::wireless_channels:
      return channels_command_of(line, fault);
    case verb::firmware_info:
      return firmware_info_command{line.at(0), json};
    case verb::firmware_pack:
      return pack_command_of(line);
    case verb::firmware_write:
      return firmware_write_command{line.at(0), line.has(verb_option::yes)};
    case verb::help:
    case verb::family:
      break;
  }
  return std::nullopt;
}

/// The help of the verb that the words of `cfc help` name; a fault when they name none.
std::string explanation_of(const std::vector<std::string>& words, std::string& fault) {
  const verb_row* family = nullptr;
  const verb_row* row = &program;
  for (const std::string& word : words) {
    const auto member =
        std::ranges::find_if(row->members, [&](const verb_row& each) { return word == each.name; });
    if (member == row->members.end()) {
      fault = unknown_verb(word, *row);
      return {};
    }
    family = row;
    row = &*member;
  }
  return help_of(family, *row);
}

/// What is wrong with the line as a whole, the first that counts; empty when nothing is.
std::string fault_of(const taken_line& line) {
  for (const auto judge : {first_missing, fault_of_unexpected}) {
    if (std::string fault = judge(line); !fault.empty()) {
      return fault;
    }
  }
  return {};
}

std::string fault_of_values(const taken_line& line) {
  if (!line.fault.empty()) {
    return line.fault;
  }
  std::string fault = fault_of_positionals(line);
  return fault.empty() ? fault_of_options(line) : fault;
}

}  // namespace

parsed_line parse_command_line(std::vector<std::string> words) {
  shield_value(words);
  const taken_line line = word_reader{words}.read();
  std::string fault = fault_of_values(line);
  if (fault.empty() && line.has(verb_option::version)) {
    return {.command = {}, .status = exit_status::done, .text = "cfc " PROREFLAX_VERSION};
  }
  if (fault.empty() && line.has(verb_option::help)) {
    return {.command = {}, .status = exit_status::done, .text = help_of(line.family, *line.row)};
  }
  fault = fault.empty() ? fault_of(line) : fault;
  if (fault.empty() && line.row->which == verb::help) {
    std::string text = explanation_of(line.positionals, fault);
    if (fault.empty()) {
      return {.command = {}, .status = exit_status::done, .text = std::move(text)};
    }
  }
  std::optional<any_command> command;
  if (fault.empty()) {
    command = command_of(line, fault);
  }
  return fault.empty()
             ? parsed_line{.command = std::move(command), .status = exit_status::done, .text = {}}
             : parsed_line{.command = {},
                           .status = exit_status::wrong_usage,
                           .text = complaint(line, fault)};
}

}  // namespace cfc
