# The libraries under the host: asio, Boost::headers, fmt::fmt, CLI11::CLI11, nlohmann_json::nlohmann_json and PkgConfig::PCAP.

if(NOT CMAKE_CROSSCOMPILING)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(PCAP REQUIRED IMPORTED_TARGET libpcap)
  find_package(fmt REQUIRED)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json REQUIRED GLOBAL)
  find_path(MVRTPFEC_ASIO asio.hpp REQUIRED)
  find_package(Boost REQUIRED)
  find_package(Threads REQUIRED)
  add_library(asio INTERFACE IMPORTED GLOBAL)
  target_link_libraries(asio INTERFACE Threads::Threads)
  if(MVRTPFEC_SANITIZE MATCHES "thread")
    # Thread sanitizer knows no fences, and g++ says so; they stand in asynchronous operations alone.
    target_compile_definitions(asio INTERFACE ASIO_DISABLE_FENCED_BLOCK)
  endif()
  return()
endif()

# mvrtpfec_headers(TARGET FOLDER)
# A library of headers alone, the same for every target system: Debian's own, made visible by a link so that
# nothing else of /usr/include is.
function(mvrtpfec_headers target folder)
  if(NOT EXISTS "/usr/include/${folder}")
    message(FATAL_ERROR "/usr/include/${folder} is missing: install its Debian package")
  endif()
  set(headers "${CMAKE_BINARY_DIR}/headers/${folder}")
  file(MAKE_DIRECTORY "${headers}")
  file(CREATE_LINK "/usr/include/${folder}" "${headers}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} INTERFACE "${headers}")
endfunction()

mvrtpfec_headers(asio asio)
target_link_libraries(asio INTERFACE ws2_32 mswsock)
# What the system's headers take it for anyway.
target_compile_definitions(asio INTERFACE _WIN32_WINNT=0x0A00)
mvrtpfec_headers(Boost::headers boost)
target_link_libraries(Boost::headers INTERFACE ws2_32 mswsock)
mvrtpfec_headers(fmt::fmt fmt)
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
mvrtpfec_headers(CLI11::CLI11 CLI)
mvrtpfec_headers(nlohmann_json::nlohmann_json nlohmann)

set(MVRTPFEC_LIBPCAP "${PROJECT_SOURCE_DIR}/build/windows-libpcap" CACHE PATH
    "Where libpcap for the target system is, or is put by scripts/windows_libpcap.sh")
execute_process(COMMAND "${PROJECT_SOURCE_DIR}/scripts/windows_libpcap.sh" "${MVRTPFEC_LIBPCAP}"
                COMMAND_ERROR_IS_FATAL ANY)
add_library(PkgConfig::PCAP STATIC IMPORTED GLOBAL)
set_target_properties(PkgConfig::PCAP PROPERTIES
  IMPORTED_LOCATION "${MVRTPFEC_LIBPCAP}/lib/libpcap.a"
  INTERFACE_INCLUDE_DIRECTORIES "${MVRTPFEC_LIBPCAP}/include"
  INTERFACE_LINK_LIBRARIES ws2_32)
