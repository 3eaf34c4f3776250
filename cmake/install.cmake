# What `cmake --install` leaves, in the parts that the packages are: the library, what programs and
# plug-ins are built with, the plug-in, what programs for annotations are built with, the tools, and what
# bridges/ adds. The tree may be moved as a whole.

# Debian keeps libraries in a folder per architecture below every prefix that its linker searches.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Libraries, below the prefix")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(GRIDKIT_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/gridkit)
set(GRIDKIT_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/gridkit)
set(GRIDKIT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/gridkit)
set(ANNOTATION_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/tsx-annotation)
set(ANNOTATION_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tsx-annotation)
set(ANNOTATION_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/gridkit-tsx-dev)
set(GRIDKIT_EXAMPLES_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/libgridkit-dev/examples)

# The public headers. What plug-ins call is C; the API that drives plug-ins is C++.
set(public_headers
  debug/debug_channel.h
  gridkit/companion.h
  gridkit/dictionary.h
  gridkit/error.h
  gridkit/export.h
  gridkit/file.h
  gridkit/geolocation_grid.h
  gridkit/gridkit.h
  gridkit/image_radiometry.h
  gridkit/image_reader.h
  gridkit/indexed_png.h
  gridkit/info_json.h
  gridkit/instance.h
  gridkit/layer.h
  gridkit/layer_map.h
  gridkit/map_data.h
  gridkit/map_point.h
  gridkit/map_projection.h
  gridkit/map_wkt.h
  gridkit/memory.h
  gridkit/opener.h
  gridkit/os_error.h
  gridkit/partial_file.h
  gridkit/plugin.h
  gridkit/preference.h
  gridkit/product.h
  gridkit/product_facts.h
  gridkit/product_path.h
  gridkit/radiometry.h
  gridkit/raster_header.h
  gridkit/raster_writer.h
  gridkit/record_decoder.h
  gridkit/record_json.h
  gridkit/report.h
  gridkit/samples.h
  gridkit/shared_file.h
  gridkit/string_list.h
  gridkit/text.h
  gridkit/version.h
  gridkit/whole_file.h
  handlepool/handlepool.h
  rmdllib/ellipsoid.h
  rmdllib/incidence.h
  rmdllib/model_ephemeris.h
  rmdllib/orbit_track.h
  rmdllib/placement.h
  rmdllib/radar_generic_model.h
  rmdllib/radar_geometry.h
  rmdllib/range_doppler.h
  rmdllib/rational_model.h
  rmdllib/vector3.h)
foreach(header IN LISTS public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES platform/${header} DESTINATION ${GRIDKIT_INCLUDE_DIR}/${folder} COMPONENT development)
endforeach()
target_compile_features(gridkit INTERFACE cxx_std_20)

# The annotation classes, which the plug-in exports, and what their headers need.
set(annotation_headers
  binding/assertion.h
  binding/choice.h
  binding/description.h
  binding/level1bProductBase.h
  binding/storage.h
  binding/value_set.h
  platform/lmx/datetime.h
  platform/lmx/diagnostic.h
  platform/lmx/error.h
  platform/lmx/event.h
  platform/lmx/export.h
  platform/lmx/namespace_scope.h
  platform/lmx/reader.h
  platform/lmx/writer.h
  schema/class_parts.h
  schema/product_view.h)
foreach(header IN LISTS annotation_headers)
  cmake_path(GET header PARENT_PATH folder)
  string(REPLACE "platform/" "" folder ${folder})
  install(FILES ${header} DESTINATION ${ANNOTATION_INCLUDE_DIR}/${folder} COMPONENT annotation)
endforeach()
install(DIRECTORY ${PROJECT_BINARY_DIR}/schema/ DESTINATION ${ANNOTATION_INCLUDE_DIR} COMPONENT annotation
  FILES_MATCHING PATTERN *.h PATTERN *.inc PATTERN CMakeFiles EXCLUDE)
configure_package_config_file(cmake/tsx-annotation-config.cmake.in
  ${PROJECT_BINARY_DIR}/tsx-annotation-config.cmake INSTALL_DESTINATION ${ANNOTATION_CMAKE_DIR}
  PATH_VARS GRIDKIT_PLUGIN_DIR ANNOTATION_INCLUDE_DIR NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tsx-annotation-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tsx-annotation-config.cmake
  ${PROJECT_BINARY_DIR}/tsx-annotation-config-version.cmake
  DESTINATION ${ANNOTATION_CMAKE_DIR} COMPONENT annotation)
install(DIRECTORY examples/annotation DESTINATION ${ANNOTATION_DOC_DIR}/examples COMPONENT annotation)

# Programs find the library, and the plug-in finds its host, from where they lie themselves.
file(RELATIVE_PATH libraries_from_programs
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(gridkit-tool tsx-simulate PROPERTIES
  INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
set_target_properties(tsx PROPERTIES INSTALL_RPATH "$ORIGIN/..")
set_target_properties(tsx-companion PROPERTIES INSTALL_RPATH "$ORIGIN/../..")

install(TARGETS gridkit EXPORT gridkit
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${GRIDKIT_INCLUDE_DIR})
install(TARGETS tsx LIBRARY DESTINATION ${GRIDKIT_PLUGIN_DIR} COMPONENT plugin)
install(TARGETS tsx-companion LIBRARY DESTINATION ${GRIDKIT_PLUGIN_DIR}/companions COMPONENT plugin)
install(TARGETS gridkit-tool tsx-annotation tsx-simulate
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)

install(EXPORT gridkit NAMESPACE gridkit:: FILE gridkit-targets.cmake
  DESTINATION ${GRIDKIT_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/gridkit-config.cmake.in ${PROJECT_BINARY_DIR}/gridkit-config.cmake
  INSTALL_DESTINATION ${GRIDKIT_CMAKE_DIR} PATH_VARS GRIDKIT_PLUGIN_DIR NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# Before 1.0 a minor version may break what was built with the one before.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/gridkit-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/gridkit-config.cmake ${PROJECT_BINARY_DIR}/gridkit-config-version.cmake
  DESTINATION ${GRIDKIT_CMAKE_DIR} COMPONENT development)

file(RELATIVE_PATH prefix_from_pkgconfig
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/gridkit.pc.in ${PROJECT_BINARY_DIR}/gridkit.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/gridkit.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
configure_file(cmake/tsx-annotation.pc.in ${PROJECT_BINARY_DIR}/tsx-annotation.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tsx-annotation.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT annotation)

install(DIRECTORY examples/ DESTINATION ${GRIDKIT_EXAMPLES_DIR} COMPONENT development
  PATTERN pipelines EXCLUDE PATTERN annotation EXCLUDE PATTERN python EXCLUDE)
install(DIRECTORY examples/pipelines USE_SOURCE_PERMISSIONS
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/gridkit-tools/examples COMPONENT tools)
install(DIRECTORY json DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/gridkit/schemas COMPONENT tools)
# bash looks for a file named like the program; one serves all three.
foreach(program gridkit tsx-annotation tsx-simulate)
  install(FILES completions/gridkit.bash
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions RENAME ${program} COMPONENT tools)
endforeach()
install(FILES completions/_gridkit
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/site-functions COMPONENT tools)

# Debian wants the licence told beside each package's documents.
foreach(part IN ITEMS library:libgridkit${PROJECT_VERSION_MAJOR} development:libgridkit-dev
    plugin:gridkit-tsx annotation:gridkit-tsx-dev tools:gridkit-tools python:python3-gridkit
    gdal:gdal-plugin-gridkit)
  string(REGEX MATCH "(.*):(.*)" ignored ${part})
  install(FILES LICENSE RENAME copyright
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CMAKE_MATCH_2} COMPONENT ${CMAKE_MATCH_1})
endforeach()
