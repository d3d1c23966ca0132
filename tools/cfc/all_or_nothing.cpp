// Four steps, each for all lines before the next begins: screen what the rules alone can refuse;
// take the lock; read the value that each line is about to replace; carry the lines out. Only the
// fourth changes anything. When it fails, the lines that were carried out are undone from the last
// to the first, each by writing again what its key held just before it, so that a key set twice
// runs through its history backwards.
//
// A signal that would end the program half-way waits until the batch is done or undone. SIGQUIT is
// left alone: with a service that never answers it is the way out.
#include "tools/cfc/all_or_nothing.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tools/cfc/held_signals.h"
#include "tools/cfc/name_rules.h"
#include "tools/cfc/result_text.h"
#include "tools/cfc/status.h"

namespace cfc {
namespace {

/// What a set line replaces: the command that brings it back, or nothing where there was no key.
using former_value = std::optional<set_command>;

struct step {
  batch_result result;
  former_value former;

  const set_command* set() const {
    return result.line.command ? std::get_if<set_command>(&*result.line.command) : nullptr;
  }
};

/// An errno value tells that the reply went missing: the service may have done its part.
bool may_have_happened(const batch_result& result) {
  constexpr std::uint32_t first_own_code = 200;
  return result.state == line_state::done ||
         (result.given.code < first_own_code && result.given.code != CFC_OK &&
          result.given.code != CFC_ERR_NO_MEMORY);
}

class transaction {
 public:
  transaction(std::vector<batch_line> lines, progress_report report) : report_{std::move(report)} {
    for (batch_line& line : lines) {
      steps_.push_back({.result = {.line = std::move(line)}, .former = {}});
    }
  }

  outcome carry_out() {
    screen_lines();
    if (no_failure()) {
      carry_out_with_lock();
    }
    return finish();
  }

 private:
  /// A line is counted twice: when its former value is read, and when it is carried out.
  void count_request() {
    if (report_) {
      report_(requests_++, 2 * steps_.size());
    }
  }

  bool no_failure() const { return first_ == exit_status::done && summary_.empty(); }

  void fail(step& each, exit_status status) {
    each.result.state = line_state::failed;
    each.result.status = status;
    if (first_ == exit_status::done) {
      first_ = status;
    }
  }

  void refuse(step& each, std::string why) {
    each.result.line.fault = std::move(why);
    fail(each, exit_status::wrong_usage);
  }

  void settle(step& each, answer given) {
    each.result.given = std::move(given);
    if (each.result.given.ok()) {
      each.result.state = line_state::done;
    } else {
      fail(each, status_of(each.result.given.code));
    }
  }

  // ---- screening ----

  void screen_lines() {
    for (step& each : steps_) {
      screen_line(each);
    }
    if (!no_failure()) {
      summary_ = "nothing was changed";
    }
  }

  void screen_line(step& each) {
    const auto& command = each.result.line.command;
    if (!command) {
      fail(each, exit_status::wrong_usage);
    } else if (std::holds_alternative<defaults_command>(*command) ||
               std::holds_alternative<register_command>(*command)) {
      refuse(each, "cannot be undone, so --all-or-nothing does not take it");
    } else if (std::holds_alternative<flush_command>(*command) && &each != &steps_.back()) {
      refuse(each, "with --all-or-nothing a flush must be the last command");
    } else if (const answer refusal = screen(*command); !refusal.ok()) {
      each.result.given = refusal;
      fail(each, status_of(refusal.code));
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
      carry_out_lines();
    }
  }

  void give_up(std::uint32_t code, const std::string& sentence) {
    first_ = status_of(code);
    summary_ = in_words(code, sentence) + "; nothing was changed";
  }

  void read_former_values() {
    std::map<std::pair<std::string, std::string>, former_value> held_now;
    for (step& each : steps_) {
      const set_command* const set = each.set();
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

  void read_former_value(step& each, former_value& former) {
    const set_command& set = *each.set();
    answer held = read_back(set);
    if (held.ok()) {
      former = set_command{.section = set.section,
                           .key = set.key,
                           .value = std::get<std::string>(*held.value),
                           .force = true};  // whatever it was
      require_undoable(each, *former);
    } else if (held.code != CFC_ERR_NO_KEY) {
      settle(each, std::move(held));
    }
  }

  /// The text of a configuration file can hold what no client may set, such as a CR.
  void require_undoable(step& each, const set_command& former) {
    if (const answer refusal = screen(former); !refusal.ok()) {
      settle(each, {.code = refusal.code,
                    .sentence = "its present value could not be put back: " + refusal.sentence});
    }
  }

  static answer read_back(const set_command& set) {
    return cfc::carry_out(get_command{set.section, set.key}, lock_flag::held);
  }

  void carry_out_lines() {
    const held_signals until_all_is_settled;
    for (step& each : steps_) {
      count_request();
      settle(each, cfc::carry_out(*each.result.line.command, lock_flag::held));
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
        undo_line(*each);
      }
    }
    const auto put_back = std::ranges::count_if(
        steps_, [](const step& each) { return each.result.state == line_state::undone; });
    const auto left = std::ranges::count_if(
        steps_, [](const step& each) { return !each.result.left_behind.empty(); });
    summary_ = "a line failed; of the sets before it " + std::to_string(put_back) +
               " were put back and " + std::to_string(left) + " were not";
  }

  static void undo_line(step& each) {
    const answer restored = each.former ? cfc::carry_out(*each.former, lock_flag::held)
                                        : answer{.code = CFC_ERR_NO_KEY};
    if (restored.ok()) {
      if (each.result.state == line_state::done) {
        each.result.state = line_state::undone;
      }
      return;
    }
    leave_behind(each, restored);
  }

  static void leave_behind(step& each, const answer& restored) {
    const answer held = read_back(*each.set());
    if (!each.former && held.code == CFC_ERR_NO_KEY) {
      return;  // it never came to be
    }
    if (each.result.state == line_state::done) {
      each.result.state = line_state::stays;
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
    outcome result{.lines = {}, .status = first_, .summary = summary_};
    for (step& each : steps_) {
      result.lines.push_back(std::move(each.result));
    }
    return result;
  }

  progress_report report_;
  std::size_t requests_ = 0;
  std::vector<step> steps_;
  exit_status first_ = exit_status::done;
  std::string summary_;
};

}  // namespace

outcome carry_out_all_or_nothing(std::vector<batch_line> lines, progress_report report) {
  return transaction{std::move(lines), std::move(report)}.carry_out();
}

void complain(const std::string& verb, const std::string& text_name, const outcome& result,
              output& out) {
  for (const batch_result& each : result.lines) {
    const std::string place = each.line.number == 0
                                  ? text_name + ": "
                                  : text_name + ":" + std::to_string(each.line.number) + ": ";
    if (each.state == line_state::failed) {
      out.complain(place + failure_of(each));
    }
    if (!each.left_behind.empty()) {
      out.complain(place + each.left_behind);
    }
  }
  if (!result.summary.empty()) {
    out.complain("cfc: " + verb + ": " + text_name + ": " + result.summary);
  }
}

}  // namespace cfc
