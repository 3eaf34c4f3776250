# The Debian packages, one for each part that cmake/install.cmake names. scripts/package makes them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/package)
set(CPACK_COMPONENTS_ALL library development plugin annotation tools)
if(TSX_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(TSX_GDAL_DRIVER)
  list(APPEND CPACK_COMPONENTS_ALL gdal)
endif()
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian_tree.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "tsx developers")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# What is needed of the system, as the linker tells it. What is needed of the packages themselves is
# told below: their libraries are of one build, so their versions are the same.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# The linker tells only which functions of expat are called, which very old ones have too.
set(CPACK_TSX_OLDEST_EXPAT ${TSX_OLDEST_EXPAT})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libgridkit${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# Packages of others that link the library learn from this which package they need.
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs
  "libgridkit ${PROJECT_VERSION_MAJOR} libgridkit${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/shlibs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "host for raster-format plug-ins
Opens raster products through format plug-ins, for programs of any kind.
Plug-ins call it for memory, files, reports, GeoTIFF layers and map
projections; programs call it to read layers, map data and sensor models.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libgridkit-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "host for raster-format plug-ins, for development
Headers, CMake and pkg-config files, and two examples: a plug-in for a
format of your own, and a program that opens products.")

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME gridkit-tsx)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_SECTION science)
set(CPACK_COMPONENT_PLUGIN_DEPENDS library)
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION "TerraSAR-X products for gridkit
Opens Level 1B products: complex images as magnitude and phase, detected
ones with their map data, and the sensor model and calibration beside them.")

set(CPACK_DEBIAN_ANNOTATION_PACKAGE_NAME gridkit-tsx-dev)
set(CPACK_DEBIAN_ANNOTATION_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_ANNOTATION_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_ANNOTATION_DEPENDS plugin)
set(CPACK_COMPONENT_ANNOTATION_DESCRIPTION "annotations of TerraSAR-X products as C++ classes
Headers, a CMake package and an example for programs that read, change and
write annotations with the classes of the plug-in.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME gridkit-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS gridkit-tsx)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "jq, parallel, slurm-client")
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command line for raster products
The program gridkit shows and reads products through format plug-ins;
tsx-annotation checks annotations of TerraSAR-X products, and tsx-simulate
makes products to try things on.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-gridkit)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), python3-cffi-backend, python3-numpy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "gridkit-tsx, python3-xarray")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-dask)
set(CPACK_COMPONENT_PYTHON_DEPENDS library)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "raster products in Python
Opens products as arrays of numpy that are read when they are sliced, with
the places of their pixels, and as an engine of xarray.")

set(CPACK_DEBIAN_GDAL_PACKAGE_NAME gdal-plugin-gridkit)
set(CPACK_DEBIAN_GDAL_PACKAGE_SECTION science)
set(CPACK_DEBIAN_GDAL_PACKAGE_RECOMMENDS gridkit-tsx)
set(CPACK_COMPONENT_GDAL_DEPENDS library)
set(CPACK_COMPONENT_GDAL_DESCRIPTION "driver of GDAL's for products that gridkit opens
Shows images, what is measured of them and layers by names that begin with
GRIDKIT to every program that opens rasters through GDAL.")

include(CPack)
