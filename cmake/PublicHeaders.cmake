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
endfunction()
