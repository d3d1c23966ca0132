#include "tools/cfc/command_line/words.h"

#include <optional>

namespace cfc {
namespace {

constexpr bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

constexpr bool is_escapable_in_double_quotes(char c) {
  return c == '"' || c == '\\' || c == '$' || c == '`';
}

class splitter {
 public:
  explicit splitter(std::string_view rest) : rest_{rest} {}

  split_line split() {
    while (!rest_.empty() && result_.fault.empty() && !at_comment()) {
      step(take());
    }
    end_word();
    return std::move(result_);
  }

 private:
  bool at_comment() const { return !word_ && rest_.front() == '#'; }

  char take() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  std::string& word() { return word_ ? *word_ : word_.emplace(); }

  void end_word() {
    if (word_) {
      result_.words.push_back(std::move(*word_));
      word_.reset();
    }
  }

  void step(char c) {
    if (is_blank(c)) {
      end_word();
    } else if (c == '\'') {
      take_single_quoted();
    } else if (c == '"') {
      take_double_quoted();
    } else if (c == '\\') {
      take_escaped();
    } else {
      word() += c;
    }
  }

  void take_escaped() {
    if (rest_.empty()) {
      result_.fault = "the backslash at the end of the line escapes nothing";
      return;
    }
    word() += take();
  }

  void take_single_quoted() {
    const std::size_t end = rest_.find('\'');
    if (end == std::string_view::npos) {
      result_.fault = "a single quote is not closed";
      return;
    }
    word().append(rest_.substr(0, end));
    rest_.remove_prefix(end + 1);
  }

  void take_double_quoted() {
    std::string& open_word = word();
    while (!rest_.empty()) {
      const char c = take();
      if (c == '"') {
        return;
      }
      const bool escapes = c == '\\' && !rest_.empty() && is_escapable_in_double_quotes(rest_[0]);
      open_word += escapes ? take() : c;
    }
    result_.fault = "a double quote is not closed";
  }

  std::string_view rest_;
  std::optional<std::string> word_;
  split_line result_;
};

}  // namespace

split_line split_words(std::string_view line) {
  return splitter{line}.split();
}

}  // namespace cfc
