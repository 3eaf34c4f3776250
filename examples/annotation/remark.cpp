// Reads an annotation, prints a few of its values, gives its header a remark and writes the result.
//
//   remark ANNOTATION OUTPUT TEXT

#include <cstdio>
#include <string>
#include <utility>

#include <level1bProduct34/version34.h>
#include <level1bProduct35/version35.h>
#include <level1bProduct40/version40.h>

namespace {

// Reads the document into the root of one version. True when it binds; else what is wrong and
// where.
template <class Root>
bool read(Root& root, const char* path, std::string* fault) {
  lmx::c_xml_reader_file reader(path);
  if (!reader.is_open()) {
    *fault = "it cannot be opened";
    return false;
  }
  if (root.unmarshal(reader) == 0) return true;
  const lmx::Diagnostic& told = *reader.diagnostic();
  *fault = "line " + std::to_string(told.line) + ", " + told.path + ": " + told.message();
  return false;
}

// All looking goes through const: a getter for writing marks what it gives as present.
template <class Product>
void print(const Product& product) {
  const auto& acquisition = product.get_productInfo().get_acquisitionInfo();
  std::printf("mission: %s\n", product.get_generalHeader().get_mission().c_str());
  const auto& polarisations = acquisition.get_polarisationList();
  for (std::size_t i = 0; i < polarisations.size_polLayer(); ++i) {
    std::printf("polarisation: %s\n", polarisations.get_polLayer(i).c_str());
  }
  const auto& calibration = product.get_calibration();
  for (std::size_t i = 0; i < calibration.size_calibrationConstant(); ++i) {
    std::printf("calibration factor: %g\n",
                calibration.get_calibrationConstant(i).get_calFactor().get_calFactor());
  }
}

// The exit status, where the document binds to this version; -1 where it does not.
template <class Root>
int add_remark(const char* source, const char* target, const char* remark, std::string* fault) {
  Root root;
  if (!read(root, source, fault)) return -1;
  if (root.getchosen() != Root::e_level1Product) {
    *fault = "its root is not level1Product";
    return -1;
  }
  print(std::as_const(root).get_level1Product());
  root.get_level1Product().get_generalHeader().set_remark(remark);
  if (const lmx::elmx_error error = root.marshal(target); error != 0) {
    std::fprintf(stderr, "remark: %s: %s\n", target, lmx::meaning(error));
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: remark ANNOTATION OUTPUT TEXT\n");
    return 2;
  }
  // Each version is a namespace of its own; the newest comes first, and its word on a fault counts.
  std::string fault;
  std::string older;
  int status = add_remark<version40::c_version40>(argv[1], argv[2], argv[3], &fault);
  if (status < 0) status = add_remark<version35::c_version35>(argv[1], argv[2], argv[3], &older);
  if (status < 0) status = add_remark<version34::c_version34>(argv[1], argv[2], argv[3], &older);
  if (status >= 0) return status;
  std::fprintf(stderr, "remark: %s: %s\n", argv[1], fault.c_str());
  return 1;
}
