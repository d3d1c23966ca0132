// Every section of the device, for programs that handle all sections in the same way.
//
//   for (const listed_section& each : all_sections()) {
//     for (const field& which : each.table) { ... which.name, which.type, which.offset ... }
//     std::vector<char> record(each.record_bytes);
//     get_section(each.table, record.data());
//   }
//
// The shared library exports none of this: such a program compiles the tables and the engine in, as
// proreflax_section_tables, and talks to the service through the library's typed operations.
#ifndef PROREFLAX_ACCESSORS_SECTION_LIST_H
#define PROREFLAX_ACCESSORS_SECTION_LIST_H

#include <cstddef>
#include <span>

#include "accessors/section_engine.h"
#include "accessors/section_table.h"

namespace proreflax {

/// Section WEBLOG, whose getter and setter take separate strings instead of a record.
struct web_login {
  char user_name[32];
  char password[32];
};

struct listed_section {
  section_table table;
  std::size_t record_bytes;
  std::size_t record_alignment;
};

/// In the order of sections.h, WEBLOG last.
std::span<const listed_section> all_sections();

}  // namespace proreflax

#endif
