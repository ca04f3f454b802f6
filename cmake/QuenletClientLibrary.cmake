# The library that other projects link, shared and as an archive, made of the same objects: all layers
# that the client stands on. `quenlet::client` is the shared one.

set(clientObjects "")
foreach(folder client_c client model platform_foundation platform_contacts platform_scheduling
    platform_files platform_accounts platform_logging platform_notifications platform_ipc
    protocol platform_extensions)
  list(APPEND clientObjects "$<TARGET_OBJECTS:quenlet_${folder}>")
endforeach()
set(clientDependencies ICU::uc pugixml::pugixml ${MD_LIBRARY} Threads::Threads ${CMAKE_DL_LIBS}
  ${QUENLET_ATOMIC_LIBRARY})

function(_quenlet_client_target target exportName)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME quenlet EXPORT_NAME ${exportName}
    LINKER_LANGUAGE CXX)
  target_include_directories(${target} INTERFACE
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  add_library(quenlet::${exportName} ALIAS ${target})
endfunction()

add_library(quenlet_client_shared SHARED ${clientObjects})
_quenlet_client_target(quenlet_client_shared client)
# The C interface keeps its symbols as long as the library its name. The C++ one may change with each
# minor version, and then has another symbol version: an old program is told so when it starts.
set(exportedSymbols "${CMAKE_CURRENT_LIST_DIR}/quenlet.map.in")
configure_file("${exportedSymbols}" "${PROJECT_BINARY_DIR}/quenlet.map" @ONLY)
target_link_options(quenlet_client_shared PRIVATE
  "-Wl,--version-script=${PROJECT_BINARY_DIR}/quenlet.map")
set_target_properties(quenlet_client_shared PROPERTIES VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS "${PROJECT_BINARY_DIR}/quenlet.map")
target_link_libraries(quenlet_client_shared PRIVATE ${clientDependencies})

add_library(quenlet_client_archive STATIC ${clientObjects})
_quenlet_client_target(quenlet_client_archive client_static)
target_link_libraries(quenlet_client_archive INTERFACE ${clientDependencies})

if(NOT QUENLET_INSTALL)
  return()
endif()
install(TARGETS quenlet_client_shared EXPORT quenletTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS quenlet_client_archive ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
set(cmakePackage "${CMAKE_INSTALL_LIBDIR}/cmake/quenlet")
install(EXPORT quenletTargets NAMESPACE quenlet:: DESTINATION "${cmakePackage}")
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/quenletConfig.cmake.in "${PROJECT_BINARY_DIR}/quenletConfig.cmake"
  INSTALL_DESTINATION "${cmakePackage}" PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/quenletConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/quenletConfig.cmake"
  "${PROJECT_BINARY_DIR}/quenletConfigVersion.cmake" DESTINATION "${cmakePackage}")

file(GLOB publicHeaders CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/quenlet/*.h")
# Not left to the builder's umask.
set(everybodyReads OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
install(FILES ${publicHeaders} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quenlet"
  PERMISSIONS ${everybodyReads})
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE prefixFromPkgConfig)
set(atomicFlag "")
if(QUENLET_ATOMIC_LIBRARY)
  set(atomicFlag " -l${QUENLET_ATOMIC_LIBRARY}")
endif()
configure_file(cmake/quenlet.pc.in "${PROJECT_BINARY_DIR}/quenlet.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/quenlet.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" PERMISSIONS ${everybodyReads})
