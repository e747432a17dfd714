# How every target of the project is compiled.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED)

add_library(rastrel_compiler INTERFACE)
target_compile_options(rastrel_compiler INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor -Werror)
# GCC 12 sees an overlap in every `"text" + string` that it inlines at -O3, where there is none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(rastrel_compiler INTERFACE -Wno-restrict)
endif()
target_include_directories(rastrel_compiler INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(rastrel_compiler INTERFACE Threads::Threads)

if(RASTREL_SANITIZER STREQUAL "address")
  # With its checks in the code, GCC takes members of the standard library's expressions for unset.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer
    -Wno-maybe-uninitialized)
  add_link_options(-fsanitize=address,undefined)
elseif(RASTREL_SANITIZER STREQUAL "thread")
  # With its calls in the code, GCC takes `std::string(n, c) + "text"` for a write beyond the string.
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -Wno-array-bounds
    -Wno-stringop-overflow)
  add_link_options(-fsanitize=thread)
endif()
if(RASTREL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(RASTREL_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

find_program(RASTREL_CCACHE ccache)
if(RASTREL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # It keeps nothing of a source with precompiled headers unless it may be lax about their macros.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros ${RASTREL_CCACHE})
endif()
