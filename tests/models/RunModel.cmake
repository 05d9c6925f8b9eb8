# Lets spin make the search of a model, compiles and runs it. Fails unless the search was complete and found nothing.
file(MAKE_DIRECTORY "${FOLDER}")
file(REMOVE "${FOLDER}/pool.pml.trail")
execute_process(COMMAND ${SPIN} ${OPTIONS} -a "${MODEL}" WORKING_DIRECTORY "${FOLDER}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CC} -O2 -w -DSAFETY -DCOLLAPSE -DVECTORSZ=2048 -o pan pan.c
                WORKING_DIRECTORY "${FOLDER}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ./pan -m100000 WORKING_DIRECTORY "${FOLDER}" OUTPUT_VARIABLE found)
message("${found}")
if(NOT found MATCHES "errors: 0" OR found MATCHES "Search not completed|max search depth too small")
  message(FATAL_ERROR "The model doesn't hold. In ${FOLDER}: spin -t -p ${OPTIONS} ${MODEL}")
endif()
