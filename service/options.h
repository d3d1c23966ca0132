// The command line of config-center.
#ifndef PROREFLAX_SERVICE_OPTIONS_H
#define PROREFLAX_SERVICE_OPTIONS_H

#include "service/permissions.h"
#include "store/paths.h"

namespace proreflax {

struct service_options {
  permissions allowed;
  const char* state_path = PROREFLAX_DEVICE_ROOT "/run/proreflax";
};

/// Reads the options and sets the log level. Ends the process if they are wrong, or if help or the
/// version is requested.
service_options read_options(int argc, char** argv);

}  // namespace proreflax

#endif
