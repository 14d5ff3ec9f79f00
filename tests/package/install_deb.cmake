# Run with -D build=BUILD_TREE -D work=SCRATCH -D cpack=CPACK. Makes the Debian package, installs it into an
# empty root and runs its program there, which finds module and sample beside itself.

include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(root "${work}/root")
file(REMOVE_RECURSE "${root}" "${work}/deb")
file(MAKE_DIRECTORY "${root}/var/lib/dpkg/info" "${root}/var/lib/dpkg/updates" "${root}/var/lib/dpkg/triggers")
file(TOUCH "${root}/var/lib/dpkg/status" "${root}/var/lib/dpkg/available")

run("${cpack}" --config "${build}/CPackConfig.cmake" -G DEB -B "${work}/deb")
file(GLOB package "${work}/deb/*.deb")
# Its libraries are this system's own; what configuring would run (ldconfig) an empty root has not.
run(dpkg --root=${root} --log=${root}/dpkg.log --force-depends --unpack "${package}")
run("${root}/usr/bin/mvrtpfec" simulate --mode both --columns 5 --rows 5)
