# The manual pages, from the same text as the pages of the site: docs/commands/NAME.md becomes NAME.1. The
# site itself is built by scripts/docs.
find_program(PANDOC pandoc)
if(NOT PANDOC)
  message(STATUS "pandoc is not there: no manual pages")
  return()
endif()

file(GLOB command_pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/commands/*.md)
set(manual_pages)
foreach(source IN LISTS command_pages)
  cmake_path(GET source STEM name)
  set(page ${PROJECT_BINARY_DIR}/man/${name}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${PANDOC} --standalone --from markdown-smart --to man --lua-filter ${PROJECT_SOURCE_DIR}/scripts/documents/man.lua
      --metadata "footer=tsx ${PROJECT_VERSION}" --output ${page} ${source}
    DEPENDS ${source} ${PROJECT_SOURCE_DIR}/scripts/documents/man.lua
    COMMENT "Manual page ${name}.1" VERBATIM)
  list(APPEND manual_pages ${page})
endforeach()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
add_custom_target(docs ALL DEPENDS ${manual_pages})
install(FILES ${manual_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
