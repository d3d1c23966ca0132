// Shows the device's names, or gives it another host name and keeps that over a restart.
//
//   hostname_cpp
//   hostname_cpp NAME
//
// A record is a plain structure: a few lines make its results exceptions and its texts strings.
#include <proreflax/config.h>
#include <proreflax/result_text.h>
#include <proreflax/sections.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

void check(std::uint32_t result, std::string_view what) {
  if (result != CFC_OK) {
    throw std::runtime_error{std::string{what} + ": " + cfc_result_text(result) + " (" +
                             std::to_string(result) + ")"};
  }
}

template <std::size_t N>
void assign(char (&field)[N], std::string_view text) {
  if (text.size() >= N) {
    throw std::invalid_argument{"'" + std::string{text} + "' has more than " +
                                std::to_string(N - 1) + " characters"};
  }
  field[text.copy(field, N - 1)] = '\0';
}

system_uts_info read_names() {
  system_uts_info names;
  check(gui_get_system_uts_info(&names), "cannot read section SYSTEMUTS");
  return names;
}

void show(const system_uts_info& names) {
  std::cout << "host name    " << names.hostname << "\ndomain name  " << names.domainname
            << "\nweb port     " << names.webs_port << '\n';
}

void change(system_uts_info names, std::string_view hostname) {
  assign(names.hostname, hostname);
  check(gui_set_system_uts_info(&names), "cannot write section SYSTEMUTS");
  check(cfc_flush_all_nosem(), "cannot write to flash");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const system_uts_info names = read_names();
    argc > 1 ? change(names, argv[1]) : show(names);
  } catch (const std::exception& failure) {
    std::cerr << "hostname_cpp: " << failure.what() << '\n';
    return 1;
  }
}
