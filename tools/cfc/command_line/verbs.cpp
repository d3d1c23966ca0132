#include "tools/cfc/command_line/verbs.h"

#include <array>
#include <cstddef>

namespace cfc {
namespace {

constexpr std::array option_rows{
    option_row{"help", nullptr, nullptr, "Print this help message and exit", 'h'},
    option_row{"version", nullptr, nullptr, "Print the version and exit"},
    option_row{"type", "TYPE", "{string,u8,u16,u32,ip,binary}",
               "string (default), u8, u16, u32, ip or binary"},
    option_row{"json", nullptr, nullptr, "Print the result as JSON, one object a line"},
    option_row{"json", nullptr, nullptr, "Print them as one JSON object"},
    option_row{"force", nullptr, nullptr, "Set also what does not fit a known key"},
    option_row{"all-or-nothing", nullptr, nullptr,
               "When a line fails, put back what the others set"},
    option_row{"secrets", nullptr, nullptr, "Show passwords and keys too"},
    option_row{"type", "TYPE", "{kernel,ramdisk,multi}", "kernel, ramdisk or multi", '\0', true},
    option_row{"output", "FILE", nullptr, "The image to make", 'o', true},
    option_row{"name", "NAME", nullptr, "Name in the header, up to 32 bytes"},
    option_row{"load", "NUMBER", nullptr, "Load address in the header (default: 0)"},
    option_row{"entry", "NUMBER", nullptr, "Entry point in the header (default: the load address)"},
    option_row{"time", "NUMBER", nullptr, "Seconds since 1970 in the header (default: now)"},
    option_row{"yes", nullptr, nullptr, "Do not ask"},
};
static_assert(option_rows.size() == static_cast<std::size_t>(verb_option::yes) + 1);

// ---- What the verbs take ------------------------------------------------------------------------

constexpr verb_option help_alone[] = {verb_option::help};
constexpr verb_option of_program[] = {verb_option::help, verb_option::version};
constexpr verb_option of_get[] = {verb_option::help, verb_option::value_type, verb_option::json};
constexpr verb_option of_set[] = {verb_option::help, verb_option::value_type, verb_option::force};
constexpr verb_option of_batch[] = {verb_option::help, verb_option::all_or_nothing,
                                    verb_option::json};
constexpr verb_option json_alone[] = {verb_option::help, verb_option::json};
constexpr verb_option of_export[] = {verb_option::help, verb_option::json_object};
constexpr verb_option secrets_alone[] = {verb_option::help, verb_option::secrets};
constexpr verb_option of_show[] = {verb_option::help, verb_option::secrets, verb_option::json};
constexpr verb_option of_pack[] = {verb_option::help, verb_option::image_type, verb_option::output,
                                   verb_option::name, verb_option::load,       verb_option::entry,
                                   verb_option::time};
constexpr verb_option of_write[] = {verb_option::help, verb_option::yes};

constexpr positional_row section{"SECTION", "Name of the section"};
constexpr positional_row key{"KEY", "Name of the entry"};

constexpr positional_row entry_names[] = {section, key};
constexpr positional_row entry_and_value[] = {
    section, key, {"VALUE", "The value; '' for an empty one"}};
constexpr positional_row new_section[] = {{"NAME", "Name of the section"}};
constexpr positional_row batch_file[] = {
    {"FILE", "The text; standard input without it or with -", nullptr, false}};
constexpr positional_row text_file[] = {{"FILE", "The text; - for standard input"}};
constexpr positional_row known_section[] = {
    {"SECTION", "Name of the section; all without it", nullptr, false}};
constexpr positional_row exported_file[] = {
    {"FILE", "The text, INI or JSON; - for standard input"}};
constexpr positional_row edited_section[] = {section};
constexpr positional_row action_and_address[] = {
    {"ACTION", "list, add or delete", "{list,add,delete}"},
    {"MAC", "The address to add or delete, such as 00:0c:43:28:80:01", nullptr, false}};
constexpr positional_row region[] = {
    {"REGION", "Number of the regulatory region; all but 1 to 5 have every channel"}};
constexpr positional_row image[] = {{"FILE", "The image"}};
constexpr positional_row explained_verb[] = {
    {"VERB", "The verb, and the verb of its family", nullptr, false, true}};
constexpr positional_row parts[] = {
    {"PART", "A file; for multi, images in the order of writing", nullptr, true, true}};

// ---- The verbs ----------------------------------------------------------------------------------

constexpr verb_row wireless_verbs[] = {
    {"status", "Print the interface and its counters", verb::wireless_status, json_alone, {}, {}},
    {"events", "Print the driver's event log", verb::wireless_events, json_alone, {}, {}},
    {"stations", "Print the associated stations", verb::wireless_stations, json_alone, {}, {}},
    {"channels", "Print the channels of a region", verb::wireless_channels, json_alone, region, {}},
};

constexpr verb_row firmware_verbs[] = {
    {"info", "Show an image, and what the device says", verb::firmware_info, json_alone, image, {}},
    {"pack", "Make an image from parts", verb::firmware_pack, of_pack, parts, {}},
    {"write",
     "Write an image to flash and read it back",
     verb::firmware_write,
     of_write,
     image,
     {}},
};

constexpr verb_row verbs[] = {
    {"get", "Print a value", verb::get, of_get, entry_names, {}},
    {"set", "Set a value; a key that is not there is made", verb::set, of_set, entry_and_value, {}},
    {"register",
     "Make a section, unless it is there already",
     verb::register_section,
     help_alone,
     new_section,
     {}},
    {"flush", "Write what was set to flash", verb::flush, help_alone, {}, {}},
    {"defaults", "Restore the factory defaults", verb::defaults, help_alone, {}, {}},
    {"batch",
     "Carry out the commands of a text, one a line",
     verb::batch,
     of_batch,
     batch_file,
     {}},
    {"check",
     "Say which line of an INI text breaks which rule",
     verb::check,
     json_alone,
     text_file,
     {}},
    {"status",
     "Say whether lock and queue are there, and their state",
     verb::status,
     json_alone,
     {},
     {}},
    {"wireless",
     "Show what the wireless driver tells",
     verb::family,
     help_alone,
     {},
     wireless_verbs},
    {"firmware",
     "Look at, make and write firmware images",
     verb::family,
     help_alone,
     {},
     firmware_verbs},
    {"show", "Show what a section holds, or all sections", verb::show, of_show, known_section, {}},
    {"sections",
     "List the known sections, their fields and kinds",
     verb::sections,
     json_alone,
     known_section,
     {}},
    {"export",
     "Print all known sections as configuration text",
     verb::export_all,
     of_export,
     {},
     {}},
    {"import",
     "Set what a text of export holds, all or nothing",
     verb::import,
     help_alone,
     exported_file,
     {}},
    {"diff", "Show what differs from the factory file", verb::diff, secrets_alone, {}, {}},
    {"edit",
     "Change a section in an editor, all or nothing",
     verb::edit,
     help_alone,
     edited_section,
     {}},
    {"acl", "List or change the MAC access list", verb::acl, help_alone, action_and_address, {}},
    {"time", "Print local time and its offset from UTC", verb::time, json_alone, {}, {}},
    {"help", "Explain a verb, or list all verbs", verb::help, help_alone, explained_verb, {}},
};

}  // namespace

const option_row& row_of(verb_option which) {
  return option_rows[static_cast<std::size_t>(which)];
}

constinit const verb_row program{
    "cfc",        "Reads and changes the configuration of this device, through config-center.",
    verb::family, of_program,
    {},           verbs};

}  // namespace cfc
