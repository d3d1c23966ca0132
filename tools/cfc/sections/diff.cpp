#include "tools/cfc/sections/diff.h"

#include "settings/comparison.h"
#include "settings/device_paths.h"
#include "settings/message_text.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

constexpr exit_status differs = exit_status::failed;
constexpr exit_status trouble = exit_status::wrong_usage;

class printer {
 public:
  printer(bool secrets, output& out) : secrets_{secrets}, out_{out} {}

  void print(const std::string& section, const std::vector<difference>& differences) {
    if (differences.empty()) {
      return;
    }
    found_any_ = true;
    out_.result("[" + printable(section) + "]");
    for (const difference& each : differences) {
      print('-', each, each.expected);
      print('+', each, each.present);
    }
  }

  bool found_any() const { return found_any_; }

 private:
  void print(char sign, const difference& entry, const std::optional<std::string>& value) {
    if (value) {
      const bool hidden = entry.is_secret && !secrets_ && !value->empty();
      out_.result(formatted("%c%s=%s", sign, printable(entry.key).c_str(),
                            hidden ? "(hidden)" : printable(*value).c_str()));
    }
  }

  bool secrets_;
  output& out_;
  bool found_any_ = false;
};

}  // namespace

exit_status run(const diff_command& command, output& out) {
  std::string failure;
  const ini_entries factory = read_ini(read_lines(factory_file, failure));
  if (!failure.empty() || !factory.faults.empty()) {
    out.complain("cfc: diff: " + std::string{factory_file} + ": " +
                 (failure.empty() ? "breaks the rules that cfc check tells" : failure));
    return trouble;
  }
  printer differences{command.secrets, out};
  for (const compared_section& each : sections_to_compare(factory.entries)) {
    const section_differences found = compare_with_store(each);
    if (found.code != CFC_OK) {
      out.complain("cfc: diff: section " + quoted(each.name) + ": " +
                   in_words(found.code, found.sentence));
      return trouble;
    }
    differences.print(each.name, found.entries);
  }
  return differences.found_any() ? differs : exit_status::done;
}

}  // namespace cfc
