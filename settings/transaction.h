// Many requests, all of them or none.
//
// They are screened first, the lock is held throughout, and when one fails all that was set is put
// back in reverse order. The protocol has no delete: a key that the transaction created cannot be
// taken away again, and is named with the value that stays in it.
#ifndef PROREFLAX_SETTINGS_TRANSACTION_H
#define PROREFLAX_SETTINGS_TRANSACTION_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/request.h"

namespace proreflax::settings {

/// A request, and where it comes from.
struct transaction_step {
  std::size_t number = 0;        // of its line; 0 for a step without a place of its own
  std::optional<request> asked;  // nothing for a line that holds no request
  std::string fault;             // why it holds none
};

enum class step_state {
  done,     // carried out
  failed,   // refused; nothing changed by it, unless left_behind says otherwise
  undone,   // was set, and put back because another step failed
  stays,    // was set, and cannot be put back: left_behind says what stays
  skipped,  // not tried, because another step failed
};

std::string_view name_of(step_state state);

/// What came of a step.
struct step_result {
  transaction_step step;
  step_state state = step_state::skipped;
  answer given;             // a step that was not tried has an empty one
  std::string left_behind;  // what a step that was not undone leaves in the store
};

/// What went wrong with a step that failed, with the request's names in it.
std::string failure_of(const step_result& result);

/// What came of a transaction.
struct outcome {
  std::vector<step_result> steps;
  std::uint32_t code = CFC_OK;  // of what kept all steps from being tried
  std::string summary;  // what was done about a failure, as a sentence; empty when all went well

  /// The step that made the others fail; null when all went well or none was tried.
  const step_result* first_failure() const;
};

/// Called before each request with how many of how many are done. Undoing is not counted.
using progress_report = std::function<void(std::size_t done, std::size_t all)>;

outcome carry_out_all_or_nothing(std::vector<transaction_step> steps, progress_report report = {});

}  // namespace proreflax::settings

#endif
