#include "tools/cfc/batch.h"

#include <algorithm>
#include <array>

#include "tools/cfc/all_or_nothing.h"
#include "tools/cfc/command_line.h"
#include "tools/cfc/json_text.h"
#include "tools/cfc/line_reader.h"
#include "tools/cfc/result_text.h"
#include "tools/cfc/words.h"

namespace cfc {
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
void read_command(std::vector<std::string> words, batch_line& line) {
  const parsed_line parsed = parse_command_line(std::move(words));
  const auto* const command =
      parsed.command ? std::get_if<store_command>(&*parsed.command) : nullptr;
  if (command == nullptr) {
    line.fault = parsed.status == exit_status::wrong_usage
                     ? parsed.text
                     : "no command of a batch: it takes get, set, register, flush and defaults";
    return;
  }
  const auto* const get = std::get_if<get_command>(command);
  if (get != nullptr && get->json) {
    line.fault = "--json is an option of the batch as a whole";
    return;
  }
  line.command = *command;
}

class reporter {
 public:
  reporter(const std::string& name, bool json, output& out) : name_{name}, json_{json}, out_{out} {}

  void report(const batch_result& result) {
    if (status_ == exit_status::done) {
      status_ = result.status;
    }
    show(result);
    if (result.state == line_state::failed) {
      complain(result, failure_of(result));
    }
    if (!result.left_behind.empty()) {
      complain(result, result.left_behind);
    }
  }

  exit_status status() const { return status_; }

 private:
  void show(const batch_result& result) {
    if (json_) {
      out_.result(json_of(result));
    } else if (result.state == line_state::done) {
      const auto& value = result.given.value;
      out_.result(std::to_string(result.line.number) + ": " +
                  (value ? show_value(*value) : "done"));
    }
  }

  void complain(const batch_result& result, const std::string& what) const {
    out_.complain(name_ + ":" + std::to_string(result.line.number) + ": " + what);
  }

  const std::string& name_;
  bool json_;
  output& out_;
  exit_status status_ = exit_status::done;
};

batch_result carry_out_line(batch_line line) {
  batch_result result{.line = std::move(line)};
  if (result.line.command) {
    result.given = carry_out(*result.line.command, lock_flag::take);
    result.status = status_of(result.given.code);
  } else {
    result.status = exit_status::wrong_usage;
  }
  result.state = result.status == exit_status::done ? line_state::done : line_state::failed;
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
std::vector<batch_line> read_all_lines(line_reader& lines, std::string& failure) {
  constexpr std::size_t most_lines = 50000;
  std::vector<batch_line> all;
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
  std::vector<batch_line> all = read_all_lines(lines, failure);
  if (!failure.empty()) {
    out.complain("cfc: batch: " + lines.name() + ": " + failure + "; nothing was changed");
    return exit_status::failed;
  }
  const outcome result = carry_out_all_or_nothing(std::move(all));
  for (const batch_result& each : result.lines) {
    results.report(each);
  }
  if (!result.summary.empty()) {
    out.complain("cfc: batch: " + lines.name() + ": " + result.summary);
  }
  return result.status;
}

}  // namespace

std::optional<batch_line> read_batch_line(std::size_t number, std::string_view text) {
  batch_line line{.number = number};
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

std::string_view name_of(line_state state) {
  constexpr std::array<std::string_view, 5> names{"done", "failed", "undone", "stays", "skipped"};
  return names[static_cast<std::size_t>(state)];
}

std::string failure_of(const batch_result& result) {
  if (!result.line.command) {
    return result.line.fault;
  }
  const std::string subject = subject_of(*result.line.command) + ": ";
  // Without a code the batch itself refused the line.
  return result.given.ok() ? subject + result.line.fault
                           : subject + in_words(result.given.code, result.given.sentence);
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
