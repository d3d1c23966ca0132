// status: whether the service lives, whether its lock and queue are there, who holds the lock, how
// much waits.
#ifndef PROREFLAX_TOOLS_CFC_DEVICE_STATUS_H
#define PROREFLAX_TOOLS_CFC_DEVICE_STATUS_H

#include <string>

#include "settings/service_state.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct status_command {
  bool json = false;
};

std::string show_service(const proreflax::settings::service_status& service);
std::string show_served(const proreflax::settings::served_status& served);
std::string show_lock(const proreflax::settings::lock_status& lock);
std::string show_queue(const proreflax::settings::queue_status& queue);

std::string json_of(const proreflax::settings::status_report& report);

exit_status run(const status_command& command, output& out);

}  // namespace cfc

#endif
