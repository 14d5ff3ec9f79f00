# What `cpack` makes of an installation: a .tar.gz and a .deb on Linux, a .zip for Windows (`./dev package`).

set(CPACK_PACKAGE_NAME mvrtpfec)
set(CPACK_PACKAGE_VENDOR MVRtpFec)
set(CPACK_PACKAGE_CONTACT "MVRtpFec <mvrtpfec@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME "mvrtpfec-${PROJECT_VERSION}-windows")
else()
  set(CPACK_GENERATOR TGZ DEB)
  set(CPACK_PACKAGE_FILE_NAME "mvrtpfec-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR}")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION video)
  # The libraries' packages as dependencies, with the versions that they were built against.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
