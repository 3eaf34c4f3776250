// Reading annotations strictly, beside parsers that only walk or hold the same bytes.

#include <expat.h>
#include <libxml/parser.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "bench/ratio.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"
#include "level1bProduct40/version40.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;
using bench::Row;

constexpr const char* peak_option = "--peak-of-bind";

void require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error("wrong answer: " + what);
}

std::size_t count_of(std::string_view part, std::string_view text) {
  std::size_t found = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
  return found;
}

// The bytes of a file, as fast as they come.
std::string contents(const std::string& path) {
  const std::unique_ptr<FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"),
                                                           &std::fclose);
  if (file == nullptr) throw std::runtime_error(path + ": cannot be opened");
  std::string bytes(fs::file_size(path), '\0');
  if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
    throw std::runtime_error(path + ": cannot be read");
  }
  return bytes;
}

// A simulated product with every optional member, of a given annotation size.
struct Annotation {
  Annotation(const fs::path& folder, double megabytes) {
    simulate::Options options;
    options.profile = simulate::Profile::maximal;
    options.annotation_megabytes = megabytes;
    options.empty_images = true;
    path = simulate::write_product_folder(options, folder / std::to_string(megabytes));
    text = contents(path);
  }

  std::size_t count(std::string_view part) const { return count_of(part, text); }

  std::string path;
  std::string text;
};

// --- The work ------------------------------------------------------------------------------------

// The whole life of a document: read strictly from its file, and given back.
void bind(const Annotation& annotation) {
  lmx::elmx_error error{};
  const version40::c_version40 document(annotation.path.c_str(), &error);
  benchmark::DoNotOptimize(&document);
  if (error != 0) throw std::runtime_error("an annotation does not bind");
}

void bind_from_memory(const Annotation& annotation) {
  lmx::elmx_error error{};
  const version40::c_version40 document(annotation.text.data(), annotation.text.size(), &error);
  benchmark::DoNotOptimize(&document);
  if (error != 0) throw std::runtime_error("an annotation does not bind");
}

void check_bind(const Annotation& annotation) {
  lmx::elmx_error error{};
  const version40::c_version40 document(annotation.path.c_str(), &error);
  require(error == 0, "error " + std::to_string(error) + " of " + annotation.path);
  const auto& product = document.get_level1Product();
  const auto vectors = annotation.count("<stateVec ");
  require(vectors > 0 && product.get_platform().get_orbit().size_stateVec() == vectors,
          "not every state vector is bound");
  // As many elements come out as went in.
  std::string written;
  require(document.marshal(&written) == 0, "the document does not write");
  require(count_of("</", written) + count_of("/>", written) ==
              annotation.count("</") + annotation.count("/>"),
          "not every element is bound");
}

// --- The yardsticks ------------------------------------------------------------------------------

// What a reader cannot do without: where elements start and end, their attributes, and their text.
struct Walked {
  std::size_t starts = 0;
  std::size_t ends = 0;
  std::size_t attributes = 0;
  std::size_t characters = 0;
};

Walked walk_with_expat(std::string_view text) {
  Walked walked;
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
      XML_ParserCreate(nullptr), &XML_ParserFree);
  XML_SetUserData(parser.get(), &walked);
  XML_SetElementHandler(
      parser.get(),
      [](void* user, const XML_Char*, const XML_Char** attributes) {
        auto& seen = *static_cast<Walked*>(user);
        ++seen.starts;
        for (; *attributes != nullptr; attributes += 2) ++seen.attributes;
      },
      [](void* user, const XML_Char*) { ++static_cast<Walked*>(user)->ends; });
  XML_SetCharacterDataHandler(parser.get(), [](void* user, const XML_Char*, int length) {
    static_cast<Walked*>(user)->characters += static_cast<std::size_t>(length);
  });
  // The fastest that expat goes: one buffer, which holds the whole document.
  if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) !=
      XML_STATUS_OK) {
    throw std::runtime_error("expat refuses an annotation");
  }
  return walked;
}

void check_walk(const Annotation& annotation) {
  const Walked walked = walk_with_expat(annotation.text);
  const std::size_t tags = annotation.count("<") - annotation.count("</");
  require(walked.starts == tags && walked.ends == tags, "expat misses elements");
}

void load_with_libxml2(const std::string& path) {
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree(
      xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET), &xmlFreeDoc);
  if (tree == nullptr) throw std::runtime_error("libxml2 refuses an annotation");
}

// --- Rows ----------------------------------------------------------------------------------------

template <class Work>
std::function<void(benchmark::State&)> timed(Work work) {
  return [work](benchmark::State& state) {
    for (auto _ : state) work();
  };
}

void check_both(const Annotation& annotation) {
  check_bind(annotation);
  check_walk(annotation);
}

Row bind_beside_walk(const Annotation& annotation) {
  return {.work = "strict bind of a 10 MB maximal annotation",
          .yardstick = "expat walking the same file, read whole and parsed in one call",
          .goal = 2.0,
          .check = [&] { check_both(annotation); },
          .timed_work = timed([&] { bind(annotation); }),
          .timed_yardstick = timed([&] { walk_with_expat(contents(annotation.path)); })};
}

Row bind_beside_walk_in_memory(const Annotation& annotation) {
  return {.work = "strict bind of a 10 MB maximal annotation in memory",
          .yardstick = "expat walking the same buffer in one call",
          .goal = 2.0,
          .check = [&] { check_both(annotation); },
          .timed_work = timed([&] { bind_from_memory(annotation); }),
          .timed_yardstick = timed([&] { walk_with_expat(annotation.text); })};
}

Row open_beside_tree(const Annotation& annotation, gridkit::Plugin& plugin) {
  return {.work = "open of a 500 kB annotation with its images",
          .yardstick = "libxml2 DOM parse of the same file",
          .goal = 1.0,
          .check =
              [&] {
                const gridkit::Product product = plugin.open(annotation.path);
                require(product.layer_names().size() == 2, "a complex product has two layers");
              },
          .timed_work = timed([&] { plugin.open(annotation.path); }),
          .timed_yardstick = timed([&] { load_with_libxml2(annotation.path); })};
}

// Linear cost shows as a ratio of one.
Row large_beside_small(const Annotation& large, const Annotation& small, int times) {
  return {.work = "strict bind of a " + std::to_string(times) + " MB annotation",
          .yardstick = "a 1 MB annotation bound as often as makes as many bytes",
          .check = [&] { check_bind(large); },
          .timed_work = timed([&] { bind(large); }),
          .timed_yardstick = timed([&, bytes = large.text.size()] {
            for (std::size_t done = 0; done < bytes; done += small.text.size()) bind(small);
          })};
}

// --- Memory --------------------------------------------------------------------------------------

// The most memory that this process has held at once. getrusage would tell its parent's peak too.
long peak_kilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:" && status >> word) return std::stol(word);
  }
  throw std::runtime_error("no peak of memory in /proc/self/status");
}

// In a process of its own, so that no earlier peak hides this one: binds a file and prints by how
// many kilobytes the process's peak of resident memory grew. The parser's memory counts too.
int print_peak_of_bind(const char* path) {
  const long before = peak_kilobytes();
  lmx::elmx_error error{};
  const version40::c_version40 document(path, &error);
  if (error != 0) return 1;
  std::printf("%ld\n", peak_kilobytes() - before);
  return 0;
}

double peak_beside_size(const Annotation& annotation) {
  const std::string self = fs::read_symlink("/proc/self/exe");
  const std::string command = "'" + self + "' " + peak_option + " '" + annotation.path + "'";
  const std::unique_ptr<FILE, decltype(&pclose)> child(popen(command.c_str(), "r"), &pclose);
  char line[32] = "";
  long kilobytes = 0;
  if (child == nullptr || std::fgets(line, sizeof line, child.get()) == nullptr ||
      std::from_chars(line, line + std::strlen(line), kilobytes).ec != std::errc()) {
    throw std::runtime_error("no peak of memory from " + command);
  }
  return static_cast<double>(kilobytes) * 1024 / static_cast<double>(annotation.text.size());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc == 3 && std::strcmp(argv[1], peak_option) == 0) return print_peak_of_bind(argv[2]);
  const ScratchFolder scratch;
  const auto annotation = [&](double megabytes) {
    return std::make_unique<Annotation>(scratch.path(), megabytes);
  };
  const auto half = annotation(0.5);
  const auto one = annotation(1);
  const auto ten = annotation(10);
  const auto hundred = annotation(100);
  const auto folder = gridkit::load_plugins(gridkit::default_plugin_folder());
  if (folder.plugins.empty()) throw std::runtime_error("no plug-in beside the toolkit");
  return bench::run(argc, argv,
                    {bind_beside_walk(*ten), bind_beside_walk_in_memory(*ten),
                     open_beside_tree(*half, *folder.plugins.front()),
                     large_beside_small(*ten, *one, 10), large_beside_small(*hundred, *one, 100)},
                    [&] {
                      return std::vector<bench::Figure>{
                          {"peak memory of binding 10 MB from a file", "times its size",
                           peak_beside_size(*ten), 8},
                          {"peak memory of binding 100 MB from a file", "times its size",
                           peak_beside_size(*hundred), 8}};
                    });
} catch (const std::exception& error) {
  std::fprintf(stderr, "binding_bench: %s\n", error.what());
  return 1;
}
