// acl: the MAC access list of the access point, through the library's own editors of it.
#ifndef PROREFLAX_TOOLS_CFC_DEVICE_ACCESS_LIST_H
#define PROREFLAX_TOOLS_CFC_DEVICE_ACCESS_LIST_H

#include <string>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct acl_command {
  enum { list, add, remove } action = list;
  std::string address;
};

exit_status run(const acl_command& command, output& out);

}  // namespace cfc

#endif
