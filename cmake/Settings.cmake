# Compiler settings that every target of this project shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

if(WIN32)
  enable_language(RC)
endif()

find_package(Threads REQUIRED)

# kiv_settings: linked PRIVATE by every target of ours, never installed.
add_library(kiv_settings INTERFACE)
target_compile_features(kiv_settings INTERFACE cxx_std_20)
target_link_libraries(kiv_settings INTERFACE Threads::Threads)

if(MSVC)
  target_compile_options(kiv_settings INTERFACE /W4 /utf-8 /EHsc /permissive-)
  if(KIV_WARNINGS_AS_ERRORS)
    target_compile_options(kiv_settings INTERFACE /WX)
  endif()
else()
  target_compile_options(kiv_settings INTERFACE -Wall -Wextra -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 warns of accesses inside std::wstring that no execution makes, wherever it inlines a constructor.
    target_compile_options(kiv_settings INTERFACE -Wno-array-bounds -Wno-stringop-overflow
                           -Wno-stringop-overread -Wno-restrict)
  endif()
  if(KIV_WARNINGS_AS_ERRORS)
    target_compile_options(kiv_settings INTERFACE -Werror)
  endif()
endif()

if(WIN32)
  target_compile_definitions(kiv_settings INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN STRICT
    _WIN32_WINNT=0x0A00 WINVER=0x0A00 NTDDI_VERSION=0x0A000006)
endif()

if(KIV_SANITIZE)
  target_compile_options(kiv_settings INTERFACE
    -fsanitize=${KIV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(kiv_settings INTERFACE -fsanitize=${KIV_SANITIZE})
endif()

# The sources of one target only ever see the windows.h variant set here, so its precompiled header can be shared.
set(KIV_WINDOWS_PCH "${CMAKE_CURRENT_SOURCE_DIR}/cmake/pch/windows_ring.h")
set(KIV_LOGIC_PCH "${CMAKE_CURRENT_SOURCE_DIR}/cmake/pch/logic_ring.h")
