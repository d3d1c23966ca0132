// The only file that sees the command line library: it is slow to compile.
//
// One thing is done here that the library does not do. A value may begin with a dash, and is given in
// scripts that do not look at it ("cfc set SENSOR Offset -5"): the word in VALUE's place is taken as it
// is unless it is one of the verb's own options. Behind "--" every word is taken as it is.
#include "tools/cfc/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "tools/cfc/result_text.h"

namespace cfc {
namespace {

constexpr const char* about =
    "Reads and changes the configuration of this device, through config-center.";

constexpr const char* exit_statuses =
    "Values go to standard output, all else to standard error.\n"
    "Exit status: 0 done; 1 refused or failed; 2 wrong usage; 3 no such section or key.\n"
    "A value, section or key that may begin with a dash goes behind \"--\": cfc set -- A b \"$x\"";

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

/// Puts VALUE behind a "--" of its own, at the end.
void shield_value(std::vector<std::string>& words) {
  const std::size_t place =
      words.empty() || words[0] != "set" ? words.size() : place_of_value(words);
  if (place < words.size() && words[place].starts_with('-')) {
    std::string value = std::move(words[place]);
    words.erase(words.begin() + static_cast<std::ptrdiff_t>(place));
    words.insert(words.end(), {"--", std::move(value)});
  }
}

class grammar {
 public:
  grammar() {
    app_.footer(exit_statuses);
    app_.set_version_flag("--version", "cfc " PROREFLAX_VERSION, "Print the version and exit");
    app_.require_subcommand(1);
    add_get();
    add_set();
    add_register();
    add_flush();
    add_defaults();
    add_batch();
    add_check();
    add_status();
    add_show();
    add_sections();
    add_export();
    add_import();
    add_diff();
    add_edit();
    add_acl();
    add_time();
  }
  grammar(const grammar&) = delete;
  grammar& operator=(const grammar&) = delete;

  parsed_line parse(std::vector<std::string> words) {
    shield_value(words);
    std::ranges::reverse(words);  // the library takes them from the back
    try {
      app_.parse(std::move(words));
      return {.command = chosen_, .status = exit_status::done, .text = {}};
    } catch (const CLI::CallForVersion& version) {
      return {.command = {}, .status = exit_status::done, .text = version.what()};
    } catch (const CLI::Success&) {
      return {.command = {}, .status = exit_status::done, .text = help()};
    } catch (const CLI::ParseError& error) {
      return {.command = {}, .status = exit_status::wrong_usage, .text = complaint(error)};
    }
  }

 private:
  CLI::App* add_verb(const char* name, const char* description) {
    CLI::App* const verb = app_.add_subcommand(name, description);
    verb->footer("");
    return verb;
  }

  static void add_entry_names(CLI::App* verb, std::string& section, std::string& key) {
    verb->add_option("SECTION", section, "Name of the section")->required()->type_name("");
    verb->add_option("KEY", key, "Name of the entry")->required()->type_name("");
  }

  void add_type(CLI::App* verb) {
    const std::vector<std::string> names{kind_names.begin(), kind_names.end()};
    verb->add_option("--type", type_, "string (default), u8, u16, u32, ip or binary")
        ->check(CLI::IsMember(names))
        ->type_name("TYPE");
  }

  static void add_json(CLI::App* verb, bool& json) {
    verb->add_flag("--json", json, "Print the result as JSON, one object a line");
  }

  value_kind kind() const {
    const auto* const name = std::ranges::find(kind_names, type_);
    return static_cast<value_kind>(name - kind_names.begin());
  }

  void add_get() {
    CLI::App* const verb = add_verb("get", "Print a value");
    add_entry_names(verb, get_.section, get_.key);
    add_type(verb);
    add_json(verb, get_.json);
    verb->callback([this] {
      get_.kind = kind();
      chosen_ = store_command{get_};
    });
  }

  void add_set() {
    CLI::App* const verb = add_verb("set", "Set a value; a key that is not there is made");
    add_entry_names(verb, set_.section, set_.key);
    verb->add_option("VALUE", set_.value, "The value; '' for an empty one")
        ->required()
        ->type_name("");
    add_type(verb);
    verb->add_flag("--force", set_.force, "Set also what does not fit a known key");
    verb->callback([this] {
      set_.kind = kind();
      chosen_ = store_command{set_};
    });
  }

  void add_register() {
    CLI::App* const verb = add_verb("register", "Make a section, unless it is there already");
    verb->add_option("NAME", register_.name, "Name of the section")->required()->type_name("");
    verb->callback([this] { chosen_ = store_command{register_}; });
  }

  void add_flush() {
    add_verb("flush", "Write what was set to flash")->callback([this] {
      chosen_ = store_command{flush_command{}};
    });
  }

  void add_defaults() {
    add_verb("defaults", "Put the factory defaults in force")->callback([this] {
      chosen_ = store_command{defaults_command{}};
    });
  }

  void add_batch() {
    CLI::App* const verb = add_verb("batch", "Carry out the commands of a text, one a line");
    verb->add_option("FILE", batch_.file, "The text; standard input without it or with -")
        ->type_name("");
    verb->add_flag("--all-or-nothing", batch_.all_or_nothing,
                   "When a line fails, put back what the others set");
    add_json(verb, batch_.json);
    verb->callback([this] { chosen_ = batch_; });
  }

  void add_check() {
    CLI::App* const verb = add_verb("check", "Say which line of an INI text breaks which rule");
    verb->add_option("FILE", check_.file, "The text; - for standard input")
        ->required()
        ->type_name("");
    add_json(verb, check_.json);
    verb->callback([this] { chosen_ = check_; });
  }

  void add_status() {
    CLI::App* const verb =
        add_verb("status", "Say whether lock and queue are there, and their state");
    add_json(verb, status_.json);
    verb->callback([this] { chosen_ = status_; });
  }

  void add_show() {
    CLI::App* const verb = add_verb("show", "Show what a section holds, or all sections");
    add_known_section(verb, show_.section);
    verb->add_flag("--secrets", show_.secrets, "Show passwords and keys too");
    add_json(verb, show_.json);
    verb->callback([this] { chosen_ = show_; });
  }

  void add_sections() {
    CLI::App* const verb = add_verb("sections", "List the known sections, their fields and kinds");
    add_known_section(verb, sections_.section);
    add_json(verb, sections_.json);
    verb->callback([this] { chosen_ = sections_; });
  }

  void add_export() {
    CLI::App* const verb = add_verb("export", "Print all known sections as configuration text");
    verb->add_flag("--json", export_.json, "Print them as one JSON object");
    verb->callback([this] { chosen_ = export_; });
  }

  void add_import() {
    CLI::App* const verb = add_verb("import", "Set what a text of export holds, all or nothing");
    verb->add_option("FILE", import_.file, "The text, INI or JSON; - for standard input")
        ->required()
        ->type_name("");
    verb->callback([this] { chosen_ = import_; });
  }

  void add_diff() {
    CLI::App* const verb = add_verb("diff", "Show what differs from the factory file");
    verb->add_flag("--secrets", diff_.secrets, "Show passwords and keys too");
    verb->callback([this] { chosen_ = diff_; });
  }

  void add_edit() {
    CLI::App* const verb = add_verb("edit", "Change a section in an editor, all or nothing");
    verb->add_option("SECTION", edit_.section, "Name of the section")->required()->type_name("");
    verb->callback([this] { chosen_ = edit_; });
  }

  void add_acl() {
    CLI::App* const verb = add_verb("acl", "List or change the MAC access list");
    verb->add_option("ACTION", acl_action_, "list, add or delete")
        ->required()
        ->check(CLI::IsMember({"list", "add", "delete"}))
        ->type_name("");
    verb->add_option("MAC", acl_.address, "The address to add or delete, such as 00:0c:43:28:80:01")
        ->type_name("");
    verb->callback([this, verb] {
      acl_.action = acl_action_ == "list"  ? acl_command::list
                    : acl_action_ == "add" ? acl_command::add
                                           : acl_command::remove;
      if ((verb->count("MAC") != 0) == (acl_.action == acl_command::list)) {
        throw CLI::ValidationError{"MAC", "add and delete take one address, list takes none"};
      }
      chosen_ = acl_;
    });
  }

  void add_time() {
    CLI::App* const verb = add_verb("time", "Print local time and its offset from UTC");
    add_json(verb, time_.json);
    verb->callback([this] { chosen_ = time_; });
  }

  static void add_known_section(CLI::App* verb, std::string& section) {
    verb->add_option("SECTION", section, "Name of the section; all without it")->type_name("");
  }

  std::string help() const {
    std::string text = app_.help();
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
  }

  std::string complaint(const CLI::ParseError& error) const {
    const auto chosen = app_.get_subcommands();
    const std::string verb = chosen.empty() ? "" : chosen.front()->get_name() + " ";
    return printable(verb.empty() ? error.what()
                                  : verb.substr(0, verb.size() - 1) + ": " + error.what()) +
           " (see: cfc " + verb + "--help)";
  }

  CLI::App app_{about, "cfc"};
  get_command get_;
  set_command set_;
  register_command register_;
  batch_command batch_;
  check_command check_;
  status_command status_;
  show_command show_;
  sections_command sections_;
  export_command export_;
  import_command import_;
  diff_command diff_;
  edit_command edit_;
  acl_command acl_;
  std::string acl_action_;
  time_command time_;
  std::string type_{name_of(value_kind::string)};
  std::optional<any_command> chosen_;
};

}  // namespace

parsed_line parse_command_line(std::vector<std::string> words) {
  return grammar{}.parse(std::move(words));
}

}  // namespace cfc
