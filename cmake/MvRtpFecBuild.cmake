# What every target of the project is built with, and the one way to add a library.

include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program(MVRTPFEC_CCACHE ccache)
if(MVRTPFEC_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${MVRTPFEC_CCACHE}")
endif()

# The one list of warning flags and sanitizers.
add_library(mvrtpfec_flags INTERFACE)
target_compile_options(mvrtpfec_flags INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Wimplicit-fallthrough)
if(NOT WIN32)
  # The system's own interfaces have no protected destructors.
  target_compile_options(mvrtpfec_flags INTERFACE -Wnon-virtual-dtor)
endif()
if(MVRTPFEC_SANITIZE)
  target_compile_options(mvrtpfec_flags INTERFACE
    -fsanitize=${MVRTPFEC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(mvrtpfec_flags INTERFACE -fsanitize=${MVRTPFEC_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With the checks in between, g++ 12 takes whole classes of the standard library for uninitialized.
    target_compile_options(mvrtpfec_flags INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(MVRTPFEC_FUZZ)
  # libFuzzer is guided by the libraries' own branches, not by the targets' alone.
  target_compile_options(mvrtpfec_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# mvrtpfec_library(NAME SOURCES ... [DEPENDS ...] [PRIVATE_DEPENDS ...])
# Adds the static library mvrtpfec_NAME, alias MvRtpFec::NAME. Headers are included as "NAME/header.h".
function(mvrtpfec_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  set(target mvrtpfec_${name})
  add_library(${target} STATIC ${ARG_SOURCES})
  add_library(MvRtpFec::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  target_include_directories(${target} PUBLIC
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/mvrtpfec>")
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target}
    PUBLIC ${ARG_DEPENDS}
    PRIVATE ${ARG_PRIVATE_DEPENDS} "$<BUILD_INTERFACE:mvrtpfec_flags>")
endfunction()
