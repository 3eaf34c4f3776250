// A program of someone else's: every shape of operation of the annotation classes, called through
// the installed headers and linked with the plug-in alone. Built once a version:
//
//   -DVERSION=version40 -DROOT=c_version40 -DHEADER='<level1bProduct40/version40.h>'
//
// Says what does not hold, and exits 0 only where everything does.

#include HEADER

#include <cstdio>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using namespace VERSION;

int failures = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::printf("does not hold: %s\n", what);
  ++failures;
}

using Info = c_level1Product::c_productInfo::c_acquisitionInfo;
using ModeInfo = Info::c_imagingModeSpecificInfo;
using BeamList = ModeInfo::c_scanSAR::c_beamList;

lmx::c_datetime time_of(const std::string& text) {
  expect(lmx::c_datetime::is_valid(text), "the time is one");
  lmx::c_datetime time;
  time = text;
  return time;
}

c_generalHeader a_header() {
  c_generalHeader header;
  header.set_fileName("f");
  header.set_itemName("i");
  header.set_mission("m");
  header.set_source("s");
  header.set_destination("d");
  header.get_generationSystem().set_generationSystem("g");
  header.get_generationSystem().set_version("1");
  header.set_generationTime(time_of("2008-03-10T13:32:20Z"));
  return header;
}

void scalars() {
  c_generalHeader header = a_header();
  expect(header.get_mission() == "m", "a required text is what was set");
  expect(!header.isset_remark(), "an optional text is absent at first");
  header.set_remark("r");
  expect(header.isset_remark() && header.get_remark() == "r", "it is there once it is set");
  header.unset_remark();
  expect(!header.isset_remark(), "and not after it was unset");
  std::ostringstream written;
  written << header.get_generationTime();
  expect(written.str() == "2008-03-10T13:32:20Z", "a time is written as it was set");
}

void enumerated() {
  c_chirpSlope slope;
  expect(slope.setenum_chirpSlope(e_DOWN) && slope.getenum_chirpSlope() == e_DOWN, "by number");
  c_level1Product::c_calibration::c_calibrationConstant constant;
  expect(!constant.isset_polLayer() && constant.setenum_polLayer(e_HV), "an optional one");
  expect(constant.isset_polLayer() && constant.get_polLayer() == "HV", "is set by number too");
  constant.unset_polLayer();
  expect(!constant.isset_polLayer(), "and unset");
}

void objects() {
  c_generalHeader header;
  const c_generalHeader::c_generationSystem system;
  header.assign_generationSystem(system);
  expect(std::as_const(header).get_generationSystem().get_generationSystem().empty(), "assigned");
  c_level1Product::c_productSpecific specific;
  expect(!specific.isset_geocodedImageInfo(), "an optional object is absent at first");
  specific.get_geocodedImageInfo();
  expect(specific.isset_geocodedImageInfo(), "asking for it makes it present");
  specific.unset_geocodedImageInfo();
  const c_level1Product::c_productSpecific copy(specific);
  expect(!copy.isset_geocodedImageInfo(), "a copy has it not after it was unset");
}

void object_lists() {
  c_dblPolynom polynomial;
  expect(polynomial.append_coefficient() == 0, "appends");
  expect(polynomial.insert_coefficient(0) == 0, "inserts");
  polynomial.get_coefficient(2).set_coefficient(3);
  polynomial.assign_coefficient(0, std::as_const(polynomial).get_coefficient(2));
  expect(std::as_const(polynomial).get_coefficient(0).get_coefficient() == 3, "assigns");
  polynomial.delete_coefficient(1);
  expect(polynomial.size_coefficient() == 2, "deletes");
  expect(polynomial.back_coefficient().get_coefficient() == 3, "knows its last");
  polynomial.clear_coefficient();
  expect(polynomial.size_coefficient() == 0, "is cleared");
}

template <class List>
void texts(List& list, std::size_t (List::*size)() const,
           lmx::elmx_error (List::*append)(const std::string&),
           lmx::elmx_error (List::*insert)(std::size_t, const std::string&),
           lmx::elmx_error (List::*set)(std::size_t, const std::string&),
           const std::string& (List::*get)(std::size_t) const, void (List::*remove)(std::size_t),
           void (List::*clear)()) {
  expect((list.*append)("SRA") == 0 && (list.*insert)(0, "SM") == 0, "takes texts");
  expect((list.*set)(1, "SL") == 0 && (list.*get)(1) == "SL", "changes them");
  (list.*remove)(0);
  expect((list.*size)() == 1 && (list.*get)(0) == "SL", "loses them");
  (list.*clear)();
  expect((list.*size)() == 0, "loses them all");
}

void text_lists() {
  BeamList beams;
  texts(beams, &BeamList::size_beamID, &BeamList::append_beamID, &BeamList::insert_beamID,
        &BeamList::set_beamID, &BeamList::get_beamID, &BeamList::delete_beamID,
        &BeamList::clear_beamID);
  using Mode = c_imagingMode;
  Mode mode;
  texts(mode, &Mode::size_imagingMode, &Mode::append_imagingMode, &Mode::insert_imagingMode,
        &Mode::set_imagingMode, &Mode::get_imagingMode, &Mode::delete_imagingMode,
        &Mode::clear_imagingMode);
  expect(mode.appendenum_imagingMode(e_SM) && mode.insertenum_imagingMode(0, e_SL), "by number");
  expect(mode.setenum_imagingMode(1, e_SC) && mode.getenum_imagingMode(1) == e_SC, "changed");
  c_segmentInfoType segment;
  expect(!segment.isset_DRAoffset() && segment.append_DRAoffset("SRA") == 0, "an optional list");
  expect(segment.isset_DRAoffset(), "is present with its first entry");
  segment.unset_DRAoffset();
  expect(!segment.isset_DRAoffset(), "and is unset");
}

void choices() {
  ModeInfo info;
  expect(info.getchosen() == ModeInfo::e_nothing_chosen, "nothing is chosen at first");
  info.get_stripMap().set_azimuthBeamID("b");
  expect(std::as_const(info).get_stripMap().get_azimuthBeamID() == "b", "the chosen one is held");
  info.assign_spotLight(ModeInfo::c_spotLight());
  expect(info.getchosen() == ModeInfo::e_spotLight, "another takes its place");
}

// What every class does, and the parts of it that derived classes may call.
struct Header : c_generalHeader {
  using c_generalHeader::marshal_attributes;
  using c_generalHeader::marshal_child_elements;
  using c_generalHeader::unmarshal_attributes;
  using c_generalHeader::unmarshal_attributes_check;
  using c_generalHeader::unmarshal_body;
};

void classes() {
  c_generalHeader header = a_header();
  c_generalHeader copy(header);
  expect(copy.is_occurs_ok(), "a copy is whole");
  header.reset();
  expect(!header.is_occurs_ok(), "one that was reset is not");
  header.swap(copy);
  copy = header;
  expect(copy.get_mission() == "m", "swapped and assigned");

  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  expect(copy.marshal(writer, "generalHeader") == 0, "is written");
  const std::string text = out.str();
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  lmx::elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  c_generalHeader again;
  expect(again.unmarshal(reader, reader.current_name) == 0, "and read");

  Header parts;
  parts.c_generalHeader::swap(copy);
  std::ostringstream parts_out;
  lmx::c_xml_writer parts_writer(parts_out, 0, "", "");
  parts.marshal_attributes(parts_writer);
  expect(parts.marshal_child_elements(parts_writer) == 0, "by its parts too");
  lmx::c_xml_reader_memory parts_reader(text.data(), text.size());
  parts_reader.get_element_event(nullptr, &error, &parts_reader.current_name);
  Header read_again;
  while (parts_reader.get_attribute_event(nullptr, &error, &parts_reader.attribute_name)) {
    expect(read_again.unmarshal_attributes(parts_reader, "generalHeader", &error), "an attribute");
  }
  expect(read_again.unmarshal_attributes_check(parts_reader) == 0, "its attributes are there");
  const lmx::c_xml_reader_local local(&parts_reader);
  parts_reader.get_element_event(nullptr, &error, &parts_reader.current_name);
  expect(read_again.unmarshal_body(parts_reader, &parts_reader.current_name, &error), "its body");
  expect(read_again.get_destination() == "d", "what was read is there");
}

void documents(const char* file) {
  const c_generalHeader header = a_header();
  std::string text;
  std::ostringstream out;
  expect(header.marshal(&text) == 0 && header.marshal(out) == 0 && header.marshal(file) == 0,
         "is written in three ways");
  expect(text == out.str(), "all the same");
  lmx::elmx_error error{};
  const c_generalHeader of_file(file, &error);
  const c_generalHeader of_memory(text.data(), text.size(), &error);
  const c_generalHeader of_text(text, &error);
  expect(error == 0 && of_file.get_source() == "s", "is built of a document");
  c_generalHeader read;
  expect(read.unmarshal(file) == 0, "is read of a file");
  read.reset();
  expect(read.unmarshal(text) == 0, "of a text");
  read.reset();
  lmx::c_xml_reader_file reader(file);
  expect(reader.is_open() && read.unmarshal(reader) == 0, "of a reader");
  const std::string bad = "<generalHeader fileName='f'><mission/></generalHeader>";
  lmx::c_xml_reader_memory bad_reader(bad.data(), bad.size());
  bad_reader.set_policy([](const lmx::Diagnostic& fault) { return fault.code; });
  expect(read.unmarshal(bad_reader) != 0, "a fault is told");
  expect(bad_reader.diagnostic() != nullptr && !bad_reader.diagnostic()->message().empty(),
         "in words");
  expect(std::string(lmx::meaning(lmx::error_cannot_open)) != "", "and each code has some");
}

void root(const char* file) {
  ROOT root;
  root.set_chirpSlope("UP");
  expect(root.getenum_chirpSlope() == e_UP && root.setenum_chirpSlope(e_DOWN), "a text");
  expect(root.get_chirpSlope() == "DOWN" && root.getchosen() == ROOT::e_chirpSlope, "is held");
  texts(root, &ROOT::size_imagingMode, &ROOT::append_imagingMode, &ROOT::insert_imagingMode,
        &ROOT::set_imagingMode, &ROOT::get_imagingMode, &ROOT::delete_imagingMode,
        &ROOT::clear_imagingMode);
  expect(root.appendenum_imagingMode(e_SM) && root.insertenum_imagingMode(0, e_SL) &&
             root.setenum_imagingMode(0, e_HS) && root.getenum_imagingMode(0) == e_HS,
         "by number");
  root.assign_generalHeader(a_header());
  expect(std::as_const(root).get_generalHeader().get_mission() == "m", "an object");
  ROOT copy(root);
  copy.swap(root);
  root = copy;
  expect(root.is_occurs_ok() && root.marshal(file) == 0, "is written");
  lmx::elmx_error error{};
  const ROOT of_file(file, &error);
  std::string text;
  expect(error == 0 && of_file.marshal(&text) == 0, "is built of a file");
  const ROOT of_text(text, &error);
  const ROOT of_memory(text.data(), text.size(), &error);
  std::ostringstream out;
  lmx::c_xml_writer writer(out, lmx::c_xml_writer::include_xml_decl, "\t", "\n");
  expect(error == 0 && of_text.marshal(writer, "") == 0 && of_text.marshal(out) == 0, "and a text");
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  reader.get_element_event(nullptr, &error, &reader.current_name);
  expect(ROOT::is_member(reader, reader.current_name), "knows its members");
  root.reset();
  expect(root.unmarshal(reader, &reader.current_name, &error), "reads one");
  root.reset();
  expect(root.unmarshal(text) == 0 && root.getchosen() == ROOT::e_generalHeader, "reads a text");
  level1bProductBase& view = root;
  expect(view.numberOfRows() == 0 && root.getchosen() == ROOT::e_level1Product,
         "the view makes what it looks at");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  scalars();
  enumerated();
  objects();
  object_lists();
  text_lists();
  choices();
  classes();
  documents(argv[1]);
  root(argv[1]);
  if (failures == 0) std::printf("every operation is there\n");
  return failures == 0 ? 0 : 1;
}
