#include "tools/cfc/sections/chosen_sections.h"

#include "settings/message_text.h"

namespace cfc {

using namespace proreflax::settings;

std::vector<const proreflax::listed_section*> choose_sections(std::string_view verb,
                                                              const std::string& name,
                                                              output& out) {
  std::vector<const proreflax::listed_section*> chosen;
  for (const auto& each : proreflax::all_sections()) {
    if (name.empty() || name == each.table.name()) {
      chosen.push_back(&each);
    }
  }
  if (chosen.empty()) {
    complain_of_unknown(verb, name, out);
  }
  return chosen;
}

void complain_of_unknown(std::string_view verb, const std::string& name, output& out) {
  out.complain("cfc: " + std::string{verb} + ": section " + quoted(name) +
               " is not known here; cfc sections lists those that are");
}

void complain(std::string_view verb, const section_values& values, output& out) {
  out.complain("cfc: " + std::string{verb} + ": section " + quoted(values.name()) + ": " +
               in_words(values.code, values.sentence));
}

}  // namespace cfc
