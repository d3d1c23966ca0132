#include "tests/library/project_text.h"

#include <stdexcept>

#include "tests/support/files.h"

using std::string;
using std::vector;

std::regex multiline(const char* expression) {
  return std::regex{expression, std::regex::ECMAScript | std::regex::multiline};
}

string behind(const string& text, const string& mark) {
  const std::size_t at = text.find(mark);
  if (at == string::npos) {
    throw std::runtime_error("no " + mark);
  }
  return text.substr(at + mark.size());
}

string between(const string& text, const string& from, const string& to) {
  const string rest = behind(text, from);
  const std::size_t end = rest.find(to);
  if (end == string::npos) {
    throw std::runtime_error("no " + to + " behind " + from);
  }
  return rest.substr(0, end);
}

vector<string> matches(const string& text, const char* expression) {
  const std::regex pattern = multiline(expression);
  vector<string> found;
  for (std::sregex_iterator each{text.begin(), text.end(), pattern}, end; each != end; ++each) {
    found.push_back((*each)[1]);
  }
  return found;
}

std::map<string, string> paired_matches(const string& text, const char* expression) {
  const std::regex pattern = multiline(expression);
  std::map<string, string> found;
  for (std::sregex_iterator each{text.begin(), text.end(), pattern}, end; each != end; ++each) {
    found[(*each)[1]] = (*each)[2];
  }
  return found;
}

std::set<string> listed_exports() {
  const vector<string> listed =
      matches(between(files::text_of(PROREFLAX_EXPORTS), "global:", "local:"), R"(^\s*(\w+);$)");
  return {listed.begin(), listed.end()};
}

std::map<string, string> result_codes() {
  const string header = files::text_of(PROREFLAX_SOURCE_DIR "/include/proreflax/result.h");
  std::map<string, string> codes = paired_matches(header, R"(^ +(CFC_\w+) = (\d+)\b)");
  codes.merge(paired_matches(header, R"(^#define (CFC_ERR_\w+) UINT32_C\((\w+)\))"));
  return codes;
}
