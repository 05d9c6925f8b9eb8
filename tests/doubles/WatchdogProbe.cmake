# Runs the watchdog's probe in all its ways and looks at how each ends.
#   cmake -DPROBE=program [-DEMULATOR=wrapper] [-DWINDOWS=1] -P WatchdogProbe.cmake
cmake_minimum_required(VERSION 3.25)

macro(run)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env KIV_WATCHDOG_SECONDS=1 ${EMULATOR} "${PROBE}" ${ARGN}
                  RESULT_VARIABLE code ERROR_VARIABLE err OUTPUT_VARIABLE out TIMEOUT 100)
endmacro()

run(--gtest_filter=WatchdogProbe.Hangs)
if(NOT code EQUAL 86 OR NOT err MATCHES "Watchdog: the run hangs after 1 s in WatchdogProbe\\.Hangs")
  message(SEND_ERROR "A hang must be reported and end with 86.\nexit code: ${code}\n${err}")
endif()
if(err MATCHES "the report hangs")
  message(SEND_ERROR "The report itself must not hang.\n${err}")
endif()
if(WINDOWS)
  # The main thread and the two that hang, each with frames in our own program.
  string(REGEX MATCHALL "Thread [0-9]+:\n(  #[^\n]*\n)*  #[0-9]+ +watchdog_probe\\.exe\\+0x[0-9a-f]+" stacks "${err}")
  list(LENGTH stacks count)
  if(count LESS 3)
    message(SEND_ERROR "All three threads must be listed with module and offset, not ${count}.\n${err}")
  endif()
else()
  foreach(name HoldTheMutexForEver WaitForTheHeldMutex WatchdogProbe_Hangs_Test)
    if(NOT err MATCHES "${name}")
      message(SEND_ERROR "The report must name ${name}.\n${err}")
    endif()
  endforeach()
endif()

run(--gtest_filter=WatchdogProbe.EndsInTime)
if(NOT code EQUAL 0 OR err MATCHES "Watchdog")
  message(SEND_ERROR "A run that ends in time must leave no trace.\nexit code: ${code}\n${err}${out}")
endif()

run(--gtest_filter=WatchdogProbe.NoSuchTest)
if(NOT code EQUAL 3)
  message(SEND_ERROR "A run of no test must end with 3.\nexit code: ${code}\n${err}${out}")
endif()

run(--gtest_list_tests)
if(NOT code EQUAL 0 OR NOT out MATCHES "EndsInTime")
  message(SEND_ERROR "Listing the tests is no failure.\nexit code: ${code}\n${err}${out}")
endif()

if(WINDOWS)
  run(--gtest_filter=WatchdogProbe.Crashes)
  if(NOT code EQUAL 87 OR NOT err MATCHES "Crash: exception 0xc0000005" OR NOT err MATCHES "watchdog_probe\\.exe\\+0x")
    message(SEND_ERROR "A crash must be reported and end with 87.\nexit code: ${code}\n${err}${out}")
  endif()
endif()
