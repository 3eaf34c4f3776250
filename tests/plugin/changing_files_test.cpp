// Files that become something else while a product is being opened or read. The real plug-in runs
// on the real toolkit; only the registry's look-up, which the open asks once the annotation is
// recognised and before it is read, is this program's own, and makes the change.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"
#include "handlepool/handlepool.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;
using simulate::Variant;

std::function<void()>& at_look_up() {
  static std::function<void()> action;
  return action;
}

constexpr uid_t nobody = 65534;

// Files without permission are readable to the superuser, so the test becomes someone else.
void make_unreadable(const fs::path& file) {
  fs::permissions(file, fs::perms::none);
  if (::geteuid() == 0 && ::seteuid(nobody) != 0) throw std::runtime_error("cannot be nobody");
}

void be_oneself() {
  if (::getuid() == 0 && ::seteuid(0) != 0) throw std::runtime_error("cannot be root again");
}

struct Change {
  const char* name;
  std::function<void(const fs::path&)> make;
};
void PrintTo(const Change& change, std::ostream* out) {
  *out << change.name;
}

const Change vanishes{"vanishes", [](const fs::path& file) { fs::remove(file); }};
const Change is_halved{"is_halved",
                       [](const fs::path& f) { fs::resize_file(f, fs::file_size(f) / 2); }};
const Change is_emptied{"is_emptied", [](const fs::path& file) { fs::resize_file(file, 0); }};
const Change is_replaced{"is_replaced", [](const fs::path& file) {
                           fs::remove(file);
                           std::ofstream(file) << std::string(100000, 'x');
                         }};
const Change becomes_a_folder{"becomes_a_folder", [](const fs::path& file) {
                                fs::remove(file);
                                fs::create_directory(file);
                              }};
const Change becomes_a_pipe{"becomes_a_pipe", [](const fs::path& file) {
                              fs::remove(file);
                              ASSERT_EQ(::mkfifo(file.c_str(), 0666), 0);
                            }};
const Change becomes_a_loop{"becomes_a_loop", [](const fs::path& file) {
                              fs::remove(file);
                              fs::create_symlink(file.filename(), file);
                            }};
const Change becomes_endless{"becomes_endless", [](const fs::path& file) {
                               fs::remove(file);
                               fs::create_symlink("/dev/zero", file);
                             }};
const Change becomes_unreadable{"becomes_unreadable", make_unreadable};

const std::vector<Change> changes = {
    vanishes,       is_halved,      is_emptied,      is_replaced,        becomes_a_folder,
    becomes_a_pipe, becomes_a_loop, becomes_endless, becomes_unreadable,
};

// What came of a product: why it did not open or, if it did, how its blocks came.
struct Life {
  std::string refusal;
  int delivered = 0;
  int without_data = 0;
  std::string failure;  // of the first block that failed
};

class SimulatedProduct : public testing::Test {
 protected:
  SimulatedProduct() {
    fs::permissions(scratch.path(), fs::perms(0755));
    options.lines = options.samples = 256;
  }
  void TearDown() override {
    at_look_up() = nullptr;
    be_oneself();
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(took, std::chrono::seconds(60)) << "nothing waits for anything";
  }

  void simulate(Variant variant) {
    options.variant = variant;
    annotation = simulate::write_product_folder(options, scratch.path());
    image = *fs::directory_iterator(annotation.parent_path() / "IMAGEDATA");
  }

  Life live(const std::function<void()>& recognised, const std::function<void()>& opened) {
    Life life;
    at_look_up() = recognised;
    try {
      const gridkit::Product product = plugin->open(annotation);
      const gridkit::Layer layer = product.open_layer(product.layer_names().at(0));
      opened();
      read_blocks(layer, life);
    } catch (const gridkit::Error& error) {
      life.refusal = error.what();
    }
    return life;
  }

  std::shared_ptr<gridkit::Plugin> plugin = gridkit::Plugin::load(TSX_PLUGIN);
  const ScratchFolder scratch;
  simulate::Options options;
  fs::path annotation;
  fs::path image;
  const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

 private:
  static void read_blocks(const gridkit::Layer& layer, Life& life) {
    std::vector<std::uint16_t> block;
    for (int row = 0; row < 4; ++row) {
      try {
        ++(layer.read_block(row, 0, block) ? life.delivered : life.without_data);
      } catch (const gridkit::Error& error) {
        if (life.failure.empty()) life.failure = error.what();
      }
    }
  }
};

class ChangingFile : public SimulatedProduct, public testing::WithParamInterface<Change> {};

const auto nothing = [] {};

TEST_P(ChangingFile, OfAnAnnotationEndsTheOpenWithAWord) {
  for (const Variant variant : {Variant::ssc, Variant::mgd}) {
    simulate(variant);
    const Life life = live([&] { GetParam().make(annotation); }, nothing);
    EXPECT_EQ(life.refusal,
              annotation.string() +
                  ": cannot be opened: tsxFileTitleIdentifyAndOpen: Wrong XML schema file "
                  "detected");
    be_oneself();
    fs::remove_all(annotation.parent_path());
  }
}

TEST_P(ChangingFile, OfAComplexImageBeforeItIsOpened) {
  simulate(Variant::ssc);
  const Life life = live([&] { GetParam().make(image); }, nothing);
  const std::string change = GetParam().name;
  if (change == "is_halved" || change == "is_emptied" || change == "is_replaced") {
    EXPECT_EQ(life.refusal, "");
    EXPECT_EQ(life.failure, "");
    EXPECT_EQ(life.delivered + life.without_data, 4);
    EXPECT_LT(life.delivered, 3) << "half of the image at most";
  } else {
    EXPECT_EQ(
        life.refusal,
        annotation.string() + ": cannot be opened: tsxFileTitleIdentifyAndOpen: gkf_fopen failed");
  }
}

TEST_P(ChangingFile, OfADetectedImageBeforeItIsOpened) {
  simulate(Variant::mgd);
  const Life life = live([&] { GetParam().make(image); }, nothing);
  if (std::string(GetParam().name) == "is_halved") {
    EXPECT_NE(life.refusal + life.failure, "");
    return;
  }
  const std::string words =
      ": cannot be opened: tsxFileTitleIdentifyAndOpen: gkl_LayerGetNames failed; "
      "gkl_LayerGetNames: " +
      image.string() + ": ";
  EXPECT_TRUE(life.refusal.starts_with(annotation.string() + words)) << life.refusal;
}

// An open file stays what it is, whatever becomes of its name; only its own content can change.
TEST_P(ChangingFile, OfAnOpenImage) {
  const std::string change = GetParam().name;
  const bool is_cut = change == "is_halved" || change == "is_emptied";
  for (const Variant variant : {Variant::ssc, Variant::mgd}) {
    simulate(variant);
    const Life life = live(nothing, [&] { GetParam().make(image); });
    be_oneself();
    EXPECT_EQ(life.refusal, "");
    if (!is_cut) {
      EXPECT_EQ(life.failure, "");
      EXPECT_EQ(life.delivered, 4);
    } else if (variant == Variant::ssc) {
      EXPECT_EQ(life.failure, "");
      EXPECT_EQ(life.delivered, change == "is_halved" ? 1 : 0);
    } else {
      EXPECT_NE(life.failure.find("gkl_LayerRead failed"), std::string::npos) << life.failure;
    }
    fs::remove_all(annotation.parent_path());
  }
}

TEST_F(SimulatedProduct, HoldsOneHandleForItselfAndOneAnImage) {
  const auto handles = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  options.polarisations = {"HH", "VV"};
  for (const Variant variant : {Variant::ssc, Variant::mgd}) {
    simulate(variant);
    plugin->open(annotation);  // what the libraries open once and for all
    const auto before = handles();
    {
      const gridkit::Product product = plugin->open(annotation);
      EXPECT_EQ(handles(), before + 3);
    }
    EXPECT_EQ(handles(), before);
    fs::remove_all(annotation.parent_path());
  }
}

INSTANTIATE_TEST_SUITE_P(Changes, ChangingFile, testing::ValuesIn(changes),
                         [](const auto& change) { return std::string(change.param.name); });

}  // namespace

// In front of the toolkit's own, for the plug-in and the host alike.
extern "C" __attribute__((visibility("default"))) void* pool_FindFileHandleIfOpen(
    const char* name, int32_t reserved) {
  static const auto original =
      reinterpret_cast<decltype(&pool_FindFileHandleIfOpen)>(::dlsym(RTLD_NEXT, __func__));
  if (const auto action = std::exchange(at_look_up(), nullptr)) action();
  return original(name, reserved);
}
