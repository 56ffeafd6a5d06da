# Plays a script in an empty folder: PROGRAM, FOLDER, SCRIPT.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/files)
set(ENV{XDG_STATE_HOME} ${FOLDER}/state)
execute_process(COMMAND ${PROGRAM} -C ${FOLDER}/files ${SCRIPT} OUTPUT_QUIET RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${SCRIPT} did not give what it must")
endif()
