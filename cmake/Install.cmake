# cmake --install gives the virtual sensor with its services, and the package VorCnLib for authors of services. Whatever
# one part looks up in another is found relative to itself, so the tree can be moved.
include(CMakePackageConfigHelpers)

set(VOR_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/VorCnLib)
set(VOR_SHARE_FOLDER ${CMAKE_INSTALL_DATADIR}/VorCnLib)

# Programs, libraries and plug-ins.
function(vor_install_rpath folder)
  file(RELATIVE_PATH place /${folder} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(${ARGN} PROPERTIES INSTALL_RPATH $ORIGIN/${place})
endfunction()
vor_install_rpath(${CMAKE_INSTALL_LIBDIR} VorPlatform VorCnLib)
vor_install_rpath(${CMAKE_INSTALL_BINDIR} vorsensor)
install(TARGETS vorsensor)
foreach(service ${VOR_SERVICES})
  vor_install_rpath(${VOR_PLUGIN_FOLDER} ${service}Service)
  install(TARGETS ${service}Service DESTINATION ${VOR_PLUGIN_FOLDER})
  get_target_property(name ${service}Service OUTPUT_NAME)
  install(FILES Services/${service}/demo.json DESTINATION ${VOR_PLUGIN_FOLDER} RENAME ${name}.demo.json OPTIONAL)
endforeach()

# Helpers for tests of services: headers only.
add_library(ServiceTesting INTERFACE)
target_link_libraries(ServiceTesting INTERFACE VorCnLib VorPlatform)
target_include_directories(ServiceTesting INTERFACE $<INSTALL_INTERFACE:${VOR_SHARE_FOLDER}/testing>)
foreach(header BuiltFile CallLog ControlEnviron FakeDataCache FakeOutputDevice FakeScanEngineInterface FakeSystemInterface MainLoopThread
    MemoryStore RecordingRegistrar Results)
  install(FILES Tests/Support/${header}.h DESTINATION ${VOR_SHARE_FOLDER}/testing/Tests/Support)
endforeach()

# The package.
foreach(library VorPlatform VorCnLib Net ServicesCommon)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${library} PUBLIC cxx_std_20)
endforeach()
set_target_properties(ServicesCommon PROPERTIES OUTPUT_NAME VorService EXPORT_NAME Service)
set_target_properties(Net PROPERTIES OUTPUT_NAME VorNet)
install(TARGETS VorPlatform VorCnLib Net ServicesCommon ServiceTesting EXPORT VorCnLib)
install(EXPORT VorCnLib FILE VorCnLibTargets.cmake NAMESPACE VorCnLib:: DESTINATION ${VOR_PACKAGE_FOLDER})
foreach(header ${VOR_HEADERS})
  find_file(file ${header} PATHS ${VOR_HEADER_ROOTS} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
  unset(file)
endforeach()
configure_package_config_file(cmake/VorCnLibConfig.cmake.in ${CMAKE_BINARY_DIR}/VorCnLibConfig.cmake
  INSTALL_DESTINATION ${VOR_PACKAGE_FOLDER} PATH_VARS CMAKE_INSTALL_INCLUDEDIR VOR_SHARE_FOLDER)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/VorCnLibConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/VorCnLibConfig.cmake ${CMAKE_BINARY_DIR}/VorCnLibConfigVersion.cmake
  cmake/VorService.cmake DESTINATION ${VOR_PACKAGE_FOLDER})
install(FILES ${VOR_PLUGIN_ENTRY} DESTINATION ${VOR_SHARE_FOLDER})

# The examples, each with what builds it.
install(DIRECTORY Services/Sample DESTINATION ${VOR_SHARE_FOLDER}/examples)
install(FILES Tests/Services/SampleServiceTest.cpp DESTINATION ${VOR_SHARE_FOLDER}/examples/Sample)
