# What is built of the rooms: on Windows pathmere.dll and a static library of the same objects, with an install tree for
# find_package(pathmere); elsewhere a static library of the logic ring.

kiv_room_targets(kiv_rooms)
set(kiv_objects "")
foreach(target IN LISTS kiv_rooms)
  list(APPEND kiv_objects $<TARGET_OBJECTS:${target}>)
endforeach()

# The platform's import libraries that the Windows ring links.
set(KIV_PLATFORM_LIBRARIES ole32 oleaut32 shell32 shlwapi advapi32 user32 gdi32 uuid windowscodecs uxtheme)

# The header roots of all rooms, for what is built beside the library from its own tree.
add_library(kiv_headers INTERFACE)
target_include_directories(kiv_headers INTERFACE "${CMAKE_SOURCE_DIR}/include")
foreach(target IN LISTS kiv_rooms)
  target_include_directories(kiv_headers INTERFACE $<TARGET_PROPERTY:${target},INTERFACE_INCLUDE_DIRECTORIES>)
endforeach()

add_library(pathmere_static STATIC ${kiv_objects})
set_target_properties(pathmere_static PROPERTIES LINKER_LANGUAGE CXX)

# All objects of the product, for a compiler that only compiles.
add_custom_target(kiv_compile_all DEPENDS ${kiv_rooms})

if(NOT WIN32)
  return()
endif()

configure_file("${CMAKE_CURRENT_LIST_DIR}/version.rc.in" "${CMAKE_BINARY_DIR}/version.rc" @ONLY)
add_library(pathmere SHARED ${kiv_objects} "${CMAKE_BINARY_DIR}/version.rc")
set_target_properties(pathmere PROPERTIES LINKER_LANGUAGE CXX PREFIX "")
target_link_libraries(pathmere PRIVATE kiv_settings ${KIV_PLATFORM_LIBRARIES})
target_link_libraries(pathmere_static INTERFACE ${KIV_PLATFORM_LIBRARIES})
target_compile_definitions(pathmere_static INTERFACE KIV_STATIC)
if(CMAKE_CROSSCOMPILING AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  include(Runtime)
endif()

# --- install tree ---------------------------------------------------------------------------------------------------

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(kiv_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/pathmere")
foreach(target pathmere pathmere_static)
  target_compile_features(${target} INTERFACE cxx_std_20)
  # The headers use what the platform declares for Windows 10 and later only.
  target_compile_definitions(${target} INTERFACE _WIN32_WINNT=0x0A00 WINVER=0x0A00)
  target_include_directories(${target} INTERFACE
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/pathmere/rooms>)
endforeach()
install(TARGETS pathmere pathmere_static EXPORT pathmereTargets)
install(EXPORT pathmereTargets NAMESPACE pathmere:: DESTINATION "${kiv_package_dir}")
install(DIRECTORY "${CMAKE_SOURCE_DIR}/include/pathmere" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
get_property(rooms GLOBAL PROPERTY KIV_ROOMS)
foreach(room IN LISTS rooms)
  foreach(ring logic win)
    get_property(headers GLOBAL PROPERTY KIV_HEADERS_${room}_${ring})
    foreach(header IN LISTS headers)
      get_filename_component(folder "${header}" DIRECTORY)
      install(FILES "${CMAKE_SOURCE_DIR}/${room}/${header}"
              DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pathmere/rooms/${room}/${folder}")
    endforeach()
  endforeach()
endforeach()
install(FILES "${CMAKE_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DATADIR}/pathmere")
if(KIV_RUNTIME_FILES)
  install(FILES ${KIV_RUNTIME_FILES} DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/pathmereConfig.cmake.in"
  "${CMAKE_BINARY_DIR}/pathmereConfig.cmake" INSTALL_DESTINATION "${kiv_package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/pathmereConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/pathmereConfig.cmake" "${CMAKE_BINARY_DIR}/pathmereConfigVersion.cmake"
        DESTINATION "${kiv_package_dir}")
