# run(COMMAND...): a command whose failure ends the script.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " line)
    message(FATAL_ERROR "failed (${result}): ${line}")
  endif()
endfunction()
