#include "tools/cfc/command_line/help.h"

namespace cfc {
namespace {

constexpr std::size_t description_column = 30;

constexpr const char* exit_statuses =
    "\n\nValues go to standard output, all else to standard error.\n"
    "Exit status: 0 done; 1 refused or failed; 2 wrong usage; 3 no such section or key.\n"
    "A value, section or key that may begin with a dash goes after \"--\": cfc set -- A b \"$x\"";

void add_line(std::string& text, std::string label, const char* description) {
  label.insert(0, "  ");
  if (label.size() >= description_column) {
    label += '\n';
    label.append(description_column, ' ');
  } else {
    label.resize(description_column, ' ');
  }
  text += '\n';
  text += label;
  text += description;
}

void add_usage(std::string& text, const verb_row* family, const verb_row& row) {
  text += "\nUsage: cfc ";
  if (family != nullptr && family != &program) {
    text += family->name;
    text += ' ';
  }
  if (&row != &program) {
    text += row.name;
    text += ' ';
  }
  text += "[OPTIONS]";
  for (const positional_row& each : row.positionals) {
    text += each.required ? " " : " [";
    text += each.name;
    text += each.repeats ? "..." : "";
    text += each.required ? "" : "]";
  }
  text += row.members.empty() ? "" : " SUBCOMMAND";
}

void add_positionals(std::string& text, const verb_row& row) {
  text += row.positionals.empty() ? "" : "\n\nPositionals:";
  for (const positional_row& each : row.positionals) {
    std::string label = each.name;
    if (each.choices != nullptr) {
      label += " :";
      label += each.choices;
    }
    label += each.repeats ? " ..." : "";
    label += each.required ? " REQUIRED" : "";
    add_line(text, std::move(label), each.description);
  }
}

void add_options(std::string& text, const verb_row& row) {
  text += "\n\nOptions:";
  for (const verb_option which : row.options) {
    const option_row& each = row_of(which);
    std::string label;
    if (each.letter != '\0') {
      label += {'-', each.letter, ','};
    }
    label += "--";
    label += each.name;
    label += argument_of(each);
    label += each.required ? " REQUIRED" : "";
    add_line(text, std::move(label), each.description);
  }
}

void add_members(std::string& text, const verb_row& row) {
  text += row.members.empty() ? "" : "\n\nSubcommands:";
  for (const verb_row& each : row.members) {
    add_line(text, each.name, each.description);
  }
}

}  // namespace

std::string argument_of(const option_row& row) {
  std::string text;
  if (row.argument != nullptr) {
    text += ' ';
    text += row.argument;
  }
  if (row.choices != nullptr) {
    text += ':';
    text += row.choices;
  }
  return text;
}

std::string help_of(const verb_row* family, const verb_row& row) {
  std::string text = row.description;
  add_usage(text, family, row);
  add_positionals(text, row);
  add_options(text, row);
  add_members(text, row);
  text += &row == &program ? exit_statuses : "";
  return text;
}

}  // namespace cfc
