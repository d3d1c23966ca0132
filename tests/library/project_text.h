// Texts of the project, and what stands in them.
#ifndef PROREFLAX_TESTS_LIBRARY_PROJECT_TEXT_H
#define PROREFLAX_TESTS_LIBRARY_PROJECT_TEXT_H

#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

/// An expression in which ^ and $ are the ends of a line.
std::regex multiline(const char* expression);

/// The first group of every place where the expression matches.
std::vector<std::string> matches(const std::string& text, const char* expression);

/// The two groups of every place where the expression matches.
std::map<std::string, std::string> paired_matches(const std::string& text, const char* expression);

/// What stands behind a mark; throws when it is not there.
std::string behind(const std::string& text, const std::string& mark);

/// What stands between two marks; throws when they are not there.
std::string between(const std::string& text, const std::string& from, const std::string& to);

/// What the version script lists between "global:" and "local:".
std::set<std::string> listed_exports();

/// The codes of result.h: names and numbers, as they are written there.
std::map<std::string, std::string> result_codes();

#endif
