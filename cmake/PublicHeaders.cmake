cmake_policy(VERSION 3.25)

# The public headers: rastrel/rastrel.h and every header of the library that it reaches.

# Sets `result` to their paths below `root`.
function(rastrel_find_public_headers root result)
  set(waiting rastrel/rastrel.h)
  set(found)
  while(waiting)
    list(POP_FRONT waiting header)
    if(header IN_LIST found)
      continue()
    endif()
    list(APPEND found ${header})
    file(STRINGS ${root}/${header} includes REGEX "^#include \"rastrel/")
    foreach(include IN LISTS includes)
      string(REGEX REPLACE "^#include \"([^\"]*)\".*" "\\1" include "${include}")
      list(APPEND waiting ${include})
    endforeach()
  endwhile()
  list(SORT found)
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# Installs them in their folders below `destination`. For an install script.
function(rastrel_install_public_headers root destination)
  rastrel_find_public_headers("${root}" headers)
  foreach(header IN LISTS headers)
    get_filename_component(folder ${header} DIRECTORY)
    file(INSTALL DESTINATION "${CMAKE_INSTALL_PREFIX}/${destination}/${folder}" TYPE FILE
      FILES "${root}/${header}")
  endforeach()
  rastrel_install_moved_headers("${root}" "${destination}")
  # The install script's own scope has the list that becomes the manifest.
  set(CMAKE_INSTALL_MANIFEST_FILES "${CMAKE_INSTALL_MANIFEST_FILES}" PARENT_SCOPE)
endfunction()

# Puts a header of one line where each line of packaging/moved-headers.txt says that one was.
function(rastrel_install_moved_headers root destination)
  file(STRINGS ${root}/packaging/moved-headers.txt lines REGEX "^rastrel/")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^([^ ]+) +([^ ]+)$" line "${line}")
    set(path "${CMAKE_INSTALL_PREFIX}/${destination}/${CMAKE_MATCH_1}")
    file(WRITE "$ENV{DESTDIR}${path}" "#include \"${CMAKE_MATCH_2}\"  // moved there\n")
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${path}")
  endforeach()
  set(CMAKE_INSTALL_MANIFEST_FILES "${CMAKE_INSTALL_MANIFEST_FILES}" PARENT_SCOPE)
endfunction()
