cmake_policy(VERSION 3.25)

# Removes the files that a manifest of `cmake --install` lists, and the folders of this project that
# are empty then. A script:
#
#   cmake -DMANIFEST=BUILD/install_manifest.txt -DMARK=/include/rastrel/rastrel.h -P Uninstall.cmake
#
# MARK ends the line of the manifest that shows the prefix. A path that a link leads out of the
# prefix by now is left alone, and so is a folder in the place of a file: neither was installed.
# DESTDIR counts as it does for `cmake --install`.

if(NOT EXISTS "${MANIFEST}")
  message(FATAL_ERROR "Nothing was installed from this build tree: there is no ${MANIFEST}")
endif()
file(STRINGS "${MANIFEST}" paths ENCODING UTF-8)

# Sets `result` to the prefix that the files were installed into.
function(find_prefix result)
  foreach(path IN LISTS paths)
    if(path MATCHES "${MARK}$")
      string(LENGTH "${MARK}" length)
      string(LENGTH "${path}" whole)
      math(EXPR length "${whole} - ${length}")
      string(SUBSTRING "${path}" 0 ${length} prefix)
      set(${result} "$ENV{DESTDIR}${prefix}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "${MANIFEST} does not list *${MARK}, so that the prefix is not known")
endfunction()

# Sets `result` to whether the path's folder lies in the prefix, links followed.
function(is_inside path result)
  get_filename_component(folder "${path}" DIRECTORY)
  file(REAL_PATH "${folder}" folder)
  file(REAL_PATH "${prefix}" top)
  string(FIND "${folder}/" "${top}/" place)
  if(place EQUAL 0)
    set(${result} TRUE PARENT_SCOPE)
  else()
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

# rmdir takes no folder that holds anything, and no link.
function(remove_empty_folders path)
  get_filename_component(folder "${path}" DIRECTORY)
  while(folder MATCHES "/[Rr]astrel(/|$)" AND NOT folder STREQUAL prefix)
    execute_process(COMMAND rmdir -- "${folder}" RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(NOT status EQUAL 0)
      return()
    endif()
    get_filename_component(folder "${folder}" DIRECTORY)
  endwhile()
endfunction()

find_prefix(prefix)
set(left 0)
foreach(path IN LISTS paths)
  set(path "$ENV{DESTDIR}${path}")
  is_inside("${path}" inside)
  if(NOT inside)
    message("left: ${path} (a link leads out of ${prefix})")
    math(EXPR left "${left} + 1")
  elseif(IS_DIRECTORY "${path}" AND NOT IS_SYMLINK "${path}")
    message("left: ${path} (it is a folder)")
    math(EXPR left "${left} + 1")
  elseif(NOT EXISTS "${path}" AND NOT IS_SYMLINK "${path}")
    message("gone already: ${path}")
    remove_empty_folders("${path}")
  else()
    file(REMOVE "${path}")
    if(EXISTS "${path}" OR IS_SYMLINK "${path}")
      message("left: ${path} (it can't be removed)")
      math(EXPR left "${left} + 1")
    else()
      message("removed: ${path}")
      remove_empty_folders("${path}")
    endif()
  endif()
endforeach()
if(left GREATER 0)
  message(FATAL_ERROR "${left} of the installed files were left")
endif()
