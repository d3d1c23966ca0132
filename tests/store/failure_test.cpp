// Every call that can fail, made to fail once at each place where an operation makes it: afterwards
// the result is one of its own, the store is whole or empty, no child and no temporary file is
// left, and nothing leaks.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "store/ini_text.h"
#include "store/life_cycle.h"
#include "tests/store/loaded_store.h"
#include "tests/store/unnamed_file.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

using namespace proreflax;
using namespace loaded_store;
using faults::call;
namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t clean = CFG_INITIALIZED | CFG_LOADED;
constexpr const char* saved_text = "[A]\na=1\nb=2\n\n[I]\nc=3\n";
constexpr const char* saved_export = "\n[A]\na=1\nb=2\n\n[I]\nc=3\n";
constexpr const char* factory_text = "[F]\nf=1\n[G]\ng=2\n";
constexpr const char* factory_export = "\n[F]\nf=1\n\n[G]\ng=2\n";

/// What an operation left behind with one call failing.
struct aftermath {
  std::uint32_t result = 0;
  std::string text;
  std::uint32_t flags = 0;
  bool temporary_file = false;
};

bool operator==(const aftermath& a, const aftermath& b) {
  return a.result == b.result && a.text == b.text && a.flags == b.flags &&
         a.temporary_file == b.temporary_file;
}

void PrintTo(const aftermath& all, std::ostream* out) {
  *out << "result " << all.result << ", flags " << std::hex << all.flags << ", temporary file "
       << all.temporary_file << ", text " << testing::PrintToString(all.text);
}

class Failures : public loaded_store::test {
 protected:
  Failures() {
    device_root::clear();
    device_root::write("/etc/config-file.ini", factory_text);
    device_root::write("/var/flash", saved_text);
    install_working_tool();
  }
  ~Failures() override { faults::reset(); }

  static void install_working_tool() {
    device_root::install_flash_script(
        "flash=$(dirname \"$0\")/../var/flash\n"
        "if [ $1 = -r ]; then cp \"$flash\" \"$2\"; else cp \"$2\" \"$flash\"; fi");
  }

  /// Runs `operation` on what `arrange` arranged, with call number 1, 2, 3 ... of a kind failing,
  /// as long as there is such a call.
  static std::vector<aftermath> fail_each(call kind, const std::function<void()>& arrange,
                                          const std::function<std::uint32_t()>& operation) {
    std::vector<aftermath> all;
    for (int nth = 1; nth < 100; ++nth) {
      faults::reset();
      arrange();
      aftermath left;
      bool happened = false;
      {
        const captured_stdout unheard;
        faults::fail(kind, nth, EIO);
        left.result = operation();
        happened = faults::happened();
        faults::reset();
      }
      if (!happened) {
        break;
      }
      left.text = exported();
      left.flags = g_config_mgmt.flags;
      left.temporary_file = fs::remove(device_root::path("/sbin/config-file.tmp"));
      EXPECT_TRUE(is_well_formed());
      EXPECT_TRUE(left.flags != 0 || is_all_zero());
      reap_children(kind == call::waitpid ? 1 : 0);
      all.push_back(left);
    }
    return all;
  }

  /// A wait that failed leaves its child to us; nothing else may.
  static void reap_children(int at_most) {
    while (waitpid(-1, nullptr, 0) > 0) {
      EXPECT_GE(--at_most, 0) << "a child was left behind";
    }
  }

  static void arrange_empty_store() { config_center_close(); }

  static void arrange_saved_store() { ASSERT_EQ(load(saved_text), 0U); }

  static void arrange_changed_store() {
    arrange_saved_store();
    ASSERT_EQ(cfc_set_val("A", "b", "changed"), 0U);
  }

  static constexpr const char* changed_export = "\n[A]\na=1\nb=changed\n\n[I]\nc=3\n";
};

using every = std::vector<aftermath>;

const aftermath empty_after(std::uint32_t result) {
  return {result, "", 0, false};
}

const aftermath defaults_loaded{0, factory_export, clean, false};

}  // namespace

// ---- Load -------------------------------------------------------------------------------------

class FailuresOfLoad : public Failures {
 protected:
  every fail(call kind) {
    return fail_each(kind, arrange_changed_store,
                     [this] { return config_load_file(file.path().c_str()); });
  }
  const unnamed_file file{"[F]\nf=1\n[G]\ng=2\n"};
};

TEST_F(FailuresOfLoad, memory_for_a_section_empties_the_store_and_for_an_entry_drops_the_entry) {
  EXPECT_EQ(fail(call::malloc), (every{empty_after(12),
                                       {0, "\n[F]\n\n[G]\ng=2\n", clean, false},
                                       empty_after(12),
                                       {0, "\n[F]\nf=1\n\n[G]\n", clean, false}}));
}

TEST_F(FailuresOfLoad, an_open_that_fails_empties_the_store) {
  EXPECT_EQ(fail(call::fopen), every{empty_after(206)});
}

TEST_F(FailuresOfLoad, a_read_that_fails_ends_the_text) {
  EXPECT_EQ(fail(call::fgets), (every{empty_after(205),
                                      {0, "\n[F]\n", clean, false},
                                      {0, "\n[F]\nf=1\n", clean, false},
                                      {0, "\n[F]\nf=1\n\n[G]\n", clean, false},
                                      {0, "\n[F]\nf=1\n\n[G]\ng=2\n", clean, false}}));
}

TEST_F(FailuresOfLoad, a_close_that_fails_changes_nothing) {
  EXPECT_EQ(fail(call::fclose), every{defaults_loaded});
}

// ---- Export -----------------------------------------------------------------------------------

class FailuresOfExport : public Failures {
 protected:
  every fail(call kind) {
    return fail_each(kind, arrange_changed_store, [] {
      const unnamed_file file;
      const int descriptor = dup(file.descriptor());
      std::FILE* const stream = fdopen(descriptor, "w");
      const std::uint32_t result = config_export(&g_config_mgmt, stream);
      std::fclose(stream);
      return result;
    });
  }
  const aftermath refused{215, changed_export, clean | CFG_DIRTY, false};
};

TEST_F(FailuresOfExport, a_write_that_comes_short_leaves_the_store_as_it_was) {
  EXPECT_EQ(fail(call::fwrite), (every{refused, refused, refused, refused, refused}));
}

TEST_F(FailuresOfExport, a_flush_that_fails_leaves_the_store_as_it_was) {
  EXPECT_EQ(fail(call::fflush), every{refused});
}

TEST_F(FailuresOfExport, needs_no_memory) {
  EXPECT_EQ(fail(call::malloc), every{});
}

// ---- Start ------------------------------------------------------------------------------------

class FailuresOfStart : public Failures {
 protected:
  every fail(call kind) {
    return fail_each(
        kind,
        [] {
          device_root::write("/var/flash", saved_text);
          arrange_empty_store();
        },
        [] { return config_center_init(); });
  }
  every fail_without_flash(call kind) {
    return fail_each(
        kind,
        [] {
          device_root::write("/var/flash", "");
          arrange_changed_store();
        },
        [] { return config_center_init(); });
  }
  const aftermath saved_loaded{0, saved_export, clean, false};
};

TEST_F(FailuresOfStart, a_flash_read_without_process_gives_the_defaults) {
  EXPECT_EQ(fail(call::fork), every{defaults_loaded});
}

TEST_F(FailuresOfStart, a_wait_that_fails_gives_the_defaults) {
  EXPECT_EQ(fail(call::waitpid), every{defaults_loaded});
}

TEST_F(FailuresOfStart, a_copy_that_cannot_be_opened_gives_the_defaults) {
  EXPECT_EQ(fail(call::fopen), every{defaults_loaded});
}

TEST_F(FailuresOfStart, memory_for_a_section_gives_the_defaults_and_for_an_entry_drops_the_entry) {
  EXPECT_EQ(fail(call::malloc), (every{defaults_loaded,
                                       {0, "\n[A]\nb=2\n\n[I]\nc=3\n", clean, false},
                                       {0, "\n[A]\na=1\n\n[I]\nc=3\n", clean, false},
                                       defaults_loaded,
                                       {0, "\n[A]\na=1\nb=2\n\n[I]\n", clean, false}}));
}

TEST_F(FailuresOfStart, a_close_that_fails_changes_nothing) {
  EXPECT_EQ(fail(call::fclose), every{saved_loaded});
}

TEST_F(FailuresOfStart, only_a_removal_that_fails_leaves_the_temporary_file) {
  EXPECT_EQ(fail(call::unlink), (every{{0, saved_export, clean, true}}));
}

TEST_F(FailuresOfStart, a_program_that_cannot_be_executed_gives_the_defaults) {
  // The failing call is made in each child, where it counts as its first one.
  faults::fail(call::execl, 1, ENOEXEC);
  EXPECT_EQ(config_center_init(), 0U);
  faults::reset();
  EXPECT_EQ(exported(), factory_export);
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
}

TEST_F(FailuresOfStart, without_a_flash_processes_decide_nothing) {
  const every two{defaults_loaded, defaults_loaded};
  EXPECT_EQ(fail_without_flash(call::fork), two);
  EXPECT_EQ(fail_without_flash(call::waitpid), two);
}

TEST_F(FailuresOfStart, without_a_flash_the_factory_file_decides) {
  EXPECT_EQ(fail_without_flash(call::fopen), (every{defaults_loaded, empty_after(206)}));
  EXPECT_EQ(fail_without_flash(call::malloc), (every{empty_after(12),
                                                     {0, "\n[F]\n\n[G]\ng=2\n", clean, false},
                                                     empty_after(12),
                                                     {0, "\n[F]\nf=1\n\n[G]\n", clean, false}}));
}

// ---- Flush ------------------------------------------------------------------------------------

class FailuresOfFlush : public Failures {
 protected:
  every fail(call kind) {
    return fail_each(
        kind,
        [] {
          device_root::write("/var/flash", saved_text);
          arrange_changed_store();
        },
        [] { return cfc_flush_all(); });
  }
  const aftermath still_dirty{215, changed_export, clean | CFG_DIRTY, false};
};

TEST_F(FailuresOfFlush, a_temporary_file_that_is_not_written_leaves_the_store_dirty) {
  EXPECT_EQ(fail(call::fopen), every{still_dirty});
  EXPECT_EQ(fail(call::fwrite), every(5, still_dirty));
  EXPECT_EQ(fail(call::fflush), every{still_dirty});
  EXPECT_EQ(device_root::read("/var/flash"), changed_export) << "the run without a failure";
}

TEST_F(FailuresOfFlush, a_flash_that_is_not_written_leaves_the_store_clean) {
  EXPECT_EQ(fail(call::fork), (every{{218, changed_export, clean, false}}));
  EXPECT_EQ(fail(call::waitpid), (every{{222, changed_export, clean, false}}));
}

TEST_F(FailuresOfFlush, a_program_that_cannot_be_executed_gives_222) {
  arrange_changed_store();
  faults::fail(call::execl, 1, ENOEXEC);
  EXPECT_EQ(cfc_flush_all(), 222U);
  faults::reset();
  EXPECT_EQ(device_root::read("/var/flash"), saved_text);
}

TEST_F(FailuresOfFlush, a_close_that_fails_changes_nothing) {
  EXPECT_EQ(fail(call::fclose), (every{{0, changed_export, clean, false}}));
}

TEST_F(FailuresOfFlush, only_a_removal_that_fails_leaves_the_temporary_file) {
  EXPECT_EQ(fail(call::unlink), (every{{0, changed_export, clean, true}}));
}

TEST_F(FailuresOfFlush, needs_no_memory) {
  EXPECT_EQ(fail(call::malloc), every{});
}

// ---- Defaults and values ----------------------------------------------------------------------

class FailuresOfDefaults : public Failures {
 protected:
  every fail(call kind) {
    return fail_each(kind, arrange_changed_store, [] { return config_to_default(); });
  }
};

TEST_F(FailuresOfDefaults, a_factory_file_that_cannot_be_loaded_empties_the_store) {
  EXPECT_EQ(fail(call::fopen), every{empty_after(206)});
  EXPECT_EQ(fail(call::malloc), (every{empty_after(12),
                                       {0, "\n[F]\n\n[G]\ng=2\n", clean, false},
                                       empty_after(12),
                                       {0, "\n[F]\nf=1\n\n[G]\n", clean, false}}));
}

TEST_F(FailuresOfDefaults, a_flash_that_is_not_written_changes_nothing) {
  EXPECT_EQ(fail(call::fork), every{defaults_loaded});
  EXPECT_EQ(fail(call::waitpid), every{defaults_loaded});
  EXPECT_EQ(fail(call::fclose), every{defaults_loaded});
}

TEST_F(FailuresOfDefaults, remove_no_file) {
  EXPECT_EQ(fail(call::unlink), every{});
}

TEST_F(Failures, of_memory_for_a_value_leave_the_old_one_and_the_store_clean) {
  const every unchanged{{12, saved_export, clean, false}};
  for (const char* key : {"a", "b", "new"}) {
    EXPECT_EQ(fail_each(call::malloc, arrange_saved_store,
                        [key] { return cfc_set_val("A", key, "longer"); }),
              unchanged);
  }
}

TEST_F(Failures, of_memory_do_not_concern_a_value_that_fits) {
  EXPECT_EQ(fail_each(call::malloc, arrange_saved_store, [] { return cfc_set_val("A", "a", "9"); }),
            every{});
}
