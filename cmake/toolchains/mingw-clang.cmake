# clang for Windows, with the headers and the runtime of MinGW-w64's GCC. Used to compile; nothing is linked.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

execute_process(COMMAND x86_64-w64-mingw32-g++-posix -print-file-name=include/c++
                OUTPUT_VARIABLE kiv_libstdcxx OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -isystem ${kiv_libstdcxx} -isystem ${kiv_libstdcxx}/x86_64-w64-mingw32")
