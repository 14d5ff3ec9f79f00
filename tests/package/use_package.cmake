# Run with -D build=BUILD_TREE -D work=SCRATCH -D consumer=SOURCE.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " line)
    message(FATAL_ERROR "failed (${result}): ${line}")
  endif()
endfunction()

file(REMOVE_RECURSE "${work}/prefix" "${work}/build")
run("${CMAKE_COMMAND}" --install "${build}" --prefix "${work}/prefix")
run("${CMAKE_COMMAND}" -G Ninja -S "${consumer}" -B "${work}/build" "-DCMAKE_PREFIX_PATH=${work}/prefix"
    -DCMAKE_BUILD_TYPE=Release)
run("${CMAKE_COMMAND}" --build "${work}/build")
run("${work}/build/consumer")
if(EXISTS "${work}/prefix/bin/mvrtpfec")
  run("${work}/prefix/bin/mvrtpfec" simulate --mode both --columns 5 --rows 5)
endif()
