# One target a folder. quenlet_library(model ...) builds model/*.cpp into the target quenlet_model;
# a slash in the folder's name becomes an underscore. A folder without sources is header-only.

# Alone for programs that are built as those of others are: without a way to the internal headers.
add_library(quenlet_warnings INTERFACE)
target_compile_options(quenlet_warnings INTERFACE
  -Wall -Wextra -Wshadow=local -Wnon-virtual-dtor $<$<BOOL:${QUENLET_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Sources that are compiled together look like headers to it.
  target_compile_options(quenlet_warnings INTERFACE -Wno-subobject-linkage)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # Clang has no -Wshadow=local and reads it as an unknown warning.
  target_compile_options(quenlet_warnings INTERFACE -Wno-unknown-warning-option -Wthread-safety)
endif()
add_library(quenlet_options INTERFACE)
target_link_libraries(quenlet_options INTERFACE quenlet_warnings)
target_include_directories(quenlet_options INTERFACE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/include")

function(_quenlet_target_name folder result)
  string(REPLACE "/" "_" name "${folder}")
  set(${result} "quenlet_${name}" PARENT_SCOPE)
endfunction()

function(_quenlet_link target visibility)
  foreach(dependency IN LISTS ARGN)
    _quenlet_target_name("${dependency}" folderTarget)
    if(TARGET ${folderTarget})
      target_link_libraries(${target} ${visibility} ${folderTarget})
    else()
      target_link_libraries(${target} ${visibility} ${dependency})
    endif()
  endforeach()
endfunction()

function(quenlet_library folder)
  cmake_parse_arguments(ARG "" "" "DEPENDS;PRIVATE" ${ARGN})
  _quenlet_target_name("${folder}" target)
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_link_libraries(${target} PUBLIC quenlet_options)
    _quenlet_link(${target} PUBLIC ${ARG_DEPENDS})
    _quenlet_link(${target} PRIVATE ${ARG_PRIVATE})
  else()
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE quenlet_options)
    _quenlet_link(${target} INTERFACE ${ARG_DEPENDS})
  endif()
endfunction()

# Compiles folders for size rather than speed: code that no request waits for, but that counts in the
# memory of every agent, since the kernel maps what lies around each page in use.
function(quenlet_for_size)
  foreach(folder IN LISTS ARGN)
    _quenlet_target_name("${folder}" target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release,RelWithDebInfo,None>:-Os>)
  endforeach()
endfunction()

# A library that programs load when they need it, from the sources of one folder. It stands in
# lib/quenlet/<version> below the prefix that bin is in, in the build tree as in an install, which is
# where programs of this version look for it.
function(quenlet_module module folder)
  cmake_parse_arguments(ARG "" "" "PRIVATE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
  set(target "quenlet_${module}")
  add_library(${target} MODULE ${sources})
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME "${module}"
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib/quenlet/${PROJECT_VERSION}")
  target_link_libraries(${target} PRIVATE quenlet_options ${ARG_PRIVATE})
  if(QUENLET_INSTALL)
    cmake_path(GET CMAKE_INSTALL_BINDIR PARENT_PATH prefix)
    cmake_path(APPEND prefix lib quenlet "${PROJECT_VERSION}" OUTPUT_VARIABLE destination)
    install(TARGETS ${target} LIBRARY DESTINATION "${destination}")
  endif()
endfunction()

# A program from all sources of one folder, for the build tree alone unless INSTALL says where to.
function(quenlet_program program folder)
  cmake_parse_arguments(ARG "" "INSTALL" "DEPENDS;PRIVATE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
  if(NOT sources)
    return()
  endif()
  add_executable(${program} ${sources})
  _quenlet_link(${program} PRIVATE ${ARG_DEPENDS} ${ARG_PRIVATE})
  if(QUENLET_INSTALL AND ARG_INSTALL)
    install(TARGETS ${program} RUNTIME DESTINATION "${ARG_INSTALL}")
  endif()
endfunction()

# A program that nobody starts by hand. It stands in libexec/quenlet below the prefix, in the build tree
# as in an install.
function(quenlet_helper program folder)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
  add_executable(${program} ${sources})
  _quenlet_link(${program} PRIVATE ${ARG_DEPENDS})
  set_target_properties(${program} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/libexec/quenlet")
  quenlet_only_owner_writes(${program})
  if(QUENLET_INSTALL)
    cmake_path(GET CMAKE_INSTALL_BINDIR PARENT_PATH prefix)
    cmake_path(APPEND prefix libexec quenlet OUTPUT_VARIABLE destination)
    install(TARGETS ${program} RUNTIME DESTINATION "${destination}")
  endif()
endfunction()

# Under any umask of the builder's: the agent answers no program that others can write.
function(quenlet_only_owner_writes program)
  add_custom_command(TARGET ${program} POST_BUILD COMMAND chmod go-w "$<TARGET_FILE:${program}>"
    VERBATIM)
endfunction()

# A program that the agent of the same build tree serves; an install knows nothing of it.
function(quenlet_built_client program)
  quenlet_only_owner_writes(${program})
  set(entitlements "${PROJECT_BINARY_DIR}/share/quenlet/entitlements/${program}.plist")
  file(CONFIGURE OUTPUT "${entitlements}" @ONLY CONTENT
    "<plist version=\"1.0\"><dict><key>bin/${program}</key><dict>
     <key>ovaro.private.contacts</key><true/></dict></dict></plist>\n")
  file(CHMOD "${entitlements}" FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

# One GoogleTest program.
function(quenlet_tests program)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${program} ${ARG_SOURCES})
  _quenlet_link(${program} PRIVATE ${ARG_DEPENDS} GTest::gtest_main GTest::gmock)
  gtest_discover_tests(${program} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
