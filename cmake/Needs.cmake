# vor_needs(PROGRAM [LINK LIBRARIES...] [RUN TARGETS...]): what a test, a benchmark or a fuzz target needs besides what its
# place gives it, and what must be built before it runs.
function(vor_needs program)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;RUN")
  target_link_libraries(${program} PRIVATE ${arg_LINK})
  if(arg_RUN)
    add_dependencies(${program} ${arg_RUN})
  endif()
endfunction()

# A program whose name begins with that of a service, such as ModbusFrame, links what the service is made of.
function(vor_link_service program name)
  foreach(service ${VOR_SERVICES} ${VOR_EXAMPLE_SERVICES})
    if(TARGET ${service}Objects AND name MATCHES "^${service}([A-Z]|$)")
      target_link_libraries(${program} PRIVATE ${service}Objects)
    endif()
  endforeach()
endfunction()
