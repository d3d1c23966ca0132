// The only file that sees the command line library: it is slow to compile.
//
// One thing is done here that the library does not do. A value may begin with a
// dash, and is given in scripts that do not look at it ("cfc set SENSOR Offset
// -5"): the word in VALUE's place is taken as it is unless it is one of the
// verb's own options. Behind "--" every word is taken as it is.
#include "tools/cfc/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <functional>

#include "tools/cfc/result_text.h"

namespace cfc {
namespace {

constexpr const char* about =
    "Reads and changes the configuration of this device, through config-center.";

constexpr const char* exit_statuses =
    "Values go to standard output, all else to standard error.\n"
    "Exit status: 0 done; 1 refused or failed; 2 wrong usage; 3 no such section or key.\n"
    "A value, section or key that may begin with a dash goes behind \"--\": cfc set -- A b \"$x\"";

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
    add_wireless();
    add_firmware();
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

  /// A verb of a family; the family's own line is not enough.
  static CLI::App* add_member(CLI::App* family, const char* name, const char* description) {
    family->require_subcommand(1);
    CLI::App* const verb = family->add_subcommand(name, description);
    verb->footer("");
    return verb;
  }

  template <typename Command>
  CLI::App* add_wireless_verb(CLI::App* family, const char* name, const char* description,
                              Command& command) {
    CLI::App* const verb = add_member(family, name, description);
    add_json(verb, command.json);
    verb->callback([this, &command] { chosen_ = wireless_command{command}; });
    return verb;
  }

  void add_wireless() {
    CLI::App* const family = add_verb("wireless", "Show what the wireless driver tells");
    add_wireless_verb(family, "status", "Print the interface and its counters", wireless_status_);
    add_wireless_verb(family, "events", "Print the driver's event log", wireless_events_);
    add_wireless_verb(family, "stations", "Print the associated stations", wireless_stations_);
    add_wireless_verb(family, "channels", "Print the channels of a region", wireless_channels_)
        ->add_option("REGION", wireless_channels_.region,
                     "Number of the regulatory region; all but 1 to 5 have every channel")
        ->required()
        ->type_name("");
  }

  void add_firmware() {
    CLI::App* const family = add_verb("firmware", "Look at, make and write firmware images");
    add_firmware_info(family);
    add_firmware_pack(family);
    add_firmware_write(family);
  }

  void add_firmware_info(CLI::App* family) {
    CLI::App* const verb = add_member(family, "info", "Show an image, and what the device says");
    verb->add_option("FILE", firmware_info_.file, "The image")->required()->type_name("");
    add_json(verb, firmware_info_.json);
    verb->callback([this] { chosen_ = firmware_info_; });
  }

  /// An option that takes a number as `set --type u32` does.
  static void add_number(CLI::App* verb, const char* option, const char* description,
                         const std::function<void(std::uint32_t)>& take) {
    verb->add_option_function<std::string>(
            option,
            [=](const std::string& text) {
              const parsed_value number = parse_value(value_kind::u32, text);
              if (number.code != CFC_OK) {
                throw CLI::ValidationError(option, text + ": " + number.sentence);
              }
              take(std::get<std::uint32_t>(number.value));
            },
            description)
        ->type_name("NUMBER");
  }

  void add_firmware_pack(CLI::App* family) {
    CLI::App* const verb = add_member(family, "pack", "Make an image from parts");
    verb->add_option("--type", pack_.type, "kernel, ramdisk or multi")
        ->required()
        ->check(CLI::IsMember({"kernel", "ramdisk", "multi"}))
        ->type_name("TYPE");
    verb->add_option("-o,--output", pack_.file, "The image to make")->required()->type_name("FILE");
    verb->add_option("--name", pack_.name, "Name in the header, up to 32 bytes")
        ->check([](const std::string& name) {
          return name.size() > image_name_max ? "more than 32 bytes" : std::string{};
        })
        ->type_name("NAME");
    add_number(verb, "--load", "Load address in the header (default: 0)",
               [this](std::uint32_t number) { pack_.load_address = number; });
    add_number(verb, "--entry", "Entry point in the header (default: the load address)",
               [this](std::uint32_t number) { pack_.entry_point = number; });
    add_number(verb, "--time", "Seconds since 1970 in the header (default: now)",
               [this](std::uint32_t number) { pack_.time = number; });
    verb->add_option("PART", pack_.parts, "A file; for multi, images in the order of writing")
        ->required()
        ->type_name("");
    verb->callback([this] { chosen_ = pack_; });
  }

  void add_firmware_write(CLI::App* family) {
    CLI::App* const verb = add_member(family, "write", "Write an image to flash and read it back");
    verb->add_option("FILE", firmware_write_.file, "The image")->required()->type_name("");
    verb->add_flag("--yes", firmware_write_.yes, "Do not ask");
    verb->callback([this] { chosen_ = firmware_write_; });
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
    std::string verb;
    for (auto chosen = app_.get_subcommands(); !chosen.empty();
         chosen = chosen.front()->get_subcommands()) {
      verb += chosen.front()->get_name() + " ";
    }
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
  wireless_status_command wireless_status_;
  wireless_events_command wireless_events_;
  wireless_stations_command wireless_stations_;
  wireless_channels_command wireless_channels_;
  firmware_info_command firmware_info_;
  firmware_pack_command pack_;
  firmware_write_command firmware_write_;
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
