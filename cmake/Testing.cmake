# GoogleTest: the host's own for native builds, Debian's source package for MinGW, else find_package.
set(KIV_GTEST_SOURCE /usr/src/googletest/googletest)
if(CMAKE_CROSSCOMPILING AND EXISTS ${KIV_GTEST_SOURCE}/src/gtest-all.cc)
  add_library(kiv_gtest STATIC EXCLUDE_FROM_ALL ${KIV_GTEST_SOURCE}/src/gtest-all.cc)
  target_include_directories(kiv_gtest SYSTEM PUBLIC ${KIV_GTEST_SOURCE}/include PRIVATE ${KIV_GTEST_SOURCE})
  add_library(GTest::gtest ALIAS kiv_gtest)
else()
  find_package(GTest REQUIRED)
endif()

# PCRE2, for characters as wide as this system's: only natively.
if(NOT WIN32)
  find_path(KIV_PCRE2_INCLUDE pcre2.h REQUIRED)
  find_library(KIV_PCRE2_LIBRARY pcre2-32 REQUIRED)
  add_library(kiv_pcre2 INTERFACE)
  target_include_directories(kiv_pcre2 SYSTEM INTERFACE "${KIV_PCRE2_INCLUDE}")
  target_link_libraries(kiv_pcre2 INTERFACE "${KIV_PCRE2_LIBRARY}")
endif()

# A test that hangs is reported by its own watchdog, with the stacks of all threads, before CTest would end it.
set(KIV_TEST_SECONDS 120)
set(KIV_CTEST_SECONDS 150)

# Tests that can't run here, each with its reason.
include("${CMAKE_SOURCE_DIR}/tests/Excluded.cmake")

# The objects of rooms and of all rooms below them.
function(kiv_link_rooms target)
  kiv_room_closure(all ${ARGN})
  foreach(room IN LISTS all)
    foreach(ring logic win)
      if(TARGET ${room}_${ring})
        target_link_libraries(${target} PRIVATE ${room}_${ring})
        target_sources(${target} PRIVATE $<TARGET_OBJECTS:${room}_${ring}>)
      endif()
    endforeach()
  endforeach()
endfunction()

# A program of ours outside the library, with the library's objects in it.
function(kiv_test_settings target)
  target_link_libraries(${target} PRIVATE kiv_settings)
  target_compile_definitions(${target} PRIVATE KIV_STATIC)
  if(WIN32 AND NOT MSVC)
    target_link_options(${target} PRIVATE -static)
  endif()
endfunction()

# One precompiled header for all test programs.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/test_pch.cpp" CONTENT "// Generated: carries the precompiled header.\n")
add_library(kiv_test_pch OBJECT "${CMAKE_BINARY_DIR}/test_pch.cpp")
kiv_test_settings(kiv_test_pch)
target_link_libraries(kiv_test_pch PRIVATE GTest::gtest)
if(WIN32)
  target_precompile_headers(kiv_test_pch PRIVATE "${KIV_WINDOWS_PCH}" <gtest/gtest.h>)
else()
  target_precompile_headers(kiv_test_pch PRIVATE "${KIV_LOGIC_PCH}" <gtest/gtest.h>)
endif()

# kiv_test_program(NAME ROOMS ROOM... SOURCES FILE... [LIBRARIES LIB...] [LOCKS LOCK...])
# One program for a room and ring, one CTest entry for each test suite in it. Suites with a common lock don't run at the
# same time: "screen" for those that need the keyboard focus and the mouse, "desktop" for those that may see what others
# register in the namespace.
function(kiv_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "ROOMS;SOURCES;LIBRARIES;LOCKS")
  add_executable(${name} ${arg_SOURCES})
  kiv_test_settings(${name})
  target_link_libraries(${name} PRIVATE test_doubles GTest::gtest ${arg_LIBRARIES})
  kiv_link_rooms(${name} ${arg_ROOMS})
  target_precompile_headers(${name} REUSE_FROM kiv_test_pch)
  if(WIN32)
    target_link_libraries(${name} PRIVATE ${KIV_PLATFORM_LIBRARIES})
  endif()
  set(suites "")
  foreach(source IN LISTS arg_SOURCES)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
    file(STRINGS "${source}" lines REGEX "^(TEST|TEST_F|TEST_P|TYPED_TEST)\\(")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^[A-Z_]+\\(([A-Za-z0-9_]+),.*" "\\1" suite "${line}")
      list(APPEND suites ${suite})
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES suites)
  foreach(suite IN LISTS suites)
    set(filter "${suite}.*:*/${suite}.*:${suite}/*.*:*/${suite}/*.*")
    set(skipped ${KIV_EXCLUDED_TESTS})
    list(FILTER skipped INCLUDE REGEX "^${suite}\\.")
    if(skipped AND CMAKE_CROSSCOMPILING)
      list(JOIN skipped ":" skipped)
      string(APPEND filter "-${skipped}")
    endif()
    add_test(NAME "${name}.${suite}" COMMAND ${name} "--gtest_filter=${filter}" --gtest_brief=1)
    set_tests_properties("${name}.${suite}" PROPERTIES
      TIMEOUT ${KIV_CTEST_SECONDS}
      RESOURCE_LOCK "${arg_LOCKS}"
      ENVIRONMENT "KIV_WATCHDOG_SECONDS=${KIV_TEST_SECONDS}")
  endforeach()
endfunction()
