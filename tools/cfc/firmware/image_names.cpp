// The numbers begin at 0 and have no gaps, so a name's place is its number.
#include "tools/cfc/firmware/image_names.h"

#include <array>

namespace cfc {
namespace {

using name = std::string_view;

constexpr std::array operating_systems{
    name{"invalid"}, name{"OpenBSD"},  name{"NetBSD"},   name{"FreeBSD"}, name{"4.4BSD"},
    name{"Linux"},   name{"SVR4"},     name{"Esix"},     name{"Solaris"}, name{"Irix"},
    name{"SCO"},     name{"Dell"},     name{"NCR"},      name{"LynxOS"},  name{"VxWorks"},
    name{"pSOS"},    name{"QNX"},      name{"firmware"}, name{"RTEMS"},   name{"ARTOS"},
    name{"Unity"},   name{"INTEGRITY"}};
constexpr std::array architectures{
    name{"invalid"}, name{"Alpha"},    name{"ARM"},     name{"x86"},   name{"IA-64"},
    name{"MIPS"},    name{"MIPS64"},   name{"PowerPC"}, name{"S/390"}, name{"SuperH"},
    name{"SPARC"},   name{"SPARC64"},  name{"M68K"},    name{"Nios"},  name{"MicroBlaze"},
    name{"Nios II"}, name{"Blackfin"}, name{"AVR32"},   name{"ST200"}, name{"sandbox"},
    name{"NDS32"},   name{"OpenRISC"}, name{"ARM64"},   name{"ARC"},   name{"x86-64"},
    name{"Xtensa"},  name{"RISC-V"}};
constexpr std::array types{name{"invalid"}, name{"standalone"}, name{"kernel"},
                           name{"ramdisk"}, name{"multi-file"}, name{"firmware"},
                           name{"script"},  name{"filesystem"}, name{"flat device tree"}};
constexpr std::array compressions{name{"none"}, name{"gzip"}, name{"bzip2"}, name{"lzma"},
                                  name{"lzo"},  name{"lz4"},  name{"zstd"}};

template <std::size_t Size>
constexpr name named(const std::array<name, Size>& names, std::uint8_t number) {
  return number < Size ? names[number] : "unknown";
}

}  // namespace

std::string_view operating_system_name(std::uint8_t number) {
  return named(operating_systems, number);
}

std::string_view architecture_name(std::uint8_t number) {
  return named(architectures, number);
}

std::string_view image_type_name(std::uint8_t number) {
  return named(types, number);
}

std::string_view compression_name(std::uint8_t number) {
  return named(compressions, number);
}

}  // namespace cfc
