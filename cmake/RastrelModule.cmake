# One folder, one target. A source that lies in the folder is part of it; nothing is listed twice.
#
#   rastrel_module(NAME rastrel_job DEPENDS rastrel_platform_os ...)
#
# makes an object library of the folder's sources. DEPENDS states which modules its sources may
# include; tests/architecture holds the includes against the same table.
function(rastrel_module)
  cmake_parse_arguments(MODULE "" "NAME" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_library(${MODULE_NAME} OBJECT ${sources})
  target_link_libraries(${MODULE_NAME} PUBLIC rastrel_compiler ${MODULE_DEPENDS})
  set_property(GLOBAL APPEND PROPERTY RASTREL_MODULES ${MODULE_NAME})
endfunction()
