// What came of a transaction, for the verbs that make one.
#ifndef PROREFLAX_TOOLS_CFC_VALUES_TRANSACTION_REPORT_H
#define PROREFLAX_TOOLS_CFC_VALUES_TRANSACTION_REPORT_H

#include <string>

#include "settings/transaction.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

/// A step that no request was made for was wrong usage.
exit_status status_of(const proreflax::settings::step_result& result);
/// That of the first step that failed.
exit_status status_of(const proreflax::settings::outcome& result);

/// Reports on standard error each step that failed, or left something, and the summary. Steps with
/// number 0 have no place of their own.
void complain(const std::string& verb, const std::string& text_name,
              const proreflax::settings::outcome& result, output& out);

}  // namespace cfc

#endif
