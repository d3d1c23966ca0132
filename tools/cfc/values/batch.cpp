#include "tools/cfc/values/batch.h"

#include "settings/json_writer.h"
#include "settings/line_reader.h"
#include "settings/message_text.h"
#include "settings/transaction.h"
#include "tools/cfc/command_line/command_line.h"
#include "tools/cfc/command_line/words.h"
#include "tools/cfc/output/json_result.h"
#include "tools/cfc/values/transaction_report.h"
#include "tools/cfc/values/value_verbs.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

/// A line without its end; a text from elsewhere may end its lines in CR LF.
std::string_view without_line_end(std::string_view text) {
  for (const char end : {'\n', '\r'}) {
    if (text.ends_with(end)) {
      text.remove_suffix(1);
    }
  }
  return text;
}

/// Turns the words into a command, or says why they are none.
void read_command(std::vector<std::string> words, transaction_step& line) {
  const parsed_line parsed = parse_command_line(std::move(words));
  const auto* const command =
      parsed.command ? std::get_if<store_command>(&*parsed.command) : nullptr;
  if (command == nullptr) {
    line.fault = parsed.status == exit_status::wrong_usage
                     ? parsed.text
                     : "no command of a batch: it takes get, set, register, flush and defaults";
    return;
  }
  if (command->json) {
    line.fault = "--json is an option of the batch as a whole";
    return;
  }
  line.asked = command->asked;
}

class reporter {
 public:
  reporter(const std::string& name, bool json, output& out) : name_{name}, json_{json}, out_{out} {}

  void report(const step_result& result) {
    if (status_ == exit_status::done) {
      status_ = status_of(result);
    }
    show(result);
    if (result.state == step_state::failed) {
      complain(result, failure_of(result));
    }
    if (!result.left_behind.empty()) {
      complain(result, result.left_behind);
    }
  }

  exit_status status() const { return status_; }

 private:
  void show(const step_result& result) {
    if (json_) {
      out_.result(json_of(result));
    } else if (result.state == step_state::done) {
      const auto& value = result.given.value;
      out_.result(std::to_string(result.step.number) + ": " +
                  (value ? show_value(*value) : "done"));
    }
  }

  void complain(const step_result& result, const std::string& what) const {
    out_.complain(name_ + ":" + std::to_string(result.step.number) + ": " + what);
  }

  const std::string& name_;
  bool json_;
  output& out_;
  exit_status status_ = exit_status::done;
};

step_result carry_out_line(transaction_step line) {
  step_result result{.step = std::move(line)};
  if (result.step.asked) {
    result.given = carry_out(*result.step.asked, lock_flag::take);
  }
  const bool is_done = result.step.asked && result.given.ok();
  result.state = is_done ? step_state::done : step_state::failed;
  return result;
}

void run_line_by_line(line_reader& lines, reporter& results) {
  while (const auto text = lines.next()) {
    if (auto line = read_batch_line(text->number, text->text)) {
      results.report(carry_out_line(std::move(*line)));
    }
  }
}

/// The lines of a text that must be known as a whole. Far more than any configuration has is
/// refused, before it fills the memory.
std::vector<transaction_step> read_all_lines(line_reader& lines, std::string& failure) {
  constexpr std::size_t most_lines = 50000;
  std::vector<transaction_step> all;
  while (const auto text = lines.next()) {
    if (auto line = read_batch_line(text->number, text->text)) {
      all.push_back(std::move(*line));
    }
    if (all.size() > most_lines) {
      failure = "has more than " + std::to_string(most_lines) +
                " commands, too many for --all-or-nothing";
      return {};
    }
  }
  failure = lines.failure();
  return all;
}

exit_status run_all_or_nothing(line_reader& lines, reporter& results, output& out) {
  std::string failure;
  std::vector<transaction_step> all = read_all_lines(lines, failure);
  if (!failure.empty()) {
    out.complain("cfc: batch: " + lines.name() + ": " + failure + "; nothing was changed");
    return exit_status::failed;
  }
  const outcome result = carry_out_all_or_nothing(std::move(all));
  for (const step_result& each : result.steps) {
    results.report(each);
  }
  if (!result.summary.empty()) {
    out.complain("cfc: batch: " + lines.name() + ": " + result.summary);
  }
  return status_of(result);
}

}  // namespace

std::optional<transaction_step> read_batch_line(std::size_t number, std::string_view text) {
  transaction_step line{.number = number};
  const std::string_view content = without_line_end(text);
  if (content.find('\0') != std::string_view::npos) {
    line.fault = "the line holds a NUL byte";
    return line;
  }
  split_line split = split_words(content);
  line.fault = std::move(split.fault);
  if (line.fault.empty()) {
    if (split.words.empty()) {
      return std::nullopt;
    }
    read_command(std::move(split.words), line);
  }
  return line;
}

std::string json_of(const step_result& result) {
  const transaction_step& step = result.step;
  json_writer json;
  json.begin_object();
  json.number_member("line", static_cast<std::int64_t>(step.number));
  if (step.asked) {
    json.member("command", verb_of(*step.asked));
    write_names(json, *step.asked);
  }
  json.member("state", name_of(result.state));
  json.number_member("status", static_cast<int>(status_of(result)));
  if (result.given.value) {
    json.value_member(*result.given.value);
  }
  if (result.state != step_state::skipped && step.fault.empty()) {
    write_code(json, result.given.code, result.given.sentence);
  } else if (!step.fault.empty()) {
    json.member("message", step.fault);
  }
  if (!result.left_behind.empty()) {
    json.member("left_behind", result.left_behind);
  }
  json.end_object();
  return json.take();
}

exit_status run(const batch_command& command, output& out) {
  line_reader lines{command.file};
  reporter results{lines.name(), command.json, out};
  if (command.all_or_nothing) {
    return run_all_or_nothing(lines, results, out);
  }
  run_line_by_line(lines, results);
  if (!lines.failure().empty()) {
    out.complain("cfc: batch: " + lines.name() + ": " + lines.failure());
    return exit_status::failed;
  }
  return results.status();
}

}  // namespace cfc
