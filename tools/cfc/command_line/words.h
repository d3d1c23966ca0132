// A line of a batch, split into words as a shell does.
//
// Blanks separate words. '...' takes everything as it is; "..." takes everything but a backslash in
// front of ", \, $ or `; elsewhere a backslash takes the next character as it is.
// Quoted pieces join what they touch, so '' is an empty word. A # that begins a word
// begins a comment. Nothing else is special: there are no variables, patterns, pipes
// or redirections, and no line continues on the next.
#ifndef PROREFLAX_TOOLS_CFC_COMMAND_LINE_WORDS_H
#define PROREFLAX_TOOLS_CFC_COMMAND_LINE_WORDS_H

#include <string>
#include <string_view>
#include <vector>

namespace cfc {

struct split_line {
  std::vector<std::string> words;
  std::string fault;  // why the line cannot be split; empty when it was
};

/// `line` has no LF.
split_line split_words(std::string_view line);

}  // namespace cfc

#endif
