# Installs the library into an empty folder, builds the consumer project against that, and runs its programs:
# cmake -D BUILD=... -D SOURCE=... -D TOOLCHAIN=... -D EMULATOR=... -P RunConsumer.cmake
set(prefix "${BUILD}/consumer/prefix")
set(folder "${BUILD}/consumer/build")
file(REMOVE_RECURSE "${BUILD}/consumer")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " line)
    message(FATAL_ERROR "${line}\nended with ${result}:\n${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${prefix}")
set(toolchain "")
if(TOOLCHAIN)
  set(toolchain "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
run(${CMAKE_COMMAND} -G Ninja -S "${SOURCE}" -B "${folder}" ${toolchain} "-Dpathmere_DIR=${prefix}/lib/cmake/pathmere"
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=-Wall\ -Wextra)
run(${CMAKE_COMMAND} --build "${folder}")
file(GLOB runtime "${prefix}/bin/*.dll")
file(COPY ${runtime} DESTINATION "${folder}")
foreach(kind pathmere pathmere_static)
  run(${EMULATOR} "${folder}/consumer_${kind}.exe")
  message(STATUS "consumer_${kind}: passed")
endforeach()
