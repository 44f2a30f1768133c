# Who may include whom. Each folder has an include root of its own, which holds a link to that folder only,
# so a target sees exactly the folders of the header libraries that it links.

function(vor_header_folder name folder)
  get_filename_component(leaf ${folder} NAME)
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${leaf} SYMBOLIC)
  add_library(Headers_${name} INTERFACE)
  target_include_directories(Headers_${name} INTERFACE ${root})
  target_link_libraries(Headers_${name} INTERFACE ${ARGN})
endfunction()

vor_header_folder(yApi Platform/yApi Threads::Threads)
vor_header_folder(Vor Platform/Vor Headers_yApi nlohmann_json::nlohmann_json)
vor_header_folder(VorApi VorApi Headers_Vor)

set(PLATFORM_UPPER_FOLDERS VorApi VorCommon VorCore VorMsg VorPipe VorPlugin VorRest VorScan)
add_library(Headers_Platform INTERFACE)
target_link_libraries(Headers_Platform INTERFACE Headers_VorApi)
foreach(folder ${PLATFORM_UPPER_FOLDERS})
  if(IS_DIRECTORY ${CMAKE_SOURCE_DIR}/Platform/${folder})
    vor_header_folder(Platform_${folder} Platform/${folder} Headers_VorApi)
    target_link_libraries(Headers_Platform INTERFACE Headers_Platform_${folder})
  endif()
endforeach()

vor_header_folder(VorControl VorControl Headers_Platform)
vor_header_folder(Sensor Sensor Headers_VorControl)
vor_header_folder(Services Services Headers_VorControl)

# Services that show how one is written. They are kept out of the plug-in folder, so that no sensor loads them unasked.
set(VOR_EXAMPLE_SERVICES Sample CACHE STRING "Folders of Services/ whose modules go into bin/examples")

# What several services share, linked into the module of each.
file(GLOB common_sources CONFIGURE_DEPENDS Services/Common/*.cpp)
add_library(ServicesCommon STATIC ${common_sources})
target_link_libraries(ServicesCommon PUBLIC Headers_Services VorCnLib VorPlatform)
vor_unity(ServicesCommon)

# A service: an object library, which its tests link too, and the loadable module made of it.
function(vor_service folder)
  get_filename_component(name ${folder} NAME)
  file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
  if(NOT sources OR name STREQUAL "Common")
    return()
  endif()
  add_library(${name}Objects OBJECT ${sources})
  target_link_libraries(${name}Objects PUBLIC ServicesCommon)
  vor_unity(${name}Objects)
  string(TOLOWER ${name} module)
  set(output plugins)
  if(name IN_LIST VOR_EXAMPLE_SERVICES)
    set(output examples)
  endif()
  add_library(${name}Service MODULE)
  target_link_libraries(${name}Service PRIVATE ${name}Objects)
  target_link_options(${name}Service PRIVATE -Wl,-Bsymbolic-functions)
  set_target_properties(${name}Service PROPERTIES PREFIX "" OUTPUT_NAME ${module}
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/${output})
endfunction()
