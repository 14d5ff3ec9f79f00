# `cmake --install` puts the program, its module, what hosts need to call it, and the libraries with their
# CMake package in place: find_package(MvRtpFec) gives MvRtpFec::interfaces, MvRtpFec::core, MvRtpFec::guard,
# MvRtpFec::engine, MvRtpFec::rtp_media, MvRtpFec::sender and MvRtpFec::receiver with what they stand on.

include(CMakePackageConfigHelpers)

set(exported platform support core framework rtp_media sender receiver guard engine)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/MvRtpFec")

# Windows' packages hold the modules of both widths side by side, the program beside its own.
if(NOT WIN32)
  set(program_dir "${CMAKE_INSTALL_BINDIR}")
  set(module_dir lib/mvrtpfec)
elseif(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(program_dir x64)
  set(module_dir x64)
else()
  set(module_dir x86)
endif()

install(TARGETS MVRtpFec RUNTIME DESTINATION ${module_dir} COMPONENT module
        LIBRARY DESTINATION ${module_dir} COMPONENT module)
if(MVRTPFEC_HOST)
  install(TARGETS mvrtpfec RUNTIME DESTINATION ${program_dir})
  install(FILES samples/sample.ts DESTINATION ${CMAKE_INSTALL_DATADIR}/mvrtpfec)
  install(DIRECTORY samples/streams DESTINATION ${CMAKE_INSTALL_DATADIR}/mvrtpfec)
endif()

install(DIRECTORY include/mvrtpfec DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/mvrtpfec)
install(TARGETS mvrtpfec_interfaces EXPORT MvRtpFecTargets)
foreach(name IN LISTS exported)
  install(TARGETS mvrtpfec_${name} EXPORT MvRtpFecTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${name}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mvrtpfec/${name}
          FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT MvRtpFecTargets NAMESPACE MvRtpFec:: DESTINATION ${package_dir})
configure_package_config_file(cmake/MvRtpFecConfig.cmake.in
  "${CMAKE_BINARY_DIR}/MvRtpFecConfig.cmake" INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${CMAKE_BINARY_DIR}/MvRtpFecConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/MvRtpFecConfig.cmake" "${CMAKE_BINARY_DIR}/MvRtpFecConfigVersion.cmake"
        DESTINATION ${package_dir})

if(WIN32)
  install(FILES docs/INSTALL-windows.txt DESTINATION . RENAME INSTALL.txt)
  install(FILES docs/windows.md DESTINATION .)
else()
  install(FILES README.md docs/architecture.md docs/guard.md docs/interop.md docs/live.md docs/logging.md
                docs/packetize.md docs/windows.md
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/mvrtpfec)
endif()
