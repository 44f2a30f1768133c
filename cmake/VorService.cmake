# How a service is built, in this tree and outside of it. Needs VOR_HEADERS, the names of the headers that a service is
# compiled against, VOR_HEADER_ROOTS, the folders in which they are, and VOR_PLUGIN_ENTRY, the entry's source.

# What yPlugin_PlatformVersion returns: the loader refuses a plug-in that was compiled against other headers than itself.
# Names and contents are all that counts, so each copy of the headers gives the same text.
function(vor_platform_version out)
  set(names ${VOR_HEADERS})
  list(SORT names)
  set(text "")
  foreach(name ${names})
    find_file(header ${name} PATHS ${VOR_HEADER_ROOTS} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
    file(SHA256 ${header} hash)
    string(APPEND text "${name} ${hash}\n")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
    unset(header)
  endforeach()
  string(SHA256 hash "${text}")
  string(SUBSTRING ${hash} 0 16 hash)
  set(${out} "1.0.0.0+${hash}" PARENT_SCOPE)
endfunction()

# VOR_PLATFORM_VERSION for the sources of a library that exports the functions of a plug-in itself.
if(NOT TARGET VorCnLib::PlatformVersion)
  vor_platform_version(VOR_PLATFORM_VERSION)
  add_library(VorPlatformVersion INTERFACE)
  add_library(VorCnLib::PlatformVersion ALIAS VorPlatformVersion)
  target_compile_definitions(VorPlatformVersion INTERFACE VOR_PLATFORM_VERSION="${VOR_PLATFORM_VERSION}")
endif()

# vor_add_service(NAME SOURCES... [VERSION A.B.C.D] [DEMO FILE]) makes
#   NAMEService  the plug-in, a file called NAME in small letters in the folder "plugins" of the build
#   NAMEObjects  the same sources for programs that test them
# The version, 1.0.0.0 by default, is that of the plug-in's assembly. The file, a JSON document that says what the service
# has in the demo jobs of the virtual sensor, is copied beside the plug-in as NAME.demo.json.
function(vor_add_service name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "VERSION;DEMO" "")
  if(NOT arg_VERSION)
    set(arg_VERSION 1.0.0.0)
  endif()
  add_library(${name}Objects OBJECT ${arg_UNPARSED_ARGUMENTS})
  set_target_properties(${name}Objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(${name}Objects PUBLIC VorCnLib::Service)

  add_library(${name}Service MODULE ${VOR_PLUGIN_ENTRY})
  target_link_libraries(${name}Service PRIVATE ${name}Objects VorCnLib::PlatformVersion)
  target_compile_definitions(${name}Service PRIVATE
    VOR_SERVICE_NAME="${name}Service" VOR_SERVICE_VERSION="${arg_VERSION}")
  target_link_options(${name}Service PRIVATE -Wl,-Bsymbolic-functions)
  if(NOT VOR_SANITIZE AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize") # whose functions are in the program
    target_link_options(${name}Service PRIVATE -Wl,--no-undefined)
  endif()
  string(TOLOWER ${name} file)
  set_target_properties(${name}Service PROPERTIES PREFIX "" OUTPUT_NAME ${file}
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/plugins)
  if(arg_DEMO)
    get_filename_component(demo ${arg_DEMO} ABSOLUTE)
    set_property(TARGET ${name}Service APPEND PROPERTY LINK_DEPENDS ${demo})
    add_custom_command(TARGET ${name}Service POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E copy ${demo} $<TARGET_FILE_DIR:${name}Service>/${file}.demo.json)
  endif()
endfunction()
