# Rooms: the parts of the library, each with an include root of its own.
#
# kiv_room(NAME
#   [DEPENDS ROOM...]     rooms whose headers this one may include (theirs come along)
#   [LOGIC FILE...]       headers and sources that need neither a window nor the shell
#   [NATIVE FILE...]      sources that stand in for the Windows ring's where there is no Windows
#   [WINDOWS FILE...])    headers and sources of the Windows ring
#
# makes the object libraries NAME_logic and, on Windows, NAME_win. Each has an include root, generated in the build
# folder, that holds nothing but its own headers as NAME/Header.h. A header is therefore found only through a link to
# its room and ring: a lower room that includes an upper one, or logic that includes the Windows ring, doesn't compile.

set_property(GLOBAL PROPERTY KIV_ROOMS "")
set(KIV_ROOTS "${CMAKE_BINARY_DIR}/roots")

# Writes forwarding headers, so that messages and debuggers name the real file.
function(kiv_include_root room ring out)
  set(root "${KIV_ROOTS}/${room}-${ring}")
  set(headers "")
  foreach(file IN LISTS ARGN)
    if(file MATCHES "\\.h$")
      set(forward "${root}/${room}/${file}")
      file(CONFIGURE OUTPUT "${forward}" CONTENT "#include \"${CMAKE_CURRENT_SOURCE_DIR}/${file}\"\n" @ONLY)
      list(APPEND headers "${file}")
    endif()
  endforeach()
  # A header that left its ring must not stay reachable.
  file(GLOB_RECURSE standing RELATIVE "${root}/${room}" "${root}/${room}/*.h")
  foreach(file IN LISTS standing)
    if(NOT file IN_LIST headers)
      file(REMOVE "${root}/${room}/${file}")
    endif()
  endforeach()
  set_property(GLOBAL PROPERTY KIV_HEADERS_${room}_${ring} "${headers}")
  set(${out} "${root}" PARENT_SCOPE)
endfunction()

# The first target of a ring makes the precompiled header, the others use it.
function(kiv_precompile target ring)
  get_property(maker GLOBAL PROPERTY KIV_PCH_MAKER_${ring})
  if(maker)
    target_precompile_headers(${target} REUSE_FROM ${maker})
  else()
    if(ring STREQUAL "win")
      target_precompile_headers(${target} PRIVATE "${KIV_WINDOWS_PCH}")
    else()
      target_precompile_headers(${target} PRIVATE "${KIV_LOGIC_PCH}")
    endif()
    set_property(GLOBAL PROPERTY KIV_PCH_MAKER_${ring} ${target})
  endif()
endfunction()

function(kiv_room_ring room ring)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "FILES;LINKS")
  kiv_include_root(${room} ${ring} root ${arg_FILES})
  set(target ${room}_${ring})
  add_library(${target} OBJECT ${arg_FILES})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${target} PUBLIC "${root}")
  target_link_libraries(${target} PRIVATE kiv_settings PUBLIC ${arg_LINKS})
  target_compile_definitions(${target} PRIVATE KIV_BUILDING)
  if(arg_FILES MATCHES "\\.cpp")
    kiv_precompile(${target} ${ring})
  endif()
endfunction()

function(kiv_room room)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS;LOGIC;NATIVE;WINDOWS")
  set(logic_links "")
  set(win_links ${room}_logic)
  foreach(lower IN LISTS arg_DEPENDS)
    list(APPEND logic_links ${lower}_logic)
    if(WIN32 AND TARGET ${lower}_win)
      list(APPEND win_links ${lower}_win)
    endif()
  endforeach()
  set(logic_files ${arg_LOGIC})
  if(NOT WIN32)
    list(APPEND logic_files ${arg_NATIVE})
  endif()
  kiv_room_ring(${room} logic FILES ${logic_files} LINKS ${logic_links})
  if(WIN32 AND arg_WINDOWS)
    kiv_room_ring(${room} win FILES ${arg_WINDOWS} LINKS ${win_links})
  endif()
  set_property(GLOBAL APPEND PROPERTY KIV_ROOMS ${room})
  set_property(GLOBAL PROPERTY KIV_DEPENDS_${room} "${arg_DEPENDS}")
endfunction()

# All object libraries, lowest room first.
function(kiv_room_targets out)
  get_property(rooms GLOBAL PROPERTY KIV_ROOMS)
  set(targets "")
  foreach(room IN LISTS rooms)
    foreach(ring logic win)
      if(TARGET ${room}_${ring})
        list(APPEND targets ${room}_${ring})
      endif()
    endforeach()
  endforeach()
  set(${out} ${targets} PARENT_SCOPE)
endfunction()
