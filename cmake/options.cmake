# Compiler settings that every target of the project shares, as one interface target.

option(TSX_FUZZ "Build the fuzz targets with libFuzzer; needs clang" OFF)
option(TSX_COVERAGE "Count the lines and branches that the tests reach; needs g++" OFF)
set(TSX_SANITIZE "" CACHE STRING
  "Sanitizers: address (with undefined behaviour), thread, or none where empty")
set_property(CACHE TSX_SANITIZE PROPERTY STRINGS "" address thread)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(tsx_options INTERFACE)
target_compile_features(tsx_options INTERFACE cxx_std_20)
target_compile_options(tsx_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror
  # Magnitude and phase must come out bit for bit as told: no fused multiply-add.
  -ffp-contract=off)
# g++ 12 sees overlapping copies in plain string concatenation that are not there.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tsx_options INTERFACE -Wno-restrict)
endif()
target_include_directories(tsx_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/platform)

# What makes a flaw harder to use; tests/hardening_test.py reads the results from the binaries. The
# sanitizers bring checks of their own and do not go with fortified calls.
if(NOT TSX_SANITIZE AND NOT TSX_COVERAGE)
  include(CheckCXXCompilerFlag)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "TSX_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(tsx_options INTERFACE ${flag})
    endif()
  endforeach()
  # Only where the compiler optimises, as the checks need it. Some distributions define it
  # themselves, so theirs goes first.
  target_compile_options(tsx_options INTERFACE
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
# All symbols are bound at start, and then the tables are read-only. Which definition is taken stays as
# it was: a program's own comes before the toolkit's.
target_link_options(tsx_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(TSX_COVERAGE)
  # Atomic, as some tests run threads.
  target_compile_options(tsx_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(tsx_options INTERFACE --coverage)
endif()

if(TSX_SANITIZE STREQUAL "thread")
  target_compile_options(tsx_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer -O1)
  target_link_options(tsx_options INTERFACE -fsanitize=thread)
elseif(TSX_SANITIZE STREQUAL "address")
  target_compile_options(tsx_options INTERFACE -fsanitize=address,undefined
    -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
  target_link_options(tsx_options INTERFACE -fsanitize=address,undefined)
  if(TSX_FUZZ)
    target_compile_options(tsx_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(tsx_options INTERFACE -fsanitize=fuzzer-no-link)
  endif()
  # Under these g++ 12 takes the insides of std::regex for uninitialised.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(tsx_options INTERFACE -Wno-maybe-uninitialized)
  endif()
elseif(TSX_SANITIZE)
  message(FATAL_ERROR "TSX_SANITIZE is \"${TSX_SANITIZE}\"; it must be address, thread or empty")
endif()

# One object library per folder: the shared library and the tests are made from the same objects,
# so nothing is exported for a test's sake.
function(tsx_add_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_link_libraries(${name} PUBLIC tsx_options)
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# A test executable whose cases ctest lists one by one. LOSES marks tests that bring about losses on
# purpose, by the hundred and through stand-ins, so that no leak check can tell them apart.
#   tsx_add_test(NAME [LOSES] LIBRARIES ... SOURCES ...)
function(tsx_add_test name)
  cmake_parse_arguments(ARG "LOSES" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tsx_options ${ARG_LIBRARIES} GTest::gtest GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
  if(TSX_SANITIZE)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/sanitizer_defaults.cpp)
  endif()
  set(environment "")
  if(ARG_LOSES)
    set(environment ENVIRONMENT ASAN_OPTIONS=detect_leaks=0)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300 ${environment})
endfunction()
