# Run with -D build=BUILD_TREE -D work=SCRATCH -D consumer=SOURCE.

include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(REMOVE_RECURSE "${work}/prefix" "${work}/build" "${work}/example")
run("${CMAKE_COMMAND}" --install "${build}" --prefix "${work}/prefix")
run("${CMAKE_COMMAND}" -G Ninja -S "${consumer}" -B "${work}/build" "-DCMAKE_PREFIX_PATH=${work}/prefix"
    -DCMAKE_BUILD_TYPE=Release)
run("${CMAKE_COMMAND}" --build "${work}/build")
run("${work}/build/consumer")
if(EXISTS "${work}/prefix/bin/mvrtpfec")
  run("${work}/prefix/bin/mvrtpfec" simulate --mode both --columns 5 --rows 5)
endif()

# The example host, with the module that was installed.
run("${CMAKE_COMMAND}" -G Ninja -S "${work}/prefix/share/mvrtpfec/examples/graph_host" -B "${work}/example"
    "-DCMAKE_PREFIX_PATH=${work}/prefix" -DCMAKE_BUILD_TYPE=Release)
run("${CMAKE_COMMAND}" --build "${work}/example")
run("${work}/example/graph_host" "${work}/prefix/lib/mvrtpfec/MVRtpFec.ax")
