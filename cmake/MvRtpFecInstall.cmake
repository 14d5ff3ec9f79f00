# `cmake --install` puts the program, the FEC core and its CMake package in place:
# find_package(MvRtpFec) gives MvRtpFec::core, MvRtpFec::guard, MvRtpFec::sender and MvRtpFec::receiver
# with what they stand on.

include(CMakePackageConfigHelpers)

set(exported platform support core framework sender receiver guard)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/MvRtpFec")

foreach(name IN LISTS exported)
  install(TARGETS mvrtpfec_${name} EXPORT MvRtpFecTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${name}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mvrtpfec/${name}
          FILES_MATCHING PATTERN "*.h")
endforeach()
install(TARGETS mvrtpfec_interfaces EXPORT MvRtpFecTargets)
install(DIRECTORY include/mvrtpfec DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
if(MVRTPFEC_HOST)
  install(TARGETS mvrtpfec RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES samples/sample.ts DESTINATION ${CMAKE_INSTALL_DATADIR}/mvrtpfec)
endif()

install(EXPORT MvRtpFecTargets NAMESPACE MvRtpFec:: DESTINATION ${package_dir})
configure_package_config_file(cmake/MvRtpFecConfig.cmake.in
  "${CMAKE_BINARY_DIR}/MvRtpFecConfig.cmake" INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${CMAKE_BINARY_DIR}/MvRtpFecConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/MvRtpFecConfig.cmake" "${CMAKE_BINARY_DIR}/MvRtpFecConfigVersion.cmake"
        DESTINATION ${package_dir})
