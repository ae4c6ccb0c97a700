# The windows: a module that the program loads when one must open. It alone knows Qt.
if(BRENNIK_WINDOWS STREQUAL "AUTO")
  find_package(Qt6 6.4 QUIET COMPONENTS Widgets)
  if(NOT Qt6Widgets_FOUND)
    message(WARNING "Qt 6 Widgets was not found, so the windows are not built: the programs run "
      "profiles unattended only. Install qt6-base-dev and configure anew, or give "
      "-DBRENNIK_WINDOWS=OFF to build without windows on purpose.")
  endif()
  set(BRENNIK_BUILD_WINDOWS "${Qt6Widgets_FOUND}")
elseif(BRENNIK_WINDOWS)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
  set(BRENNIK_BUILD_WINDOWS TRUE)
else()
  set(BRENNIK_BUILD_WINDOWS FALSE)
endif()

if(NOT BRENNIK_BUILD_WINDOWS)
  return()
endif()

if(BRENNIK_TESTS)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
endif()

file(GLOB_RECURSE windows_sources CONFIGURE_DEPENDS src/shell/frm*.cpp src/dialogs/*.cpp)
list(FILTER windows_sources EXCLUDE REGEX "/frmModule\\.cpp$")
add_library(brennik_windows STATIC ${windows_sources})
target_link_libraries(brennik_windows PUBLIC brennik_run Qt6::Widgets)

# Whole in itself: its own copy of the engine, of which nothing shows but the one function.
add_library(brennik_windows_module MODULE src/shell/frmModule.cpp)
target_link_libraries(brennik_windows_module PRIVATE brennik_windows)
target_link_options(brennik_windows_module PRIVATE
  "LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/windows.exports")
set_target_properties(brennik_windows_module PROPERTIES
  OUTPUT_NAME brennikwindows
  PREFIX lib
  LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}"
  LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/windows.exports")
