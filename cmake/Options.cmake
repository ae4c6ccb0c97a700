option(BRENNIK_TESTS "Build the tests (needs GoogleTest)" OFF)
option(BRENNIK_BENCH "Build the measurements (needs Google Benchmark)" OFF)
option(BRENNIK_FUZZ "Build the fuzz targets (needs clang)" OFF)
option(BRENNIK_WERROR "Turn warnings into errors" OFF)
set(BRENNIK_WINDOWS AUTO CACHE STRING
  "Build the windows, which need Qt 6 Widgets: ON, OFF, or AUTO for ON where Qt is found")
set_property(CACHE BRENNIK_WINDOWS PROPERTY STRINGS AUTO ON OFF)
set(BRENNIK_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(brennik_options INTERFACE)
target_compile_features(brennik_options INTERFACE cxx_std_20)
target_compile_options(brennik_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(BRENNIK_WERROR)
  target_compile_options(brennik_options INTERFACE -Werror)
endif()
if(BRENNIK_SANITIZE)
  add_compile_options(-fsanitize=${BRENNIK_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  # Instrumented library code makes g++ 12 see uninitialised values where there are none.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(brennik_options INTERFACE -Wno-maybe-uninitialized)
  endif()
  add_link_options(-fsanitize=${BRENNIK_SANITIZE})
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
