// The manual pages of the library and the public headers, as far as they tell the same.
#ifndef PROREFLAX_TESTS_LIBRARY_MANUAL_PAGES_H
#define PROREFLAX_TESTS_LIBRARY_MANUAL_PAGES_H

#include <map>
#include <string>
#include <vector>

/// A function or an object that is offered to programs.
struct declaration {
  std::string name;
  std::string text;    // "uint32_t cfc_get_mutex(void)", without white space
  std::string header;  // "proreflax/config.h"
};

struct manual_page {
  std::string file;                   // "proreflax_values.3"
  std::string text;                   // all of it
  std::vector<std::string> names;     // of its NAME section
  std::vector<declaration> synopsis;  // of its SYNOPSIS section, each under the header above it
  std::string body;                   // what is behind the SYNOPSIS
};

/// A section of the configuration that has a record.
struct section_row {
  std::string name;
  std::string record;
  std::string getter;
  std::string setter;
  std::size_t exchanges = 0;
  std::vector<std::string> arrays;
};

/// What the public headers declare, exported or defined there.
std::map<std::string, declaration> declarations();

/// A page of section 3, as it is installed.
manual_page page_called(const std::string& file);

/// The pages of section 3.
std::vector<manual_page> library_pages();

/// The sections as sections.h declares them and the tables fill them.
std::vector<section_row> sections_of_the_library();

/// The sections as their page lists them.
std::vector<section_row> sections_of_the_page();

/// The comment of a declaration in its header, as letters and digits alone: what it does, and each
/// argument and the results. Of the getter or setter of a whole section, which its page has as a
/// row of a list, nothing.
std::vector<std::string> contract_of(const declaration& declared);

/// The letters and digits of a page, without its markup.
std::string letters_of_the_page(const manual_page& page);

/// The programs and parts of programs that a page shows, without their markup.
std::vector<std::string> examples(const manual_page& page);

#endif
