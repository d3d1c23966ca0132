#include "tools/cfc/program.h"

#include <cstring>

#include "tools/cfc/command_line/command_line.h"

namespace cfc {
namespace {

exit_status print_text(const parsed_line& line, output& out) {
  if (line.status == exit_status::done) {
    out.result(line.text);
  } else {
    out.complain("cfc: " + line.text);
  }
  return line.status;
}

exit_status carry_out_line(const parsed_line& line, output& out) {
  if (!line.command) {
    return print_text(line, out);
  }
  return std::visit([&](const auto& each) { return run(each, out); }, *line.command);
}

}  // namespace

exit_status run_program(std::vector<std::string> words, output& out) {
  const exit_status status = carry_out_line(parse_command_line(std::move(words)), out);
  if (out.write_error() == 0) {
    return status;
  }
  out.complain(std::string{"cfc: standard output: "} + std::strerror(out.write_error()));
  return status == exit_status::done ? exit_status::failed : status;
}

}  // namespace cfc
