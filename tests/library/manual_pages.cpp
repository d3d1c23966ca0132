#include "tests/library/manual_pages.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "accessors/section_list.h"
#include "tests/library/project_text.h"
#include "tests/support/files.h"

namespace fs = std::filesystem;
using std::string;
using std::vector;

namespace {

const fs::path headers = PROREFLAX_SOURCE_DIR "/include/proreflax";
const fs::path pages = PROREFLAX_SOURCE_DIR "/docs/man";

string squeezed(string text) {
  text.erase(std::remove_if(text.begin(), text.end(),
                            [](unsigned char c) { return std::isspace(c) != 0; }),
             text.end());
  return text;
}

string replaced(const string& text, const char* expression, const char* by) {
  return std::regex_replace(text, multiline(expression), by);
}

/// What stands behind each place of a mark, as far as the next one.
vector<string> parts_behind(const string& mark, const string& text) {
  vector<string> parts;
  for (std::size_t at = text.find(mark); at != string::npos;) {
    const std::size_t begin = at + mark.size();
    at = text.find(mark, begin);
    parts.push_back(text.substr(begin, at == string::npos ? at : at - begin));
  }
  return parts;
}

/// The words of a request line; quotes hold several together.
vector<string> words(const string& line) {
  vector<string> found;
  const std::regex word{R"(\"([^\"]*)\"|(\S+))"};
  for (std::sregex_iterator each{line.begin(), line.end(), word}, end; each != end; ++each) {
    found.push_back((*each)[1].matched ? (*each)[1] : (*each)[2]);
  }
  return found;
}

string name_in(const string& declared) {
  const vector<string> found = matches(declared, R"((\w+)\s*(?:\(|$))");
  if (found.empty()) {
    throw std::runtime_error("no name in " + declared);
  }
  return found.front();
}

/// Puts the lines of a SYNOPSIS together to declarations.
class synopsis_reader {
 public:
  void take(const string& line) {
    const vector<string> parts = words(line);
    const string macro = parts.empty() ? "" : parts.front();
    const string rest = line.size() > macro.size() ? line.substr(macro.size() + 1) : "";
    if (macro == ".In") {
      header_ = rest;
    } else if (macro == ".Ft") {
      type_ = rest;
    } else if (macro == ".Vt") {
      const string object = replaced(rest, R"(\s*;$)", "");
      declare(name_in(object), object);
    } else if (macro == ".Fn") {
      add_function(parts.at(1), {parts.begin() + 2, parts.end()});
    } else if (macro == ".Fo") {
      name_ = parts.at(1);
      arguments_.clear();
    } else if (macro == ".Fa") {
      arguments_.insert(arguments_.end(), parts.begin() + 1, parts.end());
    } else if (macro == ".Fc") {
      add_function(name_, arguments_);
    } else if (macro != ".Ss") {
      throw std::runtime_error("in a SYNOPSIS: " + line);
    }
  }

  vector<declaration> all;

 private:
  void add_function(const string& name, const vector<string>& arguments) {
    string list;
    for (const string& each : arguments) {
      list += (list.empty() ? "" : ",") + each;
    }
    declare(name, type_ + name + "(" + list + ")");
  }

  void declare(const string& name, const string& text) {
    all.push_back({name, squeezed(text), header_});
  }

  string header_;
  string type_;
  string name_;
  vector<string> arguments_;
};

vector<declaration> read_synopsis(const string& text) {
  synopsis_reader reader;
  std::istringstream lines{text};
  for (string line; std::getline(lines, line);) {
    if (!line.empty()) {
      reader.take(line);
    }
  }
  return reader.all;
}

/// The section whose name begins a part of sections.h, as far as that part tells.
section_row declared_row(const string& part) {
  const string record = matches(part, R"(^typedef struct (\w+) \{)").at(0);
  const vector<string> functions =
      matches(behind(part, "\n} " + record + ";"), R"(^PROREFLAX_API [^;(]*?(\w+)\()");
  return {matches(part, R"(^(\w+))").at(0), record, functions.at(0), functions.at(1), 0, {}};
}

void count_exchanges(section_row& row) {
  for (const proreflax::listed_section& each : proreflax::all_sections()) {
    if (each.table.name() == row.name) {
      for (const proreflax::field& field : each.table) {
        row.exchanges += field.is_array() ? field.count : std::size_t{1};
        if (field.is_array()) {
          row.arrays.emplace_back(field.name);
        }
      }
    }
  }
}

section_row row_of_the_page(const string& item) {
  std::smatch found;
  static const std::regex form{
      R"(^(\w+)\n\.Vt (\w+) ,\n\.Fn (\w+) ,\n\.Fn (\w+) ;\n(\d+) exchanges?\.\n)"};
  if (!std::regex_search(item, found, form)) {
    throw std::runtime_error("in the list of sections: " + item);
  }
  section_row row{found[1], found[2], found[3], found[4], std::stoul(found[5]), {}};
  for (const string& list : matches(item, R"(^Arrays: (.*)\.$)")) {
    row.arrays = matches(list, R"((\w+))");
  }
  return row;
}

string letters(string text) {
  std::erase_if(text, [](unsigned char c) { return std::isalnum(c) == 0; });
  return text;
}

/// The comment right before the declaration of a name.
string comment_before(const string& name, const string& header) {
  for (const char* const begin : {"\nPROREFLAX_API ", "\nstatic inline "}) {
    for (std::size_t at = 0; (at = header.find(begin, at)) != string::npos; ++at) {
      if (name_in(header.substr(at, header.find_first_of(";{", at) - at)) == name) {
        const std::size_t comment = header.rfind("/**", at) + 3;
        return header.substr(comment, at - comment);
      }
    }
  }
  throw std::runtime_error("no comment of " + name);
}

}  // namespace

std::map<string, declaration> declarations() {
  std::map<string, declaration> all;
  for (const auto& header : fs::directory_iterator{headers}) {
    const string text = replaced(files::text_of(header.path()), R"(^ *#.*$)", "");
    for (const char* form :
         {R"(^PROREFLAX_API (?:PROREFLAX_CHECKED )?([^;]+);)", R"(^static inline ([^{;]+) \{)"}) {
      for (const string& found : matches(text, form)) {
        const string name = name_in(found);
        all[name] = {name, squeezed(found), "proreflax/" + header.path().filename().string()};
      }
    }
  }
  return all;
}

manual_page page_called(const string& file) {
  manual_page page{file, files::text_of(PROREFLAX_MAN_FOLDER "/man3/" + file), {}, {}, {}};
  page.names = matches(between(page.text, ".Sh NAME\n", ".Nd "), R"(^\.Nm (\w+))");
  page.synopsis = read_synopsis(between(page.text, ".Sh SYNOPSIS\n", "\n.Sh "));
  page.body = behind(page.text, ".Sh DESCRIPTION\n");
  return page;
}

vector<manual_page> library_pages() {
  vector<manual_page> all;
  for (const auto& each : fs::directory_iterator{pages}) {
    if (each.path().extension() == ".3") {
      all.push_back(page_called(each.path().filename()));
    }
  }
  return all;
}

vector<section_row> sections_of_the_library() {
  vector<section_row> rows;
  for (const string& part : parts_behind(" Section \"", files::text_of(headers / "sections.h"))) {
    rows.push_back(declared_row(part));
    count_exchanges(rows.back());
  }
  return rows;
}

vector<section_row> sections_of_the_page() {
  const string list =
      between(page_called("proreflax_sections.3").body, ".Ss The sections\n", ".El");
  vector<section_row> rows;
  for (const string& item : parts_behind("\n.It Qq ", list)) {
    rows.push_back(row_of_the_page(item));
  }
  return rows;
}

vector<string> contract_of(const declaration& declared) {
  const string header = files::text_of(fs::path{headers}.parent_path() / declared.header);
  const string comment = replaced(replaced(comment_before(declared.name, header), R"(^ \* ?)", ""),
                                  "@return", "@Returns");
  if (comment.find("*out. ") != string::npos || comment.find("*in, only") != string::npos) {
    return {};
  }
  vector<string> parts = parts_behind("@", "@" + comment);
  for (string& part : parts) {
    part = letters(replaced(part, R"(^param )", ""));
  }
  return parts;
}

string letters_of_the_page(const manual_page& page) {
  string text = replaced(page.body, R"(^\.(Pp|El|Bl .*)$)", "");
  text = replaced(text, R"(^\.(It |Pf |Fn )((Fn|Fa|Dv|Pf|\() )*)", "");
  return letters(replaced(text, R"(\\e|( Fn ))", " "));
}

vector<string> examples(const manual_page& page) {
  vector<string> found;
  for (const string& each : parts_behind("\n.Bd ", behind(page.text, ".Sh EXAMPLES\n"))) {
    found.push_back(replaced(between(each, "\n", "\n.Ed\n") + "\n", R"(\\e)", "\\"));
  }
  return found;
}
