# The C++ runtime is shared between the DLL and its host, so its DLLs lie beside the programs.
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                  OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${file}")
    find_file(file_${name} ${name} PATHS ${CMAKE_FIND_ROOT_PATH} PATH_SUFFIXES lib bin NO_DEFAULT_PATH
              NO_CMAKE_FIND_ROOT_PATH)
    set(file "${file_${name}}")
  endif()
  if(NOT EXISTS "${file}")
    message(FATAL_ERROR "The compiler's ${name} isn't to be found.")
  endif()
  list(APPEND KIV_RUNTIME_FILES "${file}")
endforeach()
file(COPY ${KIV_RUNTIME_FILES} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
