# What is built of the rooms: on Windows pathmere.dll and a static library of the same objects, elsewhere a static
# library of the logic ring.

kiv_room_targets(kiv_rooms)
set(kiv_objects "")
foreach(target IN LISTS kiv_rooms)
  list(APPEND kiv_objects $<TARGET_OBJECTS:${target}>)
endforeach()

# The platform's import libraries that the Windows ring links.
set(KIV_PLATFORM_LIBRARIES ole32 shell32 shlwapi advapi32 user32 gdi32 uuid)

# The header roots of all rooms, for what is built beside the library from its own tree.
add_library(kiv_headers INTERFACE)
foreach(target IN LISTS kiv_rooms)
  target_include_directories(kiv_headers INTERFACE $<TARGET_PROPERTY:${target},INTERFACE_INCLUDE_DIRECTORIES>)
endforeach()

add_library(pathmere_static STATIC ${kiv_objects})
set_target_properties(pathmere_static PROPERTIES LINKER_LANGUAGE CXX OUTPUT_NAME pathmere_static)

if(WIN32)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/version.rc.in" "${CMAKE_BINARY_DIR}/version.rc" @ONLY)
  add_library(pathmere SHARED ${kiv_objects} "${CMAKE_BINARY_DIR}/version.rc")
  set_target_properties(pathmere PROPERTIES LINKER_LANGUAGE CXX PREFIX "")
  target_link_libraries(pathmere PRIVATE kiv_settings ${KIV_PLATFORM_LIBRARIES})
  if(CMAKE_CROSSCOMPILING AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    include(Runtime)
  endif()
endif()
