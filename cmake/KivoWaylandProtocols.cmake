# kivo_wayland_client_code(TARGET XML...) generates the Wayland client code of each protocol file
# with wayland-scanner into the target's build folder and adds it, headers included, to the target.
function(kivo_wayland_client_code target)
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/${target}-protocols)
  foreach(xml IN LISTS ARGN)
    get_filename_component(protocol ${xml} NAME_WE)
    set(header ${generated}/${protocol}-client-protocol.h)
    set(code ${generated}/${protocol}-protocol.c)
    add_custom_command(
      OUTPUT ${header} ${code}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}
      COMMAND ${WAYLAND_SCANNER} client-header ${xml} ${header}
      COMMAND ${WAYLAND_SCANNER} private-code ${xml} ${code}
      DEPENDS ${xml}
      COMMENT "Generating the client code of ${protocol}")
    target_sources(${target} PRIVATE ${header} ${code})
  endforeach()
  target_include_directories(${target} PRIVATE ${generated})
endfunction()
