#include "tools/cfc/command_line/help.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cfc;
using testing::EndsWith;
using testing::StartsWith;

namespace {

const verb_row& member(const verb_row& family, std::string_view name) {
  for (const verb_row& each : family.members) {
    if (name == each.name) {
      return each;
    }
  }
  throw std::out_of_range{"no such verb"};
}

}  // namespace

TEST(Help, of_the_program_lists_its_verbs_and_ends_with_the_exit_statuses) {
  const std::string text = help_of(nullptr, program);
  EXPECT_THAT(text, StartsWith("Reads and changes the configuration of this device, through "
                               "config-center.\nUsage: cfc [OPTIONS] SUBCOMMAND\n\nOptions:\n"
                               "  -h,--help                   Print this help message and exit\n"
                               "  --version                   Print the version and exit\n\n"
                               "Subcommands:\n"
                               "  get                         Print a value\n"));
  EXPECT_THAT(text, EndsWith("goes after \"--\": cfc set -- A b \"$x\""));
}

TEST(Help, of_a_verb_names_choices_and_what_may_be_left_out) {
  EXPECT_EQ(help_of(&program, member(program, "acl")),
            "List or change the MAC access list\n"
            "Usage: cfc acl [OPTIONS] ACTION [MAC]\n\n"
            "Positionals:\n"
            "  ACTION :{list,add,delete} REQUIRED\n"
            "                              list, add or delete\n"
            "  MAC                         The address to add or delete, such as "
            "00:0c:43:28:80:01\n\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit");
}

TEST(Help, of_a_member_names_its_family_what_repeats_and_what_is_required) {
  const verb_row& firmware = member(program, "firmware");
  EXPECT_EQ(help_of(&firmware, member(firmware, "pack")),
            "Make an image from parts\n"
            "Usage: cfc firmware pack [OPTIONS] PART...\n\n"
            "Positionals:\n"
            "  PART ... REQUIRED           A file; for multi, images in the order of writing\n\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --type TYPE:{kernel,ramdisk,multi} REQUIRED\n"
            "                              kernel, ramdisk or multi\n"
            "  -o,--output FILE REQUIRED   The image to make\n"
            "  --name NAME                 Name in the header, up to 32 bytes\n"
            "  --load NUMBER               Load address in the header (default: 0)\n"
            "  --entry NUMBER              Entry point in the header (default: the load address)\n"
            "  --time NUMBER               Seconds since 1970 in the header (default: now)");
}
