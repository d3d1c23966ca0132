// The shared library as it was built, both the one that ships and the device's: what it exports,
// what it needs, and what runs when it is loaded. And what the service needs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <regex>
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

/// The platform's calls that an integrator may interpose, by the names under which the library
/// makes them.
const names interposable = {"asctime",   "atoi",  "close",  "execl",  "fclose",  "fgets",
                            "fopen",     "fork",  "fread",  "fwrite", "getpid",  "ioctl",
                            "localtime", "lseek", "msgget", "msgrcv", "msgsnd",  "open",
                            "semget",    "semop", "time",   "unlink", "waitpid", "write"};

/// What the library calls beside these, and what for.
const std::map<std::string, std::string> other_calls = {
    {"__errno_location", "the error of a failed call"},
    {"__fsetlocking", "the loader's stream is seen by one thread"},
    {"bcmp", "Clang's form of a memcmp"},
    {"_exit", "a child whose exec failed, without the parent's streams"},
    {"fflush", "a full disk shows before an export counts as complete"},
    {"free", "request records and the store's"},
    {"malloc", "request records and the store's"},
    {"memcmp", "names and keys"},
    {"memcpy", "names, keys and values"},
    {"memmove", "values that may overlap"},
    {"memset", "records that begin zeroed"},
    {"printf", "the line of a failed send"},
    {"puts", "the line of an export: the compiler's form of a printf without arguments"},
    {"setvbuf", "a driver file is read without a second buffer"},
    {"snprintf", "numbers, addresses and the local time"},
    {"stpcpy", "keys of arrays"},
    {"strchr", "texts of the driver, the time zone"},
    {"strcmp", "names of sections"},
    {"strcspn", "messages of the driver"},
    {"strlen", "names, keys and values"},
    {"strnlen", "words of the driver"},
    {"strstr", "the driver's table header"},
};

/// The function of which a build calls a variant: with checked bounds, or with wider offsets or
/// times on a 32-bit platform.
std::string without_variant(const std::string& call) {
  static const std::regex variant{"(?:__)?([a-z]+)(?:(?:64)?(?:_chk|_2|_time64)|64)"};
  std::smatch parts;
  return std::regex_match(call, parts, variant) ? parts[1].str() : call;
}

class BuiltLibrary : public testing::TestWithParam<const char*> {
 protected:
  static std::string readelf(const std::string& options) {
    return output_of(PROREFLAX_READELF " -W " + options + " '" + GetParam() + "'");
  }
  static std::string nm(const std::string& options) {
    return output_of(PROREFLAX_NM " " + options + " '" + GetParam() + "'");
  }

  /// A path of this process's own.
  static std::string temporary_path(const std::string& name) {
    return testing::TempDir() + "proreflax_" + name + "." + std::to_string(getpid());
  }

  /// The machine code of a library.
  static std::string code_of(const std::string& library) {
    const std::string code = temporary_path("code");
    output_of(std::string{PROREFLAX_OBJCOPY " -O binary --only-section=.text '"} + library + "' '" +
              code + "'");
    std::string bytes = files::text_of(code);
    std::filesystem::remove(code);
    return bytes;
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

TEST(BuiltService, needs_this_library_and_the_c_library_alone) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers bring libraries of their own";
  }
  EXPECT_THAT(matches(output_of(PROREFLAX_READELF " -d '" PROREFLAX_SERVICE "'"),
                      R"(\(NEEDED\).*\[(.*)\])"),
              testing::ElementsAre("proreflax.so.0", "libc.so.6"));
}

TEST_P(BuiltLibrary, calls_nothing_but_the_c_library) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers are called everywhere";
  }
  const auto called = matches(nm("-D --undefined-only"), R"(^ +U (.+)$)");
  EXPECT_THAT(called, testing::Contains(testing::StartsWith("semop@")));
  EXPECT_THAT(called, testing::Each(testing::HasSubstr("@GLIBC_")));
}

TEST(ShippedLibrary, calls_the_platform_under_the_names_that_can_be_interposed) {
  if (PROREFLAX_SANITIZED) {
    GTEST_SKIP() << "the sanitizers interpose the calls themselves";
  }
  names called;
  for (const std::string& call :
       matches(output_of(PROREFLAX_NM " -D --undefined-only '" PROREFLAX_SHIPPED_LIBRARY "'"),
               R"(^ +U ([^@]+)@)")) {
    called.insert(without_variant(call));
  }
  EXPECT_THAT(called, testing::IsSupersetOf(interposable));
  for (const std::string& call : called) {
    EXPECT_TRUE(interposable.count(call) == 1 || other_calls.count(call) == 1)
        << call << " is called under no name that the library documents";
  }
}

TEST(VariantOfACall, is_known_by_its_name) {
  EXPECT_EQ(without_variant("fopen64"), "fopen");
  EXPECT_EQ(without_variant("__time64"), "time");
  EXPECT_EQ(without_variant("__localtime64"), "localtime");
  EXPECT_EQ(without_variant("__fread_chk"), "fread");
  EXPECT_EQ(without_variant("__open64_2"), "open");
  EXPECT_EQ(without_variant("__ioctl_time64"), "ioctl");
  for (const char* plain : {"fopen", "_exit", "__errno_location", "__fsetlocking"}) {
    EXPECT_EQ(without_variant(plain), plain);
  }
}

TEST_P(BuiltLibrary, holds_the_parts_of_the_store_engine_that_nothing_calls) {
  const names hidden = set_of(matches(nm("-C --defined-only"), R"(^[0-9a-f]+ t (.+)$)"));
  for (const char* part :
       {"proreflax::config_run_gzip(int, char const*)", "proreflax::config_parse_line(char*)"}) {
    EXPECT_EQ(hidden.count(part), 1U) << part;
  }
}

TEST_P(BuiltLibrary, loses_no_code_when_it_is_stripped) {
  const files::temporary_folder folder;
  const std::string stripped = folder.path() / "stripped.so";
  const auto code_of = [&](const std::string& library) {
    const std::string code = folder.path() / "code";
    output_of(PROREFLAX_OBJCOPY " -O binary --only-section=.text '" + library + "' '" + code + "'");
    return files::read(code).value_or("");
  };
  output_of(std::string{PROREFLAX_STRIP " --strip-unneeded -o '"} + stripped + "' '" + GetParam() +
            "'");
  const std::string code = code_of(stripped);
  EXPECT_GT(code.size(), 10000U);
  EXPECT_TRUE(code == code_of(GetParam()));
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
