#pragma once

#include "tools/simulate/annotation_common.h"

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
  header.set_mission("TSX-1");
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

template <class Components>
void fill_product_components(const AnnotationSource& source, Components& components) {
  components.append_annotation();
  components.back_annotation().set_type("MAIN");
  fill_file(".", source.name + ".xml", -1, components.back_annotation().get_file());
  if (source.has_optional()) {
    components.append_annotation();
    components.back_annotation().set_type("GEOREF");
    fill_file("ANNOTATION", "GEOREF.xml", 1048576, components.back_annotation().get_file());
  }
  const auto& layers = source.options().polarisations;
  for (std::size_t i = 0; i < layers.size(); ++i) {
    components.append_imageData();
    auto& image = components.back_imageData();
    image.set_layerIndex(static_cast<std::uint32_t>(i + 1));
    image.set_polLayer(layers[i]);
    if (source.has_all()) {
      image.set_beamID(source.beam());
      image.append_DRAoffset("SRA");
    }
    fill_file("IMAGEDATA", source.image_files[i], static_cast<std::int64_t>(source.image_bytes[i]),
              image.get_file());
  }
  if (source.has_all()) {
    components.append_auxRasterFiles();
    components.back_auxRasterFiles().set_type("LIA");
    fill_file("AUXRASTER", "stdcloud.tif", 524288, components.back_auxRasterFiles().get_file());
  }
  for (std::size_t i = 0; i < layers.size(); ++i) {
    components.append_quicklooks();
    auto& quicklook = components.back_quicklooks();
    quicklook.set_layerIndex(static_cast<std::uint32_t>(i + 1));
    quicklook.set_polLayer(layers[i]);
    if (source.has_all()) {
      quicklook.set_beamID(source.beam());
      quicklook.append_DRAoffset("SRA");
    }
    fill_file("PREVIEW", "QL_" + layers[i] + ".tif", 65536, quicklook.get_file());
  }
  fill_file("PREVIEW", "COMPOSITE_QL.tif", 65536, components.get_compositeQuicklook().get_file());
  fill_file("PREVIEW", "BROWSE.tif", 32768, components.get_browseImage().get_file());
  fill_file("PREVIEW", "MAP_PLOT.png", 16384, components.get_mapPlot().get_file());
}

}  // namespace simulate
