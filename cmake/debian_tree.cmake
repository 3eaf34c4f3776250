# Run by cpack on each package's tree before it is packed: an installation in /usr of a Debian system
# differs from one elsewhere in a few places.

cmake_policy(SET CMP0011 NEW)
file(GLOB trees ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(tree IN LISTS trees)
  # The system's linker looks where these libraries are, so nothing need say it.
  file(GLOB programs ${tree}/usr/bin/* ${tree}/usr/lib/*/gridkit/*.so
    ${tree}/usr/lib/*/gridkit/companions/*.so ${tree}/usr/lib/python3/dist-packages/gridkit/*.so
    ${tree}/usr/lib/*/gdalplugins/*.so)
  foreach(program IN LISTS programs)
    file(RPATH_REMOVE FILE ${program})
  endforeach()

  # What dpkg-shlibdeps takes in place of expat's own word; cpack removes it with that folder.
  if(programs)
    file(WRITE ${tree}/debian/shlibs.local "libexpat 1 libexpat1 (>= ${CPACK_TSX_OLDEST_EXPAT})\n")
  endif()

  # A tree that stays where it is needs no path that moves with it.
  file(GLOB descriptions ${tree}/usr/lib/*/pkgconfig/*.pc)
  foreach(description IN LISTS descriptions)
    file(READ ${description} text)
    string(REGEX REPLACE "^prefix=[^\n]*" "prefix=/usr" text "${text}")
    file(WRITE ${description} "${text}")
  endforeach()

  # Manual pages are packed, and the same on every day.
  file(GLOB pages ${tree}/usr/share/man/man1/*.1)
  if(pages)
    execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
  endif()

  # Completions that come with packages have a folder of their own.
  if(EXISTS ${tree}/usr/share/zsh/site-functions)
    file(RENAME ${tree}/usr/share/zsh/site-functions ${tree}/usr/share/zsh/vendor-completions)
  endif()
endforeach()
