// The shared library as it was built, both the one that ships and the device's: what it exports,
// what it needs, and what runs when it is loaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/library/project_text.h"
#include "tests/support/files.h"

namespace {

using names = std::set<std::string>;

/// The standard output of a command that must succeed.
std::string output_of(const std::string& command) {
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    throw std::runtime_error("cannot run " + command);
  }
  std::string all;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    all += static_cast<char>(c);
  }
  if (pclose(pipe) != 0) {
    throw std::runtime_error("failed: " + command);
  }
  return all;
}

names set_of(const std::vector<std::string>& list) {
  return {list.begin(), list.end()};
}

/// The functions and objects that the public headers declare as exported.
names declared_exports() {
  names declared;
  for (const auto& header :
       std::filesystem::directory_iterator{PROREFLAX_SOURCE_DIR "/include/proreflax"}) {
    declared.merge(
        set_of(matches(files::text_of(header.path()), R"(^PROREFLAX_API [^;(]*?(\w+)(?:\(|;))")));
  }
  return declared;
}

class BuiltLibrary : public testing::TestWithParam<const char*> {
 protected:
  static std::string readelf(const std::string& options) {
    return output_of(PROREFLAX_READELF " -W " + options + " '" + GetParam() + "'");
  }
  static std::string nm(const std::string& options) {
    return output_of(PROREFLAX_NM " " + options + " '" + GetParam() + "'");
  }

  /// The size in bytes of a section of the file; 0 for one that it does not have.
  static std::size_t size_of_section(const std::string& name) {
    const auto sizes =
        matches(readelf("-S"),
                ("\\s\\" + name + R"(\s+\w+\s+[0-9a-f]+\s+[0-9a-f]+\s+([0-9a-f]+))").c_str());
    return sizes.empty() ? 0 : std::stoul(sizes.front(), nullptr, 16);
  }
};

INSTANTIATE_TEST_SUITE_P(, BuiltLibrary,
                         testing::Values(PROREFLAX_SHIPPED_LIBRARY, PROREFLAX_DEVICE_LIBRARY),
                         [](const testing::TestParamInfo<const char*>& library) {
                           return library.index == 0 ? "shipped" : "device";
                         });

}  // namespace

TEST_P(BuiltLibrary, exports_everything_that_is_listed_and_nothing_else) {
  const names listed = listed_exports();
  EXPECT_FALSE(listed.empty());
  EXPECT_EQ(set_of(matches(nm("-D --defined-only"), R"(^[0-9a-f]+ \w (.+)$)")), listed);
}

TEST(ListOfExports, names_what_the_public_headers_declare_and_nothing_else) {
  EXPECT_EQ(listed_exports(), declared_exports());
}

TEST_P(BuiltLibrary, has_the_soname_that_programs_ask_for) {
  EXPECT_THAT(matches(readelf("-d"), R"(\(SONAME\).*\[(.*)\])"),
              testing::ElementsAre("proreflax.so.0"));
}

TEST_P(BuiltLibrary, needs_the_c_library_alone) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers bring libraries of their own";
  }
  EXPECT_THAT(matches(readelf("-d"), R"(\(NEEDED\).*\[(.*)\])"), testing::ElementsAre("libc.so.6"));
}

TEST_P(BuiltLibrary, calls_nothing_but_the_c_library) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers are called everywhere";
  }
  const auto called = matches(nm("-D --undefined-only"), R"(^ +U (.+)$)");
  EXPECT_THAT(called, testing::Contains(testing::StartsWith("semop@")));
  EXPECT_THAT(called, testing::Each(testing::HasSubstr("@GLIBC_")));
}

TEST_P(BuiltLibrary, runs_no_constructor_but_the_compilers_own) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers register every module in a constructor";
  }
  EXPECT_EQ(size_of_section(".init_array"), sizeof(void*));
  EXPECT_EQ(size_of_section(".fini_array"), sizeof(void*));
  EXPECT_EQ(size_of_section(".ctors"), 0U);
  EXPECT_THAT(nm(""), testing::HasSubstr("frame_dummy"));
}

TEST_P(BuiltLibrary, knows_no_exceptions) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers need them";
  }
  EXPECT_EQ(size_of_section(".gcc_except_table"), 0U);
}
