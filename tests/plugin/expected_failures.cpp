#include "plugin/expected_failures.h"

#include <stdexcept>

#include "plugin/faulted_life.h"
#include "support/open_calls.h"

namespace {

using Reports = std::vector<PrintedReport>;

constexpr int images = 2;
const char* const open_word = "tsxFileTitleIdentifyAndOpen";

bool is_complex(const std::string& variant) {
  return variant == "SSC";
}
bool is_mapped(const std::string& variant) {
  return variant == "GEC" || variant == "EEC";
}
// The six arrays of state vectors of products with a sensor model.
int arrays(const std::string& variant) {
  return is_mapped(variant) ? 0 : 6;
}
int layers(const std::string& variant) {
  return is_complex(variant) ? 2 * images : images;
}

PrintedReport made_to_fail(const std::string& operation) {
  return {operation, "made to fail", gke_SeverityError};
}

// A failure of the function, over what it was told by the operation.
Reports over(const char* word, const char* message, const std::string& operation,
             std::int32_t severity = gke_SeverityError) {
  return {{word, message, severity}, made_to_fail(operation)};
}

Losses sum(Losses a, const Losses& b) {
  for (const auto& [kind, count] : b) a[kind] += count;
  std::erase_if(a, [](const auto& entry) { return entry.second == 0; });
  return a;
}

[[noreturn]] void untold() {
  throw std::out_of_range("nothing is told of this failure");
}

// --- Recognition and open ------------------------------------------------------------------------

// The text of a run counter is never freed.
const Losses counter_text = {{"text", 1}};

// The copy of the path, the name of the map projection, and the lists of layer names.
Losses lost_by_whole_open(const std::string& variant) {
  Losses lost = sum(counter_text, {{"text", is_mapped(variant) ? 2 : 1}});
  return is_complex(variant) ? lost : sum(lost, {{"list", images}, {"entry", 3 * images}});
}

// An unfinished record releases nothing: the annotation's handle, its three blocks, its path, and
// with a document that and the map projection's name.
Losses lost_by_unfinished(const std::string& variant, bool has_document) {
  const Losses lost = sum(counter_text, {{"file", 1}, {"record", 3}, {"text", 1}});
  if (!has_document) return lost;
  return sum(lost, {{"document", 1}, {"text", is_mapped(variant) ? 1 : 0}});
}

Expectation unfinished(Reports printed, Losses lost) {
  return {"unfinished, title 0", std::move(printed), std::move(lost)};
}

// An open that ends at an image: the state vectors, the directory, and the images before it.
Expectation unfinished_at_image(const std::string& variant, int image, Reports printed,
                                const Losses& more = {}) {
  Losses lost = sum(lost_by_unfinished(variant, true), {{"block", arrays(variant) + 1}});
  lost = sum(lost, is_complex(variant)
                       ? Losses{{"stream", image}}
                       : Losses{{"layer", image}, {"list", image}, {"entry", 3 * image}});
  return unfinished(std::move(printed), sum(lost, more));
}

Expectation without_memory_in_open(const std::string& variant, int nth) {
  // What recognition asks for comes first.
  const int vectors = nth - open_allocation::line_of_recognition;
  if (vectors > arrays(variant)) {
    return unfinished({{open_word, "No memory for the product's directory", gke_SeverityError}},
                      sum(lost_by_unfinished(variant, true), {{"block", arrays(variant)}}));
  }
  return unfinished({{open_word, "tsx_GenericSARRead failed", gke_SeverityError},
                     {"tsx_GenericSARRead", "No memory for the state vectors", gke_SeverityError}},
                    sum(lost_by_unfinished(variant, true), {{"block", vectors - 1}}));
}

Expectation unformatted_in_open(const std::string& variant, int nth, const Expectation& whole) {
  const PrintedReport made = made_to_fail("gks_Sprintf");
  if (nth == open_text::counter) return {whole.outcome, {made}, sum(whole.lost, {{"text", -1}})};
  if (is_complex(variant)) {
    return unfinished_at_image(variant, nth - open_text::first_image,
                               {{open_word, "gkf_fopen failed", gke_SeverityError}, made});
  }
  return unfinished_at_image(variant, nth - open_text::first_image,
                             {{open_word, "gkl_LayerGetNames failed", gke_SeverityError},
                              {"gkl_LayerGetNames", "no path", gke_SeverityError},
                              made});
}

// Failures after recognition, in an open that builds a record.
Expectation failing_open(const std::string& variant, const std::string& operation, int nth,
                         const Expectation& whole) {
  if (operation == record_allocation) {
    return {"none, title 0",
            {{open_word, "No memory for TsxFile structure", gke_SeverityError}},
            sum(counter_text, {{"file", 1}})};
  }
  if (operation == "gkm_HeapMalloc") return without_memory_in_open(variant, nth);
  if (operation == "gks_Sprintf") return unformatted_in_open(variant, nth, whole);
  if (operation == "gks_Duplicate") {
    // The map projection's name is missed by nobody.
    if (nth == open_copy::map_projection) {
      return {whole.outcome, {}, sum(whole.lost, {{"text", -1}})};
    }
    return unfinished({{open_word, "No memory for the product's path", gke_SeverityError}},
                      sum(lost_by_unfinished(variant, false), {{"text", -1}}));
  }
  // The version text that is not found; what is sought and missing anyway changes nothing.
  if (operation == "gks_SubString" && nth == 3) {
    return unfinished({{open_word, "Wrong XML schema file detected", gke_SeverityError}},
                      lost_by_unfinished(variant, false));
  }
  if (operation == "rmdl_modelEphemeris") {
    return unfinished({{open_word, "tsx_GenericSARRead failed", gke_SeverityError},
                       {"tsx_GenericSARRead", "rmdl_modelEphemeris failed", gke_SeverityError},
                       made_to_fail(operation)},
                      sum(lost_by_unfinished(variant, true), {{"block", arrays(variant)}}));
  }
  if (operation == "gkf_fopen") {
    return unfinished_at_image(variant, nth - 1,
                               {{open_word, "gkf_fopen failed", gke_SeverityError}});
  }
  if (operation == "gki_GetInit") {
    return unfinished_at_image(variant, nth - 1,
                               {{open_word, "gkl_LayerGetNames failed", gke_SeverityError},
                                {"gkl_LayerGetNames", "no token", gke_SeverityError},
                                made_to_fail(operation)});
  }
  if (operation == "gkl_LayerGetNames") {
    return unfinished_at_image(variant, nth - 1,
                               over(open_word, "gkl_LayerGetNames failed", operation));
  }
  if (operation == "gkl_LayerOpen") {
    return unfinished_at_image(variant, nth - 1, over(open_word, "gkl_LayerOpen failed", operation),
                               {{"list", 1}, {"entry", 3}});
  }
  if (operation == "pool_AddFileHandleToList") {
    Losses lost = sum(lost_by_unfinished(variant, true), {{"block", arrays(variant)}});
    lost = sum(lost, is_complex(variant)
                         ? Losses{{"stream", images}}
                         : Losses{{"layer", images}, {"list", images}, {"entry", 3 * images}});
    return unfinished({{open_word, "pool_AddFileHandleToList failed", gke_SeverityError}}, lost);
  }
  if (operation == "pool_FindFileHandleIfOpen" || operation == "gks_SubString") return whole;
  untold();
}

// All three roads through tsxFileTitleIdentifyAndOpen begin alike.
Expectation failing_recognition(const std::string& variant, const std::string& step,
                                const std::string& operation, int nth) {
  const Expectation whole = whole_step(variant, step);
  if (operation == "gkf_FileExists" || operation == "gkf_Fgets" ||
      (operation == "gkf_Open" && nth == 1) || (operation == "gks_SubString" && nth <= 2) ||
      (operation == "gkm_HeapMalloc" && nth == open_allocation::line_of_recognition) ||
      (operation == "gks_Sprintf" && nth == open_text::path_of_recognition)) {
    return {"none, title -1", {}, {}};
  }
  if (operation == "gkf_Open") {
    return {"none, title 0", over(open_word, "gkf_Open failed", operation), {}};
  }
  if (operation == "gkf_Close" && nth == 1) {
    return {whole.outcome, over("tsx_FileIdentify", "gkf_Close failed", operation, 0),
            sum(whole.lost, {{"file", 1}})};
  }
  if (step == "open") return failing_open(variant, operation, nth, whole);
  // The close after an identification is tried again.
  if (operation == "gkf_Close") {
    return {whole.outcome, over(open_word, "gkf_Close failed", operation), whole.lost};
  }
  if (operation == "gks_Sprintf") {
    return {whole.outcome, {made_to_fail(operation)}, sum(whole.lost, {{"text", -1}})};
  }
  if (operation == "pool_FindFileHandleIfOpen" && step == "open again") {
    // A second record, which the host closes for itself.
    return {"another, title 0", {}, sum(lost_by_whole_open(variant), counter_text)};
  }
  if (operation == "pool_FindFileHandleIfOpen" || operation == "gks_SubString") return whole;
  untold();
}

// --- Descriptors, names and data -----------------------------------------------------------------

Expectation failing_descriptor(const std::string& step, const std::string& operation, int nth) {
  if (step == "supported") {
    // By the name alone, UTM is supported.
    if (operation == "gkj_MapProjectionCSRGet") return {"1", {}, {}};
    return {"1",
            over("tsxInstanceMapProjectionIsSupported", "gkj_ProjectionConvertFromMIF failed",
                 operation),
            {}};
  }
  // Two lists are handed out whatever happens.
  if (step == "pixel types" || step == "layer types") {
    if (operation == "gkm_HeapMalloc") return {"none", {}, {}};
    if (step == "layer types") return {"(null)", {}, {}};
    return {nth == 1 ? "(null) s16" : "u16 (null)", {}, {}};
  }
  return {"-1", {}, {}};
}

Expectation failing_names(const Expectation& whole, const std::string& operation) {
  const char* const word = "tsxFileLayerNamesGet";
  if (operation == "gks_StringListDelete") {
    return {whole.outcome, over(word, "gks_StringListDelete failed", operation, 0), {{"list", 1}}};
  }
  const bool is_append = operation == "gks_StringListAppend";
  return {"-1",
          over(word, is_append ? "gks_StringListAppend failed" : "tsx_FileLayerNamesGet failed",
               operation),
          {}};
}

Expectation failing_data_names(const std::string& operation) {
  const char* const word = "tsxFileRasterFormatsNonStandardDataNamesGet";
  if (operation == "gks_Sprintf") return {"-1", over(word, "gks_Sprintf failed.", operation), {}};
  return {"-1", {{word, "No memory for the list of names", gke_SeverityError}}, {}};
}

// The design of the sensor model is destroyed, that of the calibration factor is left behind.
Expectation failing_data(const Expectation& whole, const std::string& step,
                         const std::string& operation, int nth) {
  if (operation == "gks_Eqnic") {
    // The factor's name is compared with the model's first, which it is not in any case.
    if (step == "factor" && nth == 1) return whole;
    return {"0", {}, {}};
  }
  if (operation == "gkd_DictionaryCreate") {
    return {"-1", over("tsxFileDataRead", "dictionary create failed", operation), {}};
  }
  const auto at = [&](const char* outcome, const char* message) {
    return Expectation{outcome,
                       {{"tsxFileDataRead", "Creating MIF Node failed.", gke_SeverityError},
                        {"tsx_CreateMIFNode", message, gke_SeverityError},
                        made_to_fail(operation)},
                       whole.lost};
  };
  if (operation == "gkd_DesignCreate") {
    Expectation expected = at("-1", "dictionary add failed");
    expected.printed.back() = {"gkd_DictionaryAddDesign", "no design", gke_SeverityError};
    expected.lost = {};
    return expected;
  }
  if (operation == "gkm_HeapMalloc") {
    Expectation expected = at("-1 dictionary type", "No Memory in vexcel_slc_CreateMIFNode");
    expected.printed.pop_back();
    return expected;
  }
  if (operation == "gkd_DictionaryAddDesign") return at("-1", "dictionary add failed");
  if (operation == "gkd_DictionaryEncodeToString") {
    return at("-1", "gkd_DictionaryEncodeToString failed");
  }
  if (operation == "gkd_ObjectSize") return at("-1 dictionary", "gkd_ObjectSize failed");
  if (operation == "gks_Sprintf") return at("-1 dictionary", "gks_Sprintf failed");
  if (operation == "gkd_ConvertToMIF") {
    return at("-1 data dictionary type", "failing in gkd_ConvertToMIF");
  }
  untold();
}

// --- Layers --------------------------------------------------------------------------------------

Expectation failing_layer_open(const Expectation& whole, const std::string& operation) {
  const char* const word = "tsxLayerOpen";
  if (operation == "gkm_HeapMalloc")
    return {"none", {{word, "No memory in layeropen", gke_SeverityError}}, {}};
  if (operation == "gks_REComp" || operation == "gks_REExec") {
    return {"none", {{word, "tsx_LayerCheck failed", gke_SeverityError}}, {}};
  }
  // The preference and the counter's text are told of and change nothing.
  Expectation expected = {whole.outcome, {made_to_fail(operation)}, whole.lost};
  if (operation == "gks_Sprintf") expected.lost = {};
  return expected;
}

Expectation failing_read(const std::string& variant, const Expectation& whole,
                         const std::string& step, const std::string& operation) {
  const char* const word = "tsxLayerRasterRead";
  const char* const no_memory = "No memory for block buffers";
  if (is_complex(variant)) {
    const PrintedReport outer{word, "tsx_ReadLineComplex failed", gke_SeverityError};
    // Nothing of the line and no end of the file: nothing is converted.
    if (operation == "gkf_fread") return {"0", {}, {}};
    // One item of the sixth line, 5 x 8 samples from the start: 40 pixels of 64.
    if (operation == "gkf_feof" && step == "second read") return {"0 some pixels", {}, {}};
    if (operation == "gkm_HeapMalloc") {
      return {"-1", {outer, {"tsx_ReadLineComplex", no_memory, gke_SeverityError}}, {}};
    }
    if (operation == "gkf_fseeko") {
      return {"-1", {outer, {"tsx_ReadLineComplex", "gkf_fseeko failed", gke_SeverityError}}, {}};
    }
    untold();
  }
  if (operation == "gkm_HeapMalloc") return {"-1", {{word, no_memory, gke_SeverityError}}, {}};
  if (operation == "gkl_PixelRectCreate") {
    return {"-1", over(word, "gkl_PixelRectCreate failed", operation), {}};
  }
  if (operation == "gkl_LayerRead") {
    return {"-1",
            over(word, "gkl_LayerRead failed", operation),
            {{"rectangle", 1}, {"pixels", 1}, {"block", 1}}};
  }
  if (operation == "gkl_PixelRectDelete") return {whole.outcome, {made_to_fail(operation)}, {}};
  untold();
}

Expectation failing_map(const Expectation& whole, const std::string& step,
                        const std::string& operation, int nth) {
  const bool is_info = step.ends_with("map");
  if (is_info && operation == "gkl_MapInfoRead") {
    return {
        "-1 (null) (null)", over("tsxLayerMapInfoRead", "gkl_MapInfoRead failed", operation), {}};
  }
  if (is_info) {
    return {nth == 1 ? "-1 (null) metre" : "-1 UTM (null)",
            {{"tsxLayerMapInfoRead", "No memory for the map information", gke_SeverityError}},
            {}};
  }
  // The name is the conversion's where it succeeds.
  if (operation == "gks_Duplicate") return whole;
  // The reports are neither printed nor deleted.
  if (operation == "gkl_MapInfoRead") return {whole.outcome, {}, {{"report", 1}}};
  const bool is_read = operation == "gkl_LayerMapProjectionRead";
  return {is_read ? "-1 (null)" : "-1 UTM", {}, {{"report", 2}}};
}

// --- Close ---------------------------------------------------------------------------------------

// A release that fails ends at once, its report neither printed nor deleted.
Expectation failing_close(const std::string& variant, const std::string& operation, int nth) {
  if (operation == "gks_Sprintf") return {"0", {}, {}};
  Losses lost = sum(counter_text, {{"file", 1}, {"record", 3}, {"block", arrays(variant)}});
  if (operation == "gkf_Close") return {"0", {}, sum(lost, {{"report", 2}})};
  // The record's own list of layer names: an array and its texts.
  lost = sum(lost, {{"document", 1}, {"list", 1}, {"entry", 1 + layers(variant)}});
  if (operation == "gks_StringListDelete") return {"0", {}, sum(lost, {{"report", 2}})};
  const int open_images = images - (nth - 1);
  if (operation == "gkf_fclose") {
    return {"0", {}, sum(lost, {{"report", 1}, {"stream", open_images}})};
  }
  if (operation == "gkl_LayerClose") {
    return {"0", {}, sum(lost, {{"report", 2}, {"layer", open_images}})};
  }
  untold();
}

}  // namespace

Expectation whole_step(const std::string& variant, const std::string& step) {
  const std::map<std::string, Expectation> descriptors = {
      {"description", {"Raster DLL", {}, {}}},    {"titles", {"TerraSAR-X", {}, {}}},
      {"templates", {"TSX1*.xml", {}, {}}},       {"extensions", {".xml", {}, {}}},
      {"short names", {"xml", {}, {}}},           {"pixel types", {"u16 s16", {}, {}}},
      {"layer types", {"athematic", {}, {}}},     {"supported", {"0", {}, {}}},
      {"identify", {"title 0", {}, counter_text}}};
  const auto descriptor = descriptors.find(step);
  if (descriptor != descriptors.end()) return descriptor->second;
  if (step == "open") return {"record, title 0", {}, lost_by_whole_open(variant)};
  if (step == "open again") {
    return {"the same, title 0", {}, sum(counter_text, {{"file", 1}})};
  }
  if (step == "names" && is_complex(variant)) {
    return {"X_HH_MAGNITUDE_1 X_HH_PHASE_2 X_VV_MAGNITUDE_3 X_VV_PHASE_4", {}, {}};
  }
  if (step == "names") return {"X_HH_MAGNITUDE_1 X_VV_MAGNITUDE_2", {}, {}};
  if (step == "data names") {
    return {is_mapped(variant) ? ":TSX_Beta0" : ":RADAR_Generic_v2.2 :TSX_Beta0", {}, {}};
  }
  if (step == "model") return {"0 data dictionary type", {}, {}};
  if (step == "factor") return {"0 data dictionary type", {}, {{"design", 1}}};
  if (step.ends_with("open")) return {"layer", {}, counter_text};
  if (step == "second read" && is_complex(variant)) return {"0 no data", {}, {}};
  if (step.ends_with("read")) return {"0 pixels", {}, {}};
  if (step.ends_with("map"))
    return {is_mapped(variant) ? "0 UTM metre" : "0 (null) (null)", {}, {}};
  if (step.ends_with("projection")) {
    return {is_mapped(variant) ? "0 UTM of the projection 2 3 4 5 6 7 8 9" : "0 (null)", {}, {}};
  }
  if (step.ends_with("close")) return {"0", {}, counter_text};
  throw std::out_of_range("no step " + step);
}

Expectation failing_step(const std::string& variant, const std::string& step,
                         const std::string& operation, int nth) {
  const Expectation whole = whole_step(variant, step);
  if (step == "identify") {
    Expectation expected = failing_recognition(variant, step, operation, nth);
    // No record is asked for.
    if (expected.outcome.starts_with("none, ")) expected.outcome.erase(0, 6);
    return expected;
  }
  if (step == "open" || step == "open again") {
    return failing_recognition(variant, step, operation, nth);
  }
  if (step == "names") return failing_names(whole, operation);
  if (step == "data names") return failing_data_names(operation);
  if (step == "model" || step == "factor") return failing_data(whole, step, operation, nth);
  if (step == "close") return failing_close(variant, operation, nth);
  if (step.ends_with("open")) return failing_layer_open(whole, operation);
  if (step.ends_with("read")) return failing_read(variant, whole, step, operation);
  if (step.ends_with("map") || step.ends_with("projection")) {
    return failing_map(whole, step, operation, nth);
  }
  // The text of the counter; no slot is given, so nothing is told.
  if (step.ends_with("close")) return {"0", {}, {}};
  return failing_descriptor(step, operation, nth);
}
