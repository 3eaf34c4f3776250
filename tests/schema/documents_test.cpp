// Whole annotations of each version: read, write, read again; and what the other versions make of
// them.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"

namespace {

std::string document(const std::string& kind, const std::string& version) {
  const char* folder = std::getenv("TSX_DOCUMENTS");
  return std::string(folder != nullptr ? folder : ".") + '/' + kind + '-' + version + ".xml";
}

struct Outcome {
  int code;
  std::string name;
  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.code << ' ' << outcome.name;
}

template <class Root>
Outcome bind_to(const std::string& path) {
  Root root;
  lmx::c_xml_reader_file reader(path.c_str());
  const int code = root.unmarshal(reader);
  return {code, reader.diagnostic() != nullptr ? reader.diagnostic()->name : ""};
}

// Written text stands for the tree: equal texts are equal trees, since every member present is
// written.
template <class Root>
void expect_round_trip(const std::string& path) {
  lmx::elmx_error error{};
  const Root read(path.c_str(), &error);
  ASSERT_EQ(error, 0) << path;
  std::string first;
  ASSERT_EQ(read.marshal(&first), 0);
  const Root again(first, &error);
  ASSERT_EQ(error, 0) << path;
  std::string second;
  ASSERT_EQ(again.marshal(&second), 0);
  EXPECT_EQ(first, second) << path;
  EXPECT_GT(first.size(), 20000U) << "a whole annotation";
  const Root copy(read);
  std::string copied;
  ASSERT_EQ(copy.marshal(&copied), 0);
  EXPECT_EQ(first, copied) << "a copy is the same tree, " << path;
}

TEST(Documents, SurviveReadingAndWriting) {
  for (const char* kind : {"minimal", "maximal"}) {
    expect_round_trip<version34::c_version34>(document(kind, "3.4"));
    expect_round_trip<version35::c_version35>(document(kind, "3.5"));
    expect_round_trip<version40::c_version40>(document(kind, "4.0"));
  }
}

const Outcome accepted{0, ""};

// What differs between the versions decides which documents of one another binds: 3.4 lacks
// userData and its minimal documents lack what later ones require; 4.0 adds sceneRangeExtent.
TEST(NinePairs, MinimalDocuments) {
  EXPECT_EQ(bind_to<version34::c_version34>(document("minimal", "3.4")), accepted);
  EXPECT_EQ(bind_to<version34::c_version34>(document("minimal", "3.5")), accepted);
  EXPECT_EQ(bind_to<version34::c_version34>(document("minimal", "4.0")), accepted);
  const Outcome lacks_generation_system{21, "generationSystem"};
  EXPECT_EQ(bind_to<version35::c_version35>(document("minimal", "3.4")), lacks_generation_system);
  EXPECT_EQ(bind_to<version35::c_version35>(document("minimal", "3.5")), accepted);
  EXPECT_EQ(bind_to<version35::c_version35>(document("minimal", "4.0")), accepted);
  EXPECT_EQ(bind_to<version40::c_version40>(document("minimal", "3.4")), lacks_generation_system);
  EXPECT_EQ(bind_to<version40::c_version40>(document("minimal", "3.5")), accepted);
  EXPECT_EQ(bind_to<version40::c_version40>(document("minimal", "4.0")), accepted);
}

TEST(NinePairs, MaximalDocuments) {
  EXPECT_EQ(bind_to<version34::c_version34>(document("maximal", "3.4")), accepted);
  // userData stands last in orderInfo, so what is left over there ends the read.
  EXPECT_EQ(bind_to<version34::c_version34>(document("maximal", "3.5")),
            (Outcome{10, "orderInfo"}));
  const Outcome range_extent_out_of_place{21, "sceneCenterCoord"};
  EXPECT_EQ(bind_to<version34::c_version34>(document("maximal", "4.0")), range_extent_out_of_place);
  EXPECT_EQ(bind_to<version35::c_version35>(document("maximal", "3.4")), accepted);
  EXPECT_EQ(bind_to<version35::c_version35>(document("maximal", "3.5")), accepted);
  EXPECT_EQ(bind_to<version35::c_version35>(document("maximal", "4.0")), range_extent_out_of_place);
  EXPECT_EQ(bind_to<version40::c_version40>(document("maximal", "3.4")), accepted);
  // acquisitionOrderID of 3.5 is not in 4.0's userData.
  EXPECT_EQ(bind_to<version40::c_version40>(document("maximal", "3.5")), (Outcome{10, "userData"}));
  EXPECT_EQ(bind_to<version40::c_version40>(document("maximal", "4.0")), accepted);
}

// Damaged documents: each ends in a fault with a place, or binds to something that can be written
// and bound again. Run under the sanitizers this replays a small, fixed set of hostile inputs.
template <class Root>
void expect_defined_end(const std::string& text) {
  Root root;
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  if (root.unmarshal(reader) != 0) {
    ASSERT_NE(reader.diagnostic(), nullptr);
    EXPECT_GE(reader.diagnostic()->line, 1U);
    EXPECT_LE(reader.diagnostic()->offset, text.size());
    EXPECT_FALSE(reader.diagnostic()->message().empty());
    return;
  }
  if (root.getchosen() != Root::e_level1Product) return;
  std::string written;
  ASSERT_EQ(root.marshal(&written), 0);
  Root again;
  EXPECT_EQ(again.unmarshal(written), 0);
}

TEST(Documents, DamagedOnesEndDefined) {
  std::ifstream file(document("minimal", "4.0"));
  const std::string whole{std::istreambuf_iterator<char>(file), {}};
  ASSERT_GT(whole.size(), 15000U);
  constexpr std::string_view bytes =
      "<>/&;\"'= \n\0\xFF"
      "0aZ-";
  std::mt19937 random(20080310);  // the same damage on every run
  const auto below = [&](std::size_t n) { return random() % n; };
  for (int i = 0; i < 1500; ++i) {
    std::string damaged = whole;
    switch (below(4)) {
      case 0:
        damaged.resize(below(damaged.size()));
        break;
      case 1:
        for (std::size_t n = 1 + below(4); n > 0; --n) {
          damaged[below(damaged.size())] = bytes[below(bytes.size())];
        }
        break;
      case 2:
        damaged.erase(below(damaged.size()), below(200));
        break;
      default: {
        const std::string piece = damaged.substr(below(damaged.size()), below(300));
        damaged.insert(below(damaged.size()), piece);
      }
    }
    expect_defined_end<version40::c_version40>(damaged);
    if (i % 10 == 0) expect_defined_end<version34::c_version34>(damaged);
  }
}

// Any content counts as present when there is some; it is written as it stands.
TEST(Documents, EmptyStatisticsAreNotWrittenAgain) {
  std::ifstream file(document("maximal", "4.0"));
  const std::string whole{std::istreambuf_iterator<char>(file), {}};
  const std::string statistics = "<quantisationStatistics><bin>7</bin></quantisationStatistics>";
  std::string emptied = whole;
  for (auto at = emptied.find(statistics); at != std::string::npos; at = emptied.find(statistics)) {
    emptied.replace(at, statistics.size(), "<quantisationStatistics/>");
  }
  ASSERT_NE(emptied, whole);
  std::string written;
  version40::c_version40 root;
  ASSERT_EQ(root.unmarshal(whole), 0);
  ASSERT_EQ(root.marshal(&written), 0);
  EXPECT_NE(written.find(statistics), std::string::npos);
  root.reset();
  ASSERT_EQ(root.unmarshal(emptied), 0);
  ASSERT_EQ(root.marshal(&written), 0);
  EXPECT_EQ(written.find("quantisationStatistics"), std::string::npos);
}

TEST(Documents, TheRootOfAnAnnotationIsChosenEight) {
  lmx::elmx_error error{};
  const version40::c_version40 root(document("minimal", "4.0").c_str(), &error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(root.getchosen(), 8);
  EXPECT_TRUE(root.is_occurs_ok());
}

}  // namespace
