// Four phases, each for all steps before the next begins: screen what the rules alone can refuse;
// take the lock; read the value that each step is about to replace; carry the steps out. Only the
// fourth changes anything. When it fails, the steps that were carried out are undone from the last
// to the first, each by writing again what its key held just before it, so that a key set twice
// runs through its history backwards.
//
// A signal that would end the program half-way waits until the batch is done or undone. SIGQUIT is
// left alone: with a service that never answers it is the way out.
#include "settings/transaction.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "settings/held_signals.h"
#include "settings/message_text.h"
#include "settings/name_rules.h"
#include "settings/result_text.h"
#include "settings/service_state.h"

namespace proreflax::settings {
namespace {

/// What a set line replaces: the command that brings it back, or nothing where there was no key.
using former_value = std::optional<set_request>;

struct tried_step {
  step_result result;
  former_value former;

  const set_request* set() const {
    return result.step.asked ? std::get_if<set_request>(&*result.step.asked) : nullptr;
  }
};

/// An errno value tells that the reply went missing: the service may have done its part.
bool may_have_happened(const step_result& result) {
  constexpr std::uint32_t first_own_code = 200;
  return result.state == step_state::done ||
         (result.given.code < first_own_code && result.given.code != CFC_OK &&
          result.given.code != CFC_ERR_NO_MEMORY);
}

class transaction {
 public:
  transaction(std::vector<transaction_step> steps, progress_report report)
      : report_{std::move(report)} {
    for (transaction_step& each : steps) {
      steps_.push_back({.result = {.step = std::move(each)}, .former = {}});
    }
  }

  outcome carry_out() {
    screen_steps();
    if (no_failure()) {
      carry_out_with_lock();
    }
    return finish();
  }

 private:
  /// A step is counted twice: when its former value is read, and when it is carried out.
  void count_request() {
    if (report_) {
      report_(requests_++, 2 * steps_.size());
    }
  }

  bool no_failure() const { return !failed_ && summary_.empty(); }

  void fail(tried_step& each) {
    each.result.state = step_state::failed;
    failed_ = true;
  }

  void refuse(tried_step& each, std::string why) {
    each.result.step.fault = std::move(why);
    fail(each);
  }

  void settle(tried_step& each, answer given) {
    each.result.given = std::move(given);
    if (each.result.given.ok()) {
      each.result.state = step_state::done;
    } else {
      fail(each);
    }
  }

  // ---- screening ----

  void screen_steps() {
    for (tried_step& each : steps_) {
      screen_step(each);
    }
    if (!no_failure()) {
      summary_ = "nothing was changed";
    }
  }

  void screen_step(tried_step& each) {
    const auto& asked = each.result.step.asked;
    if (!asked) {
      fail(each);
    } else if (std::holds_alternative<defaults_request>(*asked) ||
               std::holds_alternative<register_request>(*asked)) {
      refuse(each, "cannot be undone, so --all-or-nothing does not take it");
    } else if (std::holds_alternative<flush_request>(*asked) && &each != &steps_.back()) {
      refuse(each, "with --all-or-nothing a flush must be the last command");
    } else if (const answer refusal = screen(*asked); !refusal.ok()) {
      each.result.given = refusal;
      fail(each);
    }
  }

  // ---- with the lock held ----

  void carry_out_with_lock() {
    if (service_was_killed()) {
      give_up(CFC_ERR_NO_SEM, std::string{killed_service});
      return;
    }
    const access_lock lock;
    if (!lock.held()) {
      give_up(lock.result(), result_sentence(lock.result()));
      return;
    }
    read_former_values();
    if (no_failure()) {
      carry_out_steps();
    }
  }

  void give_up(std::uint32_t code, const std::string& sentence) {
    code_ = code;
    summary_ = in_words(code, sentence) + "; nothing was changed";
  }

  void read_former_values() {
    std::map<std::pair<std::string, std::string>, former_value> held_now;
    for (tried_step& each : steps_) {
      const set_request* const set = each.set();
      count_request();
      if (set == nullptr) {
        continue;
      }
      const auto [entry, is_new] = held_now.try_emplace({set->section, set->key});
      if (is_new) {
        read_former_value(each, entry->second);
      }
      each.former = std::exchange(entry->second, *set);
    }
    if (!no_failure()) {
      summary_ = "nothing was changed";
    }
  }

  void read_former_value(tried_step& each, former_value& former) {
    const set_request& set = *each.set();
    answer held = read_back(set);
    if (held.ok()) {
      former = set_request{.section = set.section,
                           .key = set.key,
                           .value = std::get<std::string>(*held.value),
                           .force = true};  // whatever it was
      require_undoable(each, *former);
    } else if (held.code != CFC_ERR_NO_KEY) {
      settle(each, std::move(held));
    }
  }

  /// The text of a configuration file can hold what no client may set, such as a CR.
  void require_undoable(tried_step& each, const set_request& former) {
    if (const answer refusal = screen(former); !refusal.ok()) {
      settle(each, {.code = refusal.code,
                    .sentence = "its present value could not be put back: " + refusal.sentence});
    }
  }

  static answer read_back(const set_request& set) {
    return settings::carry_out(get_request{set.section, set.key}, lock_flag::held);
  }

  void carry_out_steps() {
    const held_signals until_all_is_settled;
    for (tried_step& each : steps_) {
      count_request();
      settle(each, settings::carry_out(*each.result.step.asked, lock_flag::held));
      if (!no_failure()) {
        undo();
        return;
      }
    }
  }

  // ---- undoing ----

  void undo() {
    for (auto each = steps_.rbegin(); each != steps_.rend(); ++each) {
      if (each->set() != nullptr && may_have_happened(each->result)) {
        undo_step(*each);
      }
    }
    const auto put_back = std::ranges::count_if(
        steps_, [](const tried_step& each) { return each.result.state == step_state::undone; });
    const auto left = std::ranges::count_if(
        steps_, [](const tried_step& each) { return !each.result.left_behind.empty(); });
    summary_ = "a line failed; of the sets before it " + std::to_string(put_back) +
               " were put back and " + std::to_string(left) + " were not";
  }

  static void undo_step(tried_step& each) {
    const answer restored = each.former ? settings::carry_out(*each.former, lock_flag::held)
                                        : answer{.code = CFC_ERR_NO_KEY};
    if (restored.ok()) {
      if (each.result.state == step_state::done) {
        each.result.state = step_state::undone;
      }
      return;
    }
    leave_behind(each, restored);
  }

  static void leave_behind(tried_step& each, const answer& restored) {
    const answer held = read_back(*each.set());
    if (!each.former && held.code == CFC_ERR_NO_KEY) {
      return;  // it never came to be
    }
    if (each.result.state == step_state::done) {
      each.result.state = step_state::stays;
    }
    const std::string why =
        each.former ? "could not be put back (" + in_words(restored.code, restored.sentence) + ")"
                    : "was not there before, and a key cannot be removed";
    each.result.left_behind = "section " + quoted(each.set()->section) + " key " +
                              quoted(each.set()->key) + " " + why + ": " + stays_with(held);
  }

  static std::string stays_with(const answer& held) {
    return held.ok() ? "it stays with " + quoted(std::get<std::string>(*held.value))
                     : "what it holds cannot be read (" + in_words(held.code, held.sentence) + ")";
  }

  outcome finish() {
    outcome result{.steps = {}, .code = code_, .summary = summary_};
    for (tried_step& each : steps_) {
      result.steps.push_back(std::move(each.result));
    }
    return result;
  }

  progress_report report_;
  std::size_t requests_ = 0;
  std::vector<tried_step> steps_;
  bool failed_ = false;
  std::uint32_t code_ = CFC_OK;
  std::string summary_;
};

}  // namespace

outcome carry_out_all_or_nothing(std::vector<transaction_step> steps, progress_report report) {
  return transaction{std::move(steps), std::move(report)}.carry_out();
}

std::string_view name_of(step_state state) {
  constexpr std::array<std::string_view, 5> names{"done", "failed", "undone", "stays", "skipped"};
  return names[static_cast<std::size_t>(state)];
}

std::string failure_of(const step_result& result) {
  if (!result.step.asked) {
    return result.step.fault;
  }
  const std::string subject = subject_of(*result.step.asked) + ": ";
  // Without a code the transaction itself refused the step.
  return result.given.ok() ? subject + result.step.fault
                           : subject + in_words(result.given.code, result.given.sentence);
}

/// Steps fail in their order: what follows a failure is not tried, but for the screening of all.
const step_result* outcome::first_failure() const {
  const auto found = std::ranges::find(steps, step_state::failed, &step_result::state);
  return found == steps.end() ? nullptr : &*found;
}

}  // namespace proreflax::settings
