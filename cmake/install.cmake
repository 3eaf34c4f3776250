# What `cmake --install` leaves, in the four parts that the packages are: the library, what programs and
# plug-ins are built with, the plug-in, and the tools. The tree may be moved as a whole.

# Debian keeps libraries in a folder per architecture below every prefix that its linker searches.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Libraries, below the prefix")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(GRIDKIT_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/gridkit)
set(GRIDKIT_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/gridkit)
set(GRIDKIT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/gridkit)
set(GRIDKIT_EXAMPLES_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/libgridkit-dev/examples)

# The public headers. What plug-ins call is C; the API that drives plug-ins is C++.
set(public_headers
  debug/debug_channel.h
  gridkit/dictionary.h
  gridkit/error.h
  gridkit/export.h
  gridkit/file.h
  gridkit/image_reader.h
  gridkit/indexed_png.h
  gridkit/instance.h
  gridkit/layer.h
  gridkit/map_data.h
  gridkit/map_point.h
  gridkit/map_projection.h
  gridkit/memory.h
  gridkit/os_error.h
  gridkit/partial_file.h
  gridkit/plugin.h
  gridkit/preference.h
  gridkit/product.h
  gridkit/raster_header.h
  gridkit/raster_writer.h
  gridkit/record_decoder.h
  gridkit/report.h
  gridkit/string_list.h
  gridkit/text.h
  gridkit/whole_file.h
  handlepool/handlepool.h
  rmdllib/ellipsoid.h
  rmdllib/model_ephemeris.h
  rmdllib/orbit_track.h
  rmdllib/radar_generic_model.h
  rmdllib/radar_geometry.h
  rmdllib/range_doppler.h
  rmdllib/vector3.h)
foreach(header IN LISTS public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES platform/${header} DESTINATION ${GRIDKIT_INCLUDE_DIR}/${folder} COMPONENT development)
endforeach()
target_compile_features(gridkit INTERFACE cxx_std_20)

# Programs find the library, and the plug-in finds its host, from where they lie themselves.
file(RELATIVE_PATH libraries_from_programs
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(gridkit-tool tsx-simulate PROPERTIES
  INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
set_target_properties(tsx PROPERTIES INSTALL_RPATH "$ORIGIN/..")

install(TARGETS gridkit EXPORT gridkit
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${GRIDKIT_INCLUDE_DIR})
install(TARGETS tsx LIBRARY DESTINATION ${GRIDKIT_PLUGIN_DIR} COMPONENT plugin)
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

install(DIRECTORY examples/ DESTINATION ${GRIDKIT_EXAMPLES_DIR} COMPONENT development
  PATTERN pipelines EXCLUDE)
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
    plugin:gridkit-tsx tools:gridkit-tools)
  string(REGEX MATCH "(.*):(.*)" ignored ${part})
  install(FILES LICENSE RENAME copyright
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CMAKE_MATCH_2} COMPONENT ${CMAKE_MATCH_1})
endforeach()
