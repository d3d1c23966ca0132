// The request's record on platforms where nothing needs to be run: this file is only compiled.
#include "transport/message.h"

namespace proreflax {

static_assert(sizeof(long) == 4, "to be compiled for 32-bit platforms");
static_assert(laid_out_as<cfc_msg, 4, 8, 24>());

}  // namespace proreflax
