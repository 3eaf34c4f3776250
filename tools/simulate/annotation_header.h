#pragma once

#include "tools/simulate/annotation_common.h"
#include "tools/simulate/auxiliary_files.h"

// The branches generalHeader and productComponents.

namespace simulate {

template <class Header>
void fill_general_header(const AnnotationSource& source, Header& header) {
  // Lines 2 to 7 of the file: recognition counts on them.
  header.set_fileName(source.name + ".xml");
  if (source.has_optional()) {
    header.set_fileVersion("1.0");
    header.set_status("PRELIMINARY");
  }
  header.set_itemName("Level 1B Product");
  header.set_mission(source.options().satellite);
  header.set_source("GS");
  header.set_destination("User");
  header.get_generationSystem().set_version(source.options().version_text);
  header.get_generationSystem().set_generationSystem("tsx-simulate");
  header.set_generationTime(date_time(source.generated, false));
  if (!source.has_optional()) return;
  header.set_referenceDocument("Simulated Level 1B product");
  header.set_revision("SIM_01");
  header.set_revisionComment("");
  header.set_remark(source.has_all() ? "synthetic scene & targets" : "");
}

// A file that the product holds, by its folder and name there.
template <class File>
void fill_product_file(const AnnotationSource& source, const std::string& folder,
                       const std::string& name, File& file) {
  const auto found = source.file_bytes.find(folder + '/' + name);
  const std::uint64_t bytes = found == source.file_bytes.end() ? 0 : found->second;
  fill_file(folder, name, static_cast<std::int64_t>(bytes), file);
}

template <class Entry>
void fill_layer_file(const AnnotationSource& source, std::size_t layer, const std::string& folder,
                     const std::string& name, Entry& entry) {
  entry.set_layerIndex(static_cast<std::uint32_t>(layer + 1));
  entry.set_polLayer(source.options().polarisations[layer]);
  if (source.has_all()) {
    entry.set_beamID(source.beam());
    entry.append_DRAoffset("SRA");
  }
  fill_product_file(source, folder, name, entry.get_file());
}

template <class Components>
void fill_product_components(const AnnotationSource& source, Components& components) {
  components.append_annotation();
  components.back_annotation().set_type("MAIN");
  fill_file(".", source.name + ".xml", -1, components.back_annotation().get_file());
  if (source.has_optional()) {
    components.append_annotation();
    components.back_annotation().set_type("GEOREF");
    fill_product_file(source, "ANNOTATION", "GEOREF.xml", components.back_annotation().get_file());
  }
  const auto& layers = source.options().polarisations;
  for (std::size_t i = 0; i < layers.size(); ++i) {
    components.append_imageData();
    fill_layer_file(source, i, "IMAGEDATA", source.image_name(layers[i]),
                    components.back_imageData());
  }
  if (source.has_all() || (source.has_optional() && !source.scene.is_complex())) {
    components.append_auxRasterFiles();
    components.back_auxRasterFiles().set_type("MAPPING_GRID");
    fill_product_file(source, "AUXRASTER", "MAPPING_GRID.bin",
                      components.back_auxRasterFiles().get_file());
  }
  for (std::size_t i = 0; i < layers.size(); ++i) {
    components.append_quicklooks();
    fill_layer_file(source, i, "PREVIEW", quicklook_name(layers[i], source.beam()),
                    components.back_quicklooks());
  }
  fill_product_file(source, "PREVIEW", "COMPOSITE_QL.tif",
                    components.get_compositeQuicklook().get_file());
  fill_product_file(source, "PREVIEW", "BROWSE.tif", components.get_browseImage().get_file());
  fill_product_file(source, "PREVIEW", "MAP_PLOT.png", components.get_mapPlot().get_file());
}

}  // namespace simulate
