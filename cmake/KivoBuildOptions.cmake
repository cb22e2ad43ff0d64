# One interface target carries the language level, the warnings and the Qt defines;
# every library, test and benchmark links it.
add_library(kivo_build_options INTERFACE)
target_compile_features(kivo_build_options INTERFACE cxx_std_20)
target_compile_options(kivo_build_options INTERFACE -Wall -Wextra -Wpedantic -Werror)
target_compile_definitions(kivo_build_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_NO_FOREACH
  QT_USE_QSTRINGBUILDER
  QT_NO_KEYWORDS
  KIVO_VERSION="${PROJECT_VERSION}")

if(KIVO_SANITIZE)
  target_compile_options(kivo_build_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(kivo_build_options INTERFACE -fsanitize=address,undefined)
endif()

set(CMAKE_AUTOMOC ON)

# kivo_add_library(NAME FOLDER SOURCES... LINKS...) keeps each folder's target declaration short.
function(kivo_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC kivo_build_options ${ARG_LINKS})
endfunction()
