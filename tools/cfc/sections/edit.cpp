#include "tools/cfc/sections/edit.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "settings/message_text.h"
#include "tools/cfc/sections/chosen_sections.h"
#include "tools/cfc/values/transaction_report.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

// ---- The text -----------------------------------------------------------------------------------

class edited_lines {
 public:
  explicit edited_lines(const section_values& before) : before_{before} {}

  void line(std::size_t number, std::string_view text) {
    if (text.empty() || text.front() == '#') {
      return;
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
      refuse(number, "the line is no entry: there is no \"=\"");
      return;
    }
    entry(number, std::string{text.substr(0, equals)}, std::string{text.substr(equals + 1)});
  }

  edited_text result;

 private:
  void refuse(std::size_t number, std::string sentence) {
    result.faults.push_back({number, std::move(sentence)});
  }

  void entry(std::size_t number, const std::string& key, const std::string& value) {
    const auto found = std::ranges::find(before_.entries, key,
                                         [](const section_entry& each) { return each.key.name(); });
    if (found == before_.entries.end()) {
      refuse(number, "section " + quoted(before_.name()) + " has no key " + quoted(key));
    } else if (!seen_.insert(key).second) {
      refuse(number, "key " + quoted(key) + " stands in the text twice");
    } else if (!found->text || found->shown() != value) {
      change(number, *found, value);
    }
  }

  void change(std::size_t number, const section_entry& entry, const std::string& value) {
    // Bytes may be emptied: an empty text has no type of its own.
    const value_kind kind = value.empty() ? value_kind::string : kind_of(entry.key.which);
    const set_request set{
        .section = before_.name(), .key = entry.key.name(), .value = value, .kind = kind};
    if (const answer refusal = screen(set); !refusal.ok()) {
      refuse(number, "key " + quoted(set.key) + ": " + refusal.sentence);
    } else {
      result.sets.push_back({.number = number, .asked = set, .fault = {}});
    }
  }

  const section_values& before_;
  std::set<std::string> seen_;
};

// ---- The file -----------------------------------------------------------------------------------

constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

const char* volatile file_to_remove = nullptr;

void remove_file_and_end(int signal) {
  if (file_to_remove != nullptr) {
    unlink(file_to_remove);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

/// Readable by its owner alone, gone with the object, or with the program when a signal ends it: it
/// may hold passwords.
class temporary_file {
 public:
  temporary_file() {
    const char* const folder = std::getenv("TMPDIR");
    path_ = std::string{folder == nullptr || *folder == '\0' ? "/tmp" : folder} + "/cfc-XXXXXX";
    descriptor_ = mkostemp(path_.data(), O_CLOEXEC);
    if (descriptor_ == -1) {
      return;
    }
    file_to_remove = path_.c_str();
    for (const int each : ending_signals) {
      if (std::signal(each, remove_file_and_end) == SIG_IGN) {
        std::signal(each, SIG_IGN);
      }
    }
  }
  ~temporary_file() {
    if (descriptor_ != -1) {
      close(descriptor_);
      unlink(path_.c_str());
      file_to_remove = nullptr;
    }
  }
  temporary_file(const temporary_file&) = delete;
  temporary_file& operator=(const temporary_file&) = delete;

  const std::string& path() const { return path_; }

  bool write_text(std::string_view text) const {
    return descriptor_ != -1 &&
           write(descriptor_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }

  /// By its name: an editor may have put another file in its place.
  bool read_text(std::string& text) const {
    std::FILE* const file = std::fopen(path_.c_str(), "re");
    if (file == nullptr) {
      return false;
    }
    text.clear();
    char piece[4096];
    for (std::size_t count = 0; (count = std::fread(piece, 1, sizeof piece, file)) > 0;) {
      text.append(piece, count);
    }
    std::fclose(file);
    return true;
  }

 private:
  std::string path_;
  int descriptor_ = -1;
};

// ---- The editor ---------------------------------------------------------------------------------

/// A key that interrupts the editor does not end this program, which has a file to remove.
class ignored_interrupts {
 public:
  ignored_interrupts() = default;
  ~ignored_interrupts() {
    std::signal(SIGINT, interrupt_);
    std::signal(SIGQUIT, quit_);
  }
  ignored_interrupts(const ignored_interrupts&) = delete;
  ignored_interrupts& operator=(const ignored_interrupts&) = delete;

 private:
  using handler = void (*)(int);
  handler interrupt_ = std::signal(SIGINT, SIG_IGN);
  handler quit_ = std::signal(SIGQUIT, SIG_IGN);
};

/// 0, or an errno value.
int start_shell(const char* script, const std::string& path, pid_t& child) {
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t by_default;
  sigemptyset(&by_default);
  for (const int each : {SIGINT, SIGQUIT, SIGPIPE}) {
    sigaddset(&by_default, each);
  }
  posix_spawnattr_setsigdefault(&attributes, &by_default);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  std::string words[] = {"sh", "-c", script, "cfc", path};
  char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                       words[3].data(), words[4].data(), nullptr};
  const int error = posix_spawn(&child, "/bin/sh", nullptr, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  return error;
}

/// Whether an editor ran and was content.
bool run_editor(const std::string& path) {
  // The shell splits the variable: it may hold options.
  constexpr const char* script = "${VISUAL:-${EDITOR:-vi}} \"$1\"";
  const ignored_interrupts while_editing;
  pid_t child = -1;
  if (start_shell(script, path, child) != 0) {
    return false;
  }
  int status = 0;
  while (waitpid(child, &status, 0) == -1) {
    if (errno != EINTR) {
      return false;
    }
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool wants_another_try(const output& out) {
  if (isatty(STDIN_FILENO) != 1) {
    return false;
  }
  out.complain("Go on editing? [Y/n]");
  char reply[256];
  return std::fgets(reply, sizeof reply, stdin) != nullptr && *reply != 'n' && *reply != 'N';
}

exit_status give_up(const std::string& why, const output& out) {
  out.complain("cfc: edit: " + why + "; nothing was changed");
  return exit_status::failed;
}

/// Edits until the text is good; why it is not going to be, otherwise.
std::string edit_until_good(const temporary_file& file, const section_values& before,
                            edited_text& edited, const output& out) {
  do {
    std::string text;
    if (!run_editor(file.path())) {
      return "the editor failed";
    }
    if (!file.read_text(text)) {
      return "the edited file is gone";
    }
    edited = read_edited(before, text);
    for (const edit_fault& each : edited.faults) {
      out.complain(before.name() + ":" + std::to_string(each.line) + ": " + each.sentence);
    }
  } while (!edited.faults.empty() && wants_another_try(out));
  return edited.faults.empty() ? "" : "the text was refused";
}

exit_status set_changes(std::vector<transaction_step> sets, const std::string& section,
                        output& out) {
  if (sets.empty()) {
    out.complain("cfc: edit: nothing was changed");
    return exit_status::done;
  }
  const outcome result = carry_out_all_or_nothing(std::move(sets));
  complain("edit", section, result, out);
  return status_of(result);
}

}  // namespace

std::string text_to_edit(const section_values& values) {
  std::string text = "# Section " + values.name() +
                     ". A line that is taken out leaves its value as it is.\n"
                     "# Lines that begin with # are not read.\n";
  for (const section_entry& each : values.entries) {
    text += (each.text ? "" : "# ") + each.key.name() + "=" + each.shown() + "\n";
  }
  return text;
}

edited_text read_edited(const section_values& before, std::string_view text) {
  edited_lines lines{before};
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.line(number, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return std::move(lines.result);
}

exit_status run(const edit_command& command, output& out) {
  const proreflax::listed_section* const section = find_known_section(command.section);
  if (section == nullptr) {
    complain_of_unknown("edit", command.section, out);
    return exit_status::nothing_there;
  }
  const section_values before = read_values(*section);
  if (!before.ok()) {
    complain("edit", before, out);
    return status_of(before.code);
  }
  const temporary_file file;
  if (!file.write_text(text_to_edit(before))) {
    return give_up("no temporary file: " + std::string{std::strerror(errno)}, out);
  }
  edited_text edited;
  if (const std::string why = edit_until_good(file, before, edited, out); !why.empty()) {
    return give_up(why, out);
  }
  return set_changes(std::move(edited.sets), command.section, out);
}

}  // namespace cfc
