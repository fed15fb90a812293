#include "zo_fault_trials.h"

#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "zo_test_effort.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace zo {
namespace test {
namespace {

constexpr long long WITHOUT_END = 200000;
constexpr long long TRIED_AT_ONCE = 64;

// FFmpeg 5.1 loses nothing when its own requests fail. What other versions lose is counted as their fault.
constexpr unsigned EXAMINED_LIBAVFORMAT = 59;

std::vector<FaultRow>& table() {
  static std::vector<FaultRow> rows;
  return rows;
}

// Prints the table when all tests have run.
class TablePrinter : public testing::Environment {
 public:
  void TearDown() override {
    FaultRow sum;
    sum.subject = "all";
    std::printf(
        "| what fails | tried | reported | done without | faults of libraries | bytes leaked | descriptors "
        "leaked |\n");
    std::printf("|---|---|---|---|---|---|---|\n");
    for (const FaultRow& row : table()) {
      print(row);
      sum.tried += row.tried;
      sum.reported += row.reported;
      sum.done_without += row.done_without;
      sum.library_faults += row.library_faults;
      sum.bytes_leaked += row.bytes_leaked;
      sum.descriptors_leaked += row.descriptors_leaked;
    }
    print(sum);
  }

 private:
  static void print(const FaultRow& row) {
    std::printf("| %s | %lld | %lld | %lld | %lld | %lld | %lld |\n", row.subject.c_str(), row.tried,
                row.reported, row.done_without, row.library_faults, row.bytes_leaked, row.descriptors_leaked);
  }
};

const testing::Environment* const PRINTER = testing::AddGlobalTestEnvironment(new TablePrinter);

// From one failing request of a library to the next. An emulator takes its time.
long long requestStep() {
  return static_cast<long long>(repetitions(1, 10));
}

Ending runWithFault(Trial& trial, Requests requests, long long n, bool lasting, bool* p_met) {
  Ending ending;
  MemoryShortage shortage(requests, n, lasting);
  try {
    trial.run();
  } catch (const Exception& exception) {
    shortage.end();
    ending.set(exception);
  } catch (const std::bad_alloc&) {
    ending.status = Ending::BAD_ALLOC;
  } catch (const std::exception&) {
    ending.status = Ending::OTHER_EXCEPTION;
  }
  shortage.end();
  *p_met = shortage.met();
  return ending;
}

// What a child process that runs a trial ends with.
enum ChildEnding { SURVIVED = 0, LIBRARY_CRASHED = 100, CRASHED = 101 };

// Whose code an address is: the file name of the program or library.
std::string moduleOf(void* p_address) {
  Dl_info info;
  if (dladdr(p_address, &info) == 0 || info.dli_fname == nullptr) {
    return std::string();
  }
  const std::string path = info.dli_fname;
  return path.substr(path.rfind('/') + 1);
}

bool startsWith(const std::string& text, const char* p_start) {
  return text.rfind(p_start, 0) == 0;
}

bool isForeign(const std::string& module) {
  return startsWith(module, "libav") || startsWith(module, "libsw") || startsWith(module, "libturbojpeg") ||
         startsWith(module, "libjpeg") || startsWith(module, "libpng") || startsWith(module, "libz.");
}

// Who called the code at which a signal came; for jumps to where no code is.
void* callerOf(const void* p_context) {
  const auto* p_machine = &static_cast<const ucontext_t*>(p_context)->uc_mcontext;
#if defined(__x86_64__)
  return *reinterpret_cast<void* const*>(p_machine->gregs[REG_RSP]);
#elif defined(__arm__)
  return reinterpret_cast<void*>(p_machine->arm_lr);
#else
  static_cast<void>(p_machine);
  return nullptr;
#endif
}

// Older C libraries are called by their version, and return from signals in a part of their own:
// libc-2.31.so, libpthread-2.31.so.
bool isOfCLibrary(const std::string& module) {
  return startsWith(module, "libc.so") || startsWith(module, "libc-") || startsWith(module, "libpthread");
}

// This program's own versions of the C library's functions, which let requests fail.
bool isMemoryFunction(void* p_address) {
  Dl_info info;
  if (dladdr(p_address, &info) == 0 || info.dli_sname == nullptr) {
    return false;
  }
  const std::string name = info.dli_sname;
  return name == "free" || name == "malloc" || name == "calloc" || name == "realloc" ||
         name == "posix_memalign" || name == "aligned_alloc" || name == "memalign";
}

// The first on the way back from the fault that is neither the C library's nor nobody's decides.
[[noreturn]] void tellWhoCrashed(int, siginfo_t*, void* p_context) {
  std::array<void*, 32> frames;
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  for (int i = 1; i < count; ++i) {
    void* const p_frame = frames[static_cast<std::size_t>(i)];
    const std::string module = moduleOf(p_frame);
    if (!module.empty() && !isOfCLibrary(module) && !isMemoryFunction(p_frame)) {
      _exit(isForeign(module) ? LIBRARY_CRASHED : CRASHED);
    }
  }
  _exit(isForeign(moduleOf(callerOf(p_context))) ? LIBRARY_CRASHED : CRASHED);
}

// Lets the requests from `n` on fail in turn, up to the one before `end`.
int runInChild(const std::function<Trial()>& prepare, Requests requests, long long n, long long end,
               bool lasting) {
  const pid_t child = fork();
  if (child == 0) {
    for (const int signal_number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) {
      struct sigaction action = {};
      action.sa_sigaction = tellWhoCrashed;
      action.sa_flags = SA_SIGINFO;
      sigaction(signal_number, &action, nullptr);
    }
    for (bool met = true; n < end && met; ++n) {
      Trial trial = prepare();
      runWithFault(trial, requests, n, lasting, &met);
    }
    _exit(SURVIVED);
  }
  int status = 0;
  const bool ended = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return ended ? WEXITSTATUS(status) : static_cast<int>(CRASHED);
}

std::string describe(const std::string& subject, long long n, bool lasting, const Ending& ending) {
  return subject + ", request " + std::to_string(n) + (lasting ? " and all later ones" : "") + ": status " +
         std::to_string(ending.status) + " " + ending.message.data();
}

}  // namespace

void Ending::set(const Exception& exception) {
  status = exception.status();
  std::snprintf(message.data(), message.size(), "%s", exception.what());
}

void addToTable(const FaultRow& row) {
  std::vector<FaultRow>& rows = table();
  const auto found = std::find_if(rows.begin(), rows.end(),
                                  [&](const FaultRow& other) { return other.subject == row.subject; });
  if (found == rows.end()) {
    rows.push_back(row);
    return;
  }
  found->tried += row.tried;
  found->reported += row.reported;
  found->done_without += row.done_without;
  found->library_faults += row.library_faults;
  found->bytes_leaked += row.bytes_leaked;
  found->descriptors_leaked += row.descriptors_leaked;
}

long long openDescriptors() {
  long long count = 0;
  DIR* p_directory = opendir("/proc/self/fd");
  if (p_directory != nullptr) {
    while (readdir(p_directory) != nullptr) {
      ++count;
    }
    closedir(p_directory);
  }
  return count;
}

void failEachRequest(const std::string& subject, Requests requests, const std::vector<int>& allowed,
                     const std::function<Trial()>& prepare, long long lost_by_libraries) {
  if (requests == Requests::LIBRARIES && !librariesCanFail()) {
    GTEST_SKIP() << "requests of libraries cannot fail in this build";
  }
  // The first run leaves behind what is made once in a process.
  {
    Trial trial = prepare();
    trial.run();
    trial.check(false);
    std::array<void*, 1> frame;
    backtrace(frame.data(), 1);
  }
  FaultRow row;
  row.subject = subject;
  for (const bool lasting : {false, true}) {
    const long long step = requests == Requests::LIBRARIES ? requestStep() : 1;
    long long known_until = 0;
    bool safe = true;
    for (long long n = 0;; n += step) {
      ASSERT_LT(n, WITHOUT_END) << subject << " allocates without end";
      // Many at once, one by one where that ends in a crash.
      if (requests == Requests::LIBRARIES && n >= known_until) {
        known_until = n + TRIED_AT_ONCE;
        safe = runInChild(prepare, requests, n, known_until, lasting) == SURVIVED;
      }
      if (requests == Requests::LIBRARIES && !safe) {
        const int child_ending = runInChild(prepare, requests, n, n + 1, lasting);
        ASSERT_NE(CRASHED, child_ending)
            << subject << ", request " << n << (lasting ? " and later ones" : "");
        if (child_ending != SURVIVED) {
          ++row.tried;
          ++row.library_faults;
          continue;
        }
      }
      bool met = false;
      Ending ending;
      const long long descriptors = openDescriptors();
      const HeldMemory before = heldMemory();
      {
        Trial trial = prepare();
        ending = runWithFault(trial, requests, n, lasting, &met);
        trial.check(ending.status != ZO_STATUS_OK);
      }
      const HeldMemory after = heldMemory();
      const long long leaked = after.bytes - before.bytes;
      const long long descriptors_leaked = openDescriptors() - descriptors;
      if (!met) {
        EXPECT_EQ(ZO_STATUS_OK, ending.status) << describe(subject, n, lasting, ending);
        break;
      }
      ++row.tried;
      ++(ending.status != ZO_STATUS_OK ? row.reported : row.done_without);
      row.descriptors_leaked += descriptors_leaked;
      const bool expected = leaked <= lost_by_libraries || avformat_version() >> 16 != EXAMINED_LIBAVFORMAT;
      if (requests == Requests::LIBRARIES && leaked > 0 && expected) {
        ++row.library_faults;
      } else {
        row.bytes_leaked += leaked;
        EXPECT_EQ(0, leaked) << describe(subject, n, lasting, ending);
        EXPECT_EQ(before.blocks, after.blocks) << describe(subject, n, lasting, ending);
      }
      EXPECT_EQ(0, descriptors_leaked) << describe(subject, n, lasting, ending);
      EXPECT_TRUE(ending.status == ZO_STATUS_OK ||
                  std::find(allowed.begin(), allowed.end(), ending.status) != allowed.end())
          << describe(subject, n, lasting, ending);
      if (testing::Test::HasFailure()) {
        return;  // one example is enough
      }
    }
  }
  addToTable(row);
}

std::uint64_t digest(const Frame& frame) {
  if (!frame.initialized()) {
    return 0;
  }
  std::uint64_t hash = 14695981039346656037U;
  const auto add = [&hash](std::uint64_t value) { hash = (hash ^ value) * 1099511628211U; };
  add(static_cast<std::uint64_t>(frame.format()));
  add(static_cast<std::uint64_t>(frame.size().width));
  add(static_cast<std::uint64_t>(frame.size().height));
  for (unsigned p = 0; p < frame.planeCount(); ++p) {
    for (unsigned y = 0; y < frame.planeRows(p); ++y) {
      const unsigned char* p_row = frame.planeData(p) + static_cast<std::size_t>(y) * frame.planeStride(p);
      for (unsigned x = 0; x < frame.planeRowBytes(p); ++x) {
        add(p_row[x]);
      }
    }
  }
  return hash;
}

}  // namespace test
}  // namespace zo
