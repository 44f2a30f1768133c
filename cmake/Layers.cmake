# Who may include whom. Each folder has an include root of its own, which holds a link to that folder only,
# so a target sees exactly the folders of the header libraries that it links.

function(vor_header_folder name folder)
  get_filename_component(leaf ${folder} NAME)
  get_filename_component(folder ${folder} ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${folder} ${root}/${leaf} SYMBOLIC)
  add_library(Headers_${name} INTERFACE)
  target_include_directories(Headers_${name} INTERFACE ${root})
  target_link_libraries(Headers_${name} INTERFACE ${ARGN})
endfunction()

vor_header_folder(yApi ${VOR_PLATFORM}/yApi Threads::Threads)
vor_header_folder(Vor ${VOR_PLATFORM}/Vor Headers_yApi nlohmann_json::nlohmann_json)
vor_header_folder(VorApi VorApi Headers_Vor)

set(PLATFORM_UPPER_FOLDERS VorApi VorCommon VorCore VorMsg VorPipe VorPlugin VorRest VorScan)
add_library(Headers_Platform INTERFACE)
target_link_libraries(Headers_Platform INTERFACE Headers_VorApi)
foreach(folder ${PLATFORM_UPPER_FOLDERS})
  if(IS_DIRECTORY ${VOR_PLATFORM}/${folder})
    vor_header_folder(Platform_${folder} ${VOR_PLATFORM}/${folder} Headers_VorApi)
    target_link_libraries(Headers_Platform INTERFACE Headers_Platform_${folder})
  endif()
endforeach()

vor_header_folder(Net Net Headers_VorApi)
vor_header_folder(VorControl VorControl Headers_Platform)
vor_header_folder(Sensor Sensor Headers_VorControl Headers_Net)
vor_header_folder(Services Services Headers_VorControl Headers_Net)

# The headers that a service is compiled against, as its sources name them. They are installed into one folder.
file(GLOB_RECURSE VOR_HEADERS CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}
  VorApi/*.h VorControl/*.h Services/Common/*.h)
file(GLOB net_headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR} Net/*.h) # those in Net/Asio are for its sources alone
list(APPEND VOR_HEADERS ${net_headers})
file(GLOB_RECURSE platform_headers CONFIGURE_DEPENDS RELATIVE ${VOR_PLATFORM} ${VOR_PLATFORM}/*.h)
foreach(header ${platform_headers})
  if(header IN_LIST VOR_HEADERS)
    message(FATAL_ERROR "${header} stands in ${VOR_PLATFORM}, too, and only one of them can be installed")
  endif()
endforeach()
list(APPEND VOR_HEADERS ${platform_headers})
set(VOR_HEADER_ROOTS ${CMAKE_SOURCE_DIR} ${VOR_PLATFORM})
