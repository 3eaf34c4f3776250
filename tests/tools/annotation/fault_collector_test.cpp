// Which faults of a document are listed, and after which the list ends.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "binding/document.h"
#include "level1bProduct40/version40.h"
#include "tools/annotation/fault_collector.h"

namespace {

using namespace version40;

struct Listed {
  std::vector<std::string> faults;  // "CODE NAME at PATH"
  bool saw_all;
};

template <class Class>
Listed list(const std::string& document, std::size_t most = FaultCollector::default_most) {
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  FaultCollector collector(most);
  collector.watch(reader);
  Class object;
  const int result = binding::read_document(Class::s_description, &object, reader);
  Listed listed{{}, collector.saw_all()};
  for (const lmx::Diagnostic& fault : collector.faults()) {
    listed.faults.push_back(std::to_string(fault.code) + ' ' + fault.name + " at " + fault.path);
  }
  EXPECT_EQ(result == 0, listed.saw_all) << "the read goes to the end where it can";
  return listed;
}

using Faults = std::vector<std::string>;

TEST(FaultCollector, HasNothingToListOfAValidDocument) {
  const Listed listed = list<c_floatVector>("<floatVector><x>1</x><y>2</y><z>3</z></floatVector>");
  EXPECT_EQ(listed.faults, Faults{});
  EXPECT_TRUE(listed.saw_all);
}

// 35: not of its type, 21: missing.
TEST(FaultCollector, ListsEveryValueAndEveryMissingElement) {
  const Listed listed = list<c_floatVector>("<floatVector><x>one</x><z>three</z></floatVector>");
  EXPECT_EQ(listed.faults,
            (Faults{"35 x at /floatVector/x", "21 y at /floatVector", "35 z at /floatVector/z"}));
  EXPECT_TRUE(listed.saw_all);
}

TEST(FaultCollector, ListsElementsThatAreMissingAtTheEnd) {
  const Listed listed = list<c_floatVector>("<floatVector><x>1</x></floatVector>");
  EXPECT_EQ(listed.faults, (Faults{"21 y at /floatVector", "21 z at /floatVector"}));
  EXPECT_TRUE(listed.saw_all);
}

// 39: unknown attribute, 37: below the bound, 38: not in the enumeration, 19: too long.
TEST(FaultCollector, GoesOnAfterAttributesBoundsAndTexts) {
  using Coefficient = c_dblPolynom::c_dblPolynom_coefficient;
  EXPECT_EQ(list<Coefficient>("<coefficient a='1' exponent='-1'>x</coefficient>").faults,
            (Faults{"39 coefficient at /coefficient", "37 coefficient at /coefficient",
                    "35 coefficient at /coefficient"}));
  EXPECT_EQ(list<c_chirpSlope>("<chirpSlope>up</chirpSlope>").faults,
            Faults{"38 chirpSlope at /chirpSlope"});
  EXPECT_TRUE(list<c_chirpSlope>("<chirpSlope>up</chirpSlope>").saw_all);
}

// Of y, z and the end that are not where they should be, the first says what is wrong.
TEST(FaultCollector, TellsAnElementOutOfPlaceOnceAndEndsThere) {
  const Listed listed = list<c_floatVector>("<floatVector><x>1</x><w/><y>b</y></floatVector>");
  EXPECT_EQ(listed.faults, Faults{"21 y at /floatVector"});
  EXPECT_FALSE(listed.saw_all);
}

TEST(FaultCollector, KeepsFaultsBeforeAnElementOutOfPlace) {
  const Listed listed =
      list<c_floatVector>("<floatVector><x>one</x><y>2</y><z>3</z><w/></floatVector>");
  EXPECT_EQ(listed.faults, (Faults{"35 x at /floatVector/x", "10 floatVector at /floatVector"}));
  EXPECT_FALSE(listed.saw_all);
}

TEST(FaultCollector, TellsAForeignChoiceOnce) {
  using ModeInfo = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo;
  const Listed listed =
      list<ModeInfo>("<imagingModeSpecificInfo><other/></imagingModeSpecificInfo>");
  EXPECT_EQ(listed.faults, Faults{"31 other at /imagingModeSpecificInfo"});
  EXPECT_FALSE(listed.saw_all);
}

TEST(FaultCollector, TellsAListWithoutEntriesOnce) {
  using BeamList = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo::
      c_scanSAR::c_beamList;
  EXPECT_EQ(list<BeamList>("<beamList><other/></beamList>").faults,
            Faults{"21 beamID at /beamList"});
}

// 29: an element in a text, 101: the document ends early. Nothing after them can be trusted.
TEST(FaultCollector, EndsWhereATextOrTheDocumentCannotBeRead) {
  EXPECT_EQ(list<c_imagingMode>("<imagingMode><x/></imagingMode>").faults,
            Faults{"29 imagingMode at /imagingMode"});
  const Listed attribute =
      list<c_floatVector>("<floatVector><x a='1'>5</x><y>b</y><z>3</z></floatVector>");
  EXPECT_EQ(attribute.faults, Faults{"39 x at /floatVector/x"});
  EXPECT_FALSE(attribute.saw_all);
  const Listed cut = list<c_floatVector>("<floatVector><x>one</x>");
  ASSERT_EQ(cut.faults.size(), 2U);
  EXPECT_EQ(cut.faults[1].substr(0, 3), "101");
  EXPECT_FALSE(cut.saw_all);
}

TEST(FaultCollector, ListsNoMoreThanItWasAllowed) {
  const std::string document = "<floatVector><x>a</x><y>b</y><z>c</z></floatVector>";
  EXPECT_EQ(list<c_floatVector>(document, 2).faults.size(), 2U);
  EXPECT_FALSE(list<c_floatVector>(document, 2).saw_all);
  EXPECT_TRUE(list<c_floatVector>(document, 3).saw_all);
}

}  // namespace
