// The verbs that make one request of the service: get, set, register, flush, defaults.
#ifndef PROREFLAX_TOOLS_CFC_VALUES_VALUE_VERBS_H
#define PROREFLAX_TOOLS_CFC_VALUES_VALUE_VERBS_H

#include <string>

#include "settings/json_writer.h"
#include "settings/request.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct store_command {
  proreflax::settings::request asked;
  bool json = false;
};

/// Members "section", "key" and "type", as far as the request has them.
void write_names(proreflax::settings::json_writer& json, const proreflax::settings::request& asked);

std::string json_of(const proreflax::settings::request& asked,
                    const proreflax::settings::answer& result);

/// The value goes to standard output, a failure to standard error.
exit_status run(const store_command& command, output& out);

}  // namespace cfc

#endif
