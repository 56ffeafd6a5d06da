# Plays a script in an empty folder: PROGRAM, FOLDER, SCRIPT. With EXAMPLE and PHOTRAK the script has
# built that example, run it and saved it as link.top: its results, and those of the saved topology,
# must equal the example's in every byte.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/files)
set(ENV{XDG_STATE_HOME} ${FOLDER}/state)
execute_process(COMMAND ${PROGRAM} -C ${FOLDER}/files ${SCRIPT} OUTPUT_QUIET RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${SCRIPT} did not give what it must")
endif()
if(NOT EXAMPLE)
  return()
endif()
foreach(from ${EXAMPLE} ${FOLDER}/files/link.top)
  get_filename_component(name ${from} NAME)
  file(COPY ${from} DESTINATION ${FOLDER}/run)
  execute_process(COMMAND ${PHOTRAK} run --quiet --no-commands --prefix nrz- ${FOLDER}/run/${name}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB results RELATIVE ${FOLDER}/run ${FOLDER}/run/nrz-*.sig ${FOLDER}/run/nrz-*.pcs)
  list(LENGTH results count)
  if(count LESS 6)
    message(FATAL_ERROR "${name}: only ${count} result files")
  endif()
  foreach(result ${results})
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${FOLDER}/run/${result} ${FOLDER}/files/${result}
      COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${FOLDER}/run/${result})
  endforeach()
endforeach()
