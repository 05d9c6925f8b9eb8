# Runs kivtool as a user does, on files made here, and compares what comes out of it:
# cmake -D RUN=emulator -D TOOL=kivtool.exe -D FOLDER=... -P RunTool.cmake
file(REMOVE_RECURSE "${FOLDER}")
file(WRITE "${FOLDER}/plain.txt" "12345")
file(WRITE "${FOLDER}/ä中📁 אב.txt" "1")
file(MAKE_DIRECTORY "${FOLDER}/sub")
# Under Wine drive Z: is the root of this machine.
if(RUN)
  string(REPLACE "/" "\\" windows_folder "Z:${FOLDER}")
else()
  file(TO_NATIVE_PATH "${FOLDER}" windows_folder)
endif()

function(expect what actual expected)
  if(NOT actual STREQUAL expected)
    message(FATAL_ERROR "${what}: \"${actual}\" instead of \"${expected}\"")
  endif()
endfunction()

execute_process(COMMAND ${RUN} "${TOOL}" walk "${windows_folder}" --json
                RESULT_VARIABLE result OUTPUT_VARIABLE json ERROR_VARIABLE errors)
expect("exit code" "${result}" 0)
string(JSON count LENGTH "${json}")
expect("objects" ${count} 3)
set(found "")
foreach(i RANGE 2)
  string(JSON name GET "${json}" ${i} name)
  string(JSON kind GET "${json}" ${i} kind)
  string(JSON size ERROR_VARIABLE none GET "${json}" ${i} size)
  string(JSON path GET "${json}" ${i} path)
  expect("path of ${name}" "${path}" "${windows_folder}\\${name}")
  list(APPEND found "${name}|${kind}|${size}")
endforeach()
list(SORT found)
expect("objects" "${found}" "plain.txt|File|5;sub|Folder|;ä中📁 אב.txt|File|1")

file(WRITE "${FOLDER}/sub/low.TXT" "12")
execute_process(COMMAND ${RUN} "${TOOL}" walk "${windows_folder}" --depth all --filter "p*;*w.txt" --files-only --navigation
                RESULT_VARIABLE result OUTPUT_VARIABLE output)
expect("exit code of a filtered walk" "${result}" 0)
if(NOT output MATCHES "plain.txt .*sub.low.TXT\n\n2 objects, 0 folders, 7 bytes\n$")
  message(FATAL_ERROR "what a filtered walk prints: ${output}")
endif()
file(REMOVE "${FOLDER}/sub/low.TXT")

execute_process(COMMAND ${RUN} "${TOOL}" walk "${windows_folder}\\none"
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
expect("exit code for a missing folder" "${result}" 1)
expect("output for a missing folder" "${output}" "")
if(NOT errors MATCHES "kivtool: can't list \"[^\"]*none\": [^\n]+")
  message(FATAL_ERROR "no error line: ${errors}")
endif()

execute_process(COMMAND ${RUN} "${TOOL}" walk RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
expect("exit code for a bad command line" "${result}" 2)

execute_process(COMMAND ${RUN} "${TOOL}" walk "${windows_folder}\\sub" RESULT_VARIABLE result OUTPUT_VARIABLE output)
if(NOT output MATCHES "0 objects, 0 folders, 0 bytes\n$" OR output MATCHES "\r")
  message(FATAL_ERROR "the output isn't passed through as it is: ${output}")
endif()

# What item lists tell.
execute_process(COMMAND ${RUN} "${TOOL}" info "${windows_folder}\\plain.txt" "::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"
                RESULT_VARIABLE result OUTPUT_VARIABLE output)
expect("exit code of info" "${result}" 0)
foreach(line
    "  Name: +plain.txt" "  Relative parsing: +plain.txt" "  Special folder: +SF_FILESYSTEMFOLDER"
    "  Attributes: .*FILESYSTEM" "  Still there: +yes" "  Internal data: +FPath: .*Valid, Depth: [0-9]+, .*plain.txt"
    "  Special folder: +SF_DRIVES" "  Absolute parsing: +::{20[dD]04[fF][eE]0-" "  Depth: +1")
  if(NOT output MATCHES "${line}")
    message(FATAL_ERROR "info has no line \"${line}\":\n${output}")
  endif()
endforeach()
execute_process(COMMAND ${RUN} "${TOOL}" info "Q:\\none" RESULT_VARIABLE result OUTPUT_VARIABLE output)
expect("exit code of info on nothing" "${result}" 1)
if(NOT output MATCHES "  Valid: +no.*  Display path: +Q:.none.*  Parent: +\\(failed: Could not get the parent")
  message(FATAL_ERROR "what info tells of nothing: ${output}")
endif()

# Icons.
execute_process(COMMAND ${RUN} "${TOOL}" icon "${windows_folder}" "${windows_folder}\\icon.png" --size 40 RESULT_VARIABLE result)
expect("exit code of icon" "${result}" 0)
file(READ "${FOLDER}/icon.png" picture LIMIT 24 HEX)
expect("size of the icon" "${picture}" "89504e470d0a1a0a0000000d494844520000002800000028")
file(REMOVE "${FOLDER}/icon.png")
execute_process(COMMAND ${RUN} "${TOOL}" icon "Q:\\none" "${windows_folder}\\none.png" RESULT_VARIABLE result ERROR_VARIABLE error)
expect("exit code of icon on nothing" "${result}" 1)

# What users write.
file(WRITE "${FOLDER}/in" "\"${windows_folder}\\plain.txt\"\n\nQ:\\none\n::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\n")
execute_process(COMMAND ${RUN} "${TOOL}" parse INPUT_FILE "${FOLDER}/in" RESULT_VARIABLE result OUTPUT_VARIABLE output)
expect("exit code of parse" "${result}" 0)
string(REPLACE "\\" "/" output "${output}")
string(REPLACE "\\" "/" shown "${windows_folder}/plain.txt")
string(REGEX REPLACE "^1\t[0-9]+\t" "1\tN\t" output "${output}")
string(REGEX REPLACE "1\t1\t[^\t]*\tSF_DRIVES\n$" "drives" output "${output}")
expect("what is parsed" "${output}"
  "1\tN\t${shown}\tSF_FILESYSTEMFOLDER\n0\t0\t\tSF_INVALID\n0\t0\tQ:/none\tSF_INVALID\ndrives")

# Text by lines: in and out as they are, whatever the last line ends in.
file(WRITE "${FOLDER}/in" "C:\\ä\\..\\中\r\n\nC:\\x\\*")
execute_process(COMMAND ${RUN} "${TOOL}" path canonic INPUT_FILE "${FOLDER}/in"
                RESULT_VARIABLE result OUTPUT_VARIABLE output)
expect("exit code of path" "${result}" 0)
expect("canonical paths" "${output}" "C:\\中\n\nC:\\x\\\n")
file(WRITE "${FOLDER}/in" "a10\ta9\nA\ta\n")
execute_process(COMMAND ${RUN} "${TOOL}" compare INPUT_FILE "${FOLDER}/in" OUTPUT_VARIABLE output)
expect("order of names" "${output}" "1\n0\n")
