// Which faults of a document are listed, and after which the list ends.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "binding/document.h"
#include "binding/fault_collector.h"
#include "level1bProduct40/version40.h"
#include "schema/lenience.h"

namespace {

using namespace version40;
using binding::FaultCollector;

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

// 29: an element in a text, 39: an attribute where none may be. The rest of such an element is
// skipped, whatever it holds and however it ends.
TEST(FaultCollector, GoesOnAfterATextThatCannotBeRead) {
  const std::string rest = "<y>b</y><z>3</z></floatVector>";
  for (const auto& [x, fault] : {std::pair("<x a='1'>5</x>", "39"),
                                 {"<x a='1'/>", "39"},
                                 {"<x><w/></x>", "29"},
                                 {"<x>1<w>2<v/></w>3</x>", "29"},
                                 {"<x a='1'><x>4</x></x>", "39"}}) {
    const Listed listed = list<c_floatVector>(std::string("<floatVector>") + x + rest);
    EXPECT_EQ(listed.faults,
              (Faults{std::string(fault) + " x at /floatVector/x", "35 y at /floatVector/y"}))
        << x;
    EXPECT_TRUE(listed.saw_all) << x;
  }
  const Listed own = list<c_imagingMode>("<imagingMode>SM<x/></imagingMode>");
  EXPECT_EQ(own.faults, Faults{"29 imagingMode at /imagingMode"});
  EXPECT_TRUE(own.saw_all);
}

// 101: the document ends early, 3: an attribute twice. Nothing after them can be trusted.
TEST(FaultCollector, EndsWhereTheDocumentCannotBeRead) {
  const Listed cut = list<c_floatVector>("<floatVector><x>one</x>");
  ASSERT_EQ(cut.faults.size(), 2U);
  EXPECT_EQ(cut.faults[1].substr(0, 3), "101");
  EXPECT_FALSE(cut.saw_all);
  const Listed in_a_text = list<c_floatVector>("<floatVector><x a='1'>one");
  EXPECT_EQ(in_a_text.faults, Faults{"39 x at /floatVector/x"});
  EXPECT_FALSE(in_a_text.saw_all);
  const Listed twice = list<c_floatVector>("<floatVector><x a='1' a='1'>1</x></floatVector>");
  EXPECT_EQ(twice.faults, Faults{"3 x at /floatVector/x"});
  EXPECT_FALSE(twice.saw_all);
}

TEST(FaultCollector, LetsPassNoMoreThanItIsTold) {
  const std::string document = "<floatVector><x>a</x><y>b</y><z>c</z></floatVector>";
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  FaultCollector collector([](const lmx::Diagnostic& fault) { return fault.name == "x"; });
  collector.watch(reader);
  c_floatVector object;
  EXPECT_EQ(binding::read_document(c_floatVector::s_description, &object, reader), 35);
  ASSERT_EQ(collector.faults().size(), 2U);
  EXPECT_EQ(collector.faults()[1].name, "y");
  EXPECT_FALSE(collector.saw_all());
}

lmx::Diagnostic fault_at(const std::string& path, int code) {
  lmx::Diagnostic fault;
  fault.code = lmx::elmx_error{code};
  fault.path = path;
  return fault;
}

TEST(Lenience, PassesOverTextsAndAttributesThatNothingNeeds) {
  using level1bProduct::may_be_passed_over;
  const std::string sensor = "/level1Product/platform/orbit/orbitHeader/sensor";
  for (const int code : {19, 36, 37, 38, 39})
    EXPECT_TRUE(may_be_passed_over(fault_at(sensor, code)));
  // No value of its type, an element inside, missing, out of place.
  for (const int code : {35, 29, 21, 10, 25, 31, 3, 101}) {
    EXPECT_FALSE(may_be_passed_over(fault_at(sensor, code))) << code;
  }
}

TEST(Lenience, PassesOverNothingBelowWhatIsNeeded) {
  using level1bProduct::may_be_passed_over;
  const std::string info = "/level1Product/productInfo/";
  EXPECT_FALSE(may_be_passed_over(fault_at(info + "imageDataInfo", 39)));
  EXPECT_FALSE(may_be_passed_over(fault_at(info + "imageDataInfo/imageRaster/numberOfRows", 36)));
  EXPECT_TRUE(may_be_passed_over(fault_at(info + "imageDataInfoOfAnotherKind", 38)));
  EXPECT_TRUE(may_be_passed_over(fault_at(info + "missionInfo/absOrbit", 37)));
  EXPECT_TRUE(may_be_passed_over(fault_at("/level1Product/productInfo", 39)));
}

TEST(FaultCollector, ListsNoMoreThanItWasAllowed) {
  const std::string document = "<floatVector><x>a</x><y>b</y><z>c</z></floatVector>";
  EXPECT_EQ(list<c_floatVector>(document, 2).faults.size(), 2U);
  EXPECT_FALSE(list<c_floatVector>(document, 2).saw_all);
  EXPECT_TRUE(list<c_floatVector>(document, 3).saw_all);
}

}  // namespace
