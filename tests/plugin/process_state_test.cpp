// A product's life in another program's process: the program finds everything as it left it. The
// products are made in a process of their own, so that nothing of GDAL is in use before.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstring>
#include <exception>
#include <filesystem>
#include <locale>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <gdal.h>

#include "gridkit/plugin.h"
#include "gridkit/raster_writer.h"
#include "support/host_life.h"
#include "support/scratch_folder.h"

namespace {

int mallopt_calls = 0;
int own_handler_calls = 0;

void own_handler(CPLErr, CPLErrorNum, const char*) {
  ++own_handler_calls;
}

}  // namespace

// The C library's parameters cannot be asked for; who sets one comes here first.
extern "C" __attribute__((visibility("default"))) int mallopt(int, int) noexcept {
  ++mallopt_calls;
  return 1;
}

namespace {

// What a library could change for the whole process, by name.
using State = std::map<std::string, std::string>;

template <class T>
std::string shown(const T& value) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << value;
  return text.str();
}

std::string signal_handlers() {
  std::string all;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    if (::sigaction(number, nullptr, &action) != 0) continue;
    all += shown(number) + ':' + shown(reinterpret_cast<std::uintptr_t>(action.sa_handler)) + ':' +
           shown(action.sa_flags) + ' ';
  }
  return all;
}

std::string blocked_signals() {
  sigset_t blocked;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  std::string all;
  for (int number = 1; number < NSIG; ++number)
    all += sigismember(&blocked, number) == 1 ? '1' : '0';
  return all;
}

std::string file_mask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return shown(mask);
}

std::string limits() {
  std::string all;
  for (int number = 0; number < RLIMIT_NLIMITS; ++number) {
    rlimit limit{};
    ::getrlimit(static_cast<__rlimit_resource>(number), &limit);
    all += shown(limit.rlim_cur) + '/' + shown(limit.rlim_max) + ' ';
  }
  return all;
}

std::string environment() {
  std::string all;
  for (char** entry = environ; *entry != nullptr; ++entry) all += std::string(*entry) + '\n';
  return all;
}

std::string threads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return shown(std::distance(begin(tasks), end(tasks)));
}

std::string gdal_drivers() {
  std::string all;
  for (int i = 0; i < GDALGetDriverCount(); ++i) {
    all += std::string(GDALGetDriverShortName(GDALGetDriver(i))) + ' ';
  }
  return all;
}

std::string gdal_settings() {
  const std::unique_ptr<char*, decltype(&CSLDestroy)> settings(CPLGetConfigOptions(), &CSLDestroy);
  std::string all;
  for (char** entry = settings.get(); entry != nullptr && *entry != nullptr; ++entry) {
    all += std::string(*entry) + '\n';
  }
  return all;
}

// Whether an error of GDAL's comes to the handler that the program has set.
std::string gdal_errors_arrive() {
  const int before = own_handler_calls;
  CPLError(CE_Failure, CPLE_AppDefined, "made by the test");
  CPLErrorReset();
  return shown(own_handler_calls - before);
}

State state() {
  return {{"calls of mallopt", shown(mallopt_calls)},
          {"signal handlers", signal_handlers()},
          {"blocked signals", blocked_signals()},
          {"locale of the C library", std::setlocale(LC_ALL, nullptr)},
          {"locale of the thread", shown(::uselocale(nullptr) == LC_GLOBAL_LOCALE)},
          {"locale of streams", std::locale().name()},
          {"file mask", file_mask()},
          {"working folder", std::filesystem::current_path().string()},
          {"environment", environment()},
          {"limits", limits()},
          {"threads", threads()},
          {"rounding", shown(std::fegetround())},
          {"floating-point traps", shown(::fegetexcept())},
          {"handler of missing memory", shown(std::get_new_handler() == nullptr)},
          {"handler of termination", shown(reinterpret_cast<std::uintptr_t>(std::get_terminate()))},
          {"GDAL's cache", shown(GDALGetCacheMax64())},
          {"GDAL's drivers", gdal_drivers()},
          {"GDAL's settings", gdal_settings()},
          {"GDAL's errors that arrive", gdal_errors_arrive()}};
}

// What differs, by name: "before -> after".
State difference(const State& before, const State& after) {
  State changed;
  for (const auto& [name, value] : after) {
    if (before.at(name) != value) changed[name] = before.at(name) + "-> " + value;
  }
  return changed;
}

class ProcessState : public testing::Test {
 protected:
  ProcessState() { CPLSetErrorHandler(&own_handler); }
  ~ProcessState() override { CPLSetErrorHandler(nullptr); }

  std::string product(const std::string& variant) const {
    const pid_t child = ::fork();
    if (child == 0) {
      small_product(variant, scratch.path());
      ::_exit(0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(scratch.path())) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with("TSX1") && name.ends_with(".xml") &&
          name.find("_" + variant + "_") != std::string::npos) {
        return entry.path().string();
      }
    }
    ADD_FAILURE() << "no product";
    return {};
  }

  static void live(const std::string& path) {
    const auto plugin = gridkit::Plugin::load(TSX_PLUGIN);
    for (const HostStep& step : host_life(plugin, path, [] { return 0L; })) {
      EXPECT_FALSE(was_refused(step)) << step.name << ": " << step.outcome;
    }
  }

  const ScratchFolder scratch;
};

TEST_F(ProcessState, IsSeenByThisTest) {
  const State before = state();
  mallopt(M_TRIM_THRESHOLD, 1);
  ::umask(027);
  CPLSetConfigOption("TSX_TEST", "1");
  const GIntBig cache = GDALGetCacheMax64();
  GDALSetCacheMax64(cache / 2);
  const auto handler = std::signal(SIGUSR1, SIG_IGN);
  const State changed = difference(before, state());
  std::set<std::string> names;
  for (const auto& [name, change] : changed) names.insert(name);
  EXPECT_EQ(names, (std::set<std::string>{"calls of mallopt", "file mask", "GDAL's settings",
                                          "GDAL's cache", "signal handlers"}));
  std::signal(SIGUSR1, handler);
  GDALSetCacheMax64(cache);
  CPLSetConfigOption("TSX_TEST", nullptr);
}

// The call would come here from a library too.
TEST_F(ProcessState, HasThisTestsOwnMallopt) {
  EXPECT_EQ(::dlsym(RTLD_DEFAULT, "mallopt"), reinterpret_cast<void*>(&mallopt));
}

TEST_F(ProcessState, IsAsItWasAfterTheLifeOfAComplexProduct) {
  const std::string path = product("SSC");
  const State before = state();
  live(path);
  EXPECT_EQ(difference(before, state()), State{});
}

TEST_F(ProcessState, HasOneDriverMoreAfterTheLifeOfADetectedProduct) {
  for (const char* variant : {"MGD", "GEC", "EEC"}) {
    const std::string path = product(variant);
    const State before = state();
    const bool is_first = GDALGetDriverCount() == 0;
    live(path);
    const State changed = difference(before, state());
    EXPECT_EQ(changed, is_first ? (State{{"GDAL's drivers", "-> GTiff "}}) : State{}) << variant;
  }
}

TEST_F(ProcessState, KeepsTheDriversOfAProgramThatHasThem) {
  const std::string path = product("GEC");
  GDALAllRegister();
  const State before = state();
  live(path);
  EXPECT_EQ(difference(before, state()), State{});
}

TEST_F(ProcessState, IsAsItWasAfterWritingButForDriversAndTheirThreads) {
  const State before = state();
  const std::vector<std::uint16_t> pixels(1000, 7);
  for (auto* create : {&gridkit::create_geotiff, &gridkit::create_cog, &gridkit::create_png,
                       &gridkit::create_envi}) {
    const auto writer = create((scratch / "raster").string(), 100, 10, {});
    writer->write_lines(std::as_bytes(std::span(pixels)), 10);
    writer->finish();
  }
  State changed = difference(before, state());
  changed.erase("GDAL's drivers");
  changed.erase("threads");  // GDAL keeps those that compressed for what it compresses next
  EXPECT_EQ(changed, State{});
}

}  // namespace
