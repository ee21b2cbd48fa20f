# What `cmake --install` puts under the prefix: the shared library with its
# public headers, the mrp program with its man pages and bash completion, a
# CMake package (find_package(MrpSm), target MrpSm::MrpSm) and a pkg-config
# file (mrpsm). The reference agent's bridge and everything test-only stay in
# the build tree.

include(CMakePackageConfigHelpers)

# The headers an embedding agent includes. They are installed together with
# every project header they include, found by following their includes, so a
# new include in a public header cannot leave the installed set incomplete.
set(MRP_PUBLIC_ENTRY_HEADERS
  MrpSm/MrpSm.h                # the engine and mrpSmFactory
  MrpSm/MrpSmRecords.h         # the records an engine is built from
  MrpSm/MrpLib.h               # the service object an agent derives from
  MrpModel/MrpWireFormat.h     # the applications' default framing
  MrpModel/MrpValueBytes.h     # value records as octets
  MrpMsrp/MsrpAttrType.h
  MrpMvrp/MvrpAttrType.h
  quarn/EventLoop.h            # real and simulated event loops
  quarn/System.h               # the process clock
  quarn/ClockScope.h           # installs a process clock for a scope
  quarn/Trace.h                # trace levels and sinks
  quarn/Log.h                  # where MRP_JOIN / MRP_LV / MRP_ERROR lines go
  quarn/NboAttrLog.h           # where an agent registers its attribute log output
  velo/PacketSocketPam.h       # ports on AF_PACKET sockets
  velo/MemPam.h                # ports on an in-memory wire, for an agent's own tests
  velo/PamFactoryScope.h)      # installs a process socket factory for a scope
set(MRP_HEADER_ROOTS ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/platform)

# Sets `out` to the file of `header` (a path as code includes it, e.g.
# "quarn/Ptr.h"), or to nothing for a header that is not the project's.
function(mrp_header_file header out)
  foreach(root IN LISTS MRP_HEADER_ROOTS)
    if(EXISTS ${root}/${header})
      set(${out} ${root}/${header} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${out} "" PARENT_SCOPE)
endfunction()

# Sets `out` to the entry headers and every project header they include,
# directly or not, as paths relative to a header root.
function(mrp_included_headers out)
  set(pending ${ARGN})
  set(found)
  while(pending)
    list(POP_FRONT pending header)
    if(header IN_LIST found)
      continue()
    endif()
    mrp_header_file(${header} path)
    if(NOT path)
      continue()
    endif()
    list(APPEND found ${header})
    # Configuration runs again when a header changes its includes.
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
    file(STRINGS ${path} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^\"]+)\".*" "\\1" included "${line}")
      list(APPEND pending ${included})
    endforeach()
  endwhile()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# Installed headers keep the paths code includes them by ("MrpSm/MrpSm.h",
# "quarn/EventLoop.h"), under a directory of their own rather than straight
# in include/, where names like quarn/ and velo/ would be in everybody's way.
set(MRP_INSTALL_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/MrpSm)
mrp_included_headers(MRP_PUBLIC_HEADERS ${MRP_PUBLIC_ENTRY_HEADERS})
foreach(header IN LISTS MRP_PUBLIC_HEADERS)
  mrp_header_file(${header} path)
  get_filename_component(subdir ${header} DIRECTORY)
  install(FILES ${path} DESTINATION ${MRP_INSTALL_HEADER_DIR}/${subdir})
endforeach()

install(TARGETS MrpSm EXPORT MrpSmTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${MRP_INSTALL_HEADER_DIR})

# The installed program finds the library beside it, wherever the prefix is,
# and the Graphviz plugins it links in their own directory (tools/CMakeLists.txt).
file(RELATIVE_PATH MRP_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
get_filename_component(MRP_GRAPHVIZ_PLUGIN_DIR ${GVPLUGIN_CORE} DIRECTORY)
set_target_properties(mrp PROPERTIES INSTALL_RPATH "$ORIGIN/${MRP_BIN_TO_LIB};${MRP_GRAPHVIZ_PLUGIN_DIR}")
install(TARGETS mrp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Each man page (doc/CMakeLists.txt) goes to the directory of its section.
foreach(page IN LISTS MRP_MAN_PAGES)
  string(REGEX REPLACE ".*\\.([1-9])$" "\\1" section ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
# Where bash-completion loads a command's completion from on first use.
install(FILES dist/bash-completion/mrp DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

# The CMake package: its files locate the prefix from where they are installed.
set(MRP_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/MrpSm)
install(EXPORT MrpSmTargets NAMESPACE MrpSm:: DESTINATION ${MRP_CMAKE_PACKAGE_DIR})
configure_package_config_file(cmake/MrpSmConfig.cmake.in ${PROJECT_BINARY_DIR}/MrpSmConfig.cmake
  INSTALL_DESTINATION ${MRP_CMAKE_PACKAGE_DIR})
# The soname changes with the major version, and so does compatibility.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/MrpSmConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/MrpSmConfig.cmake ${PROJECT_BINARY_DIR}/MrpSmConfigVersion.cmake
  DESTINATION ${MRP_CMAKE_PACKAGE_DIR})

# The pkg-config file finds the prefix from its own directory (${pcfiledir}),
# so the installed tree can move; directories given as absolute paths are
# written as they are.
set(MRP_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${MRP_PKGCONFIG_DIR})
  set(MRP_PKGCONFIG_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH MRP_PKGCONFIG_TO_PREFIX ${CMAKE_INSTALL_PREFIX}/${MRP_PKGCONFIG_DIR} ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" MRP_PKGCONFIG_TO_PREFIX ${MRP_PKGCONFIG_TO_PREFIX})
  set(MRP_PKGCONFIG_PREFIX "\${pcfiledir}/${MRP_PKGCONFIG_TO_PREFIX}")
endif()
set(MRP_PKGCONFIG_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(MRP_PKGCONFIG_INCLUDEDIR ${MRP_INSTALL_HEADER_DIR})
foreach(var MRP_PKGCONFIG_LIBDIR MRP_PKGCONFIG_INCLUDEDIR)
  if(NOT IS_ABSOLUTE ${${var}})
    set(${var} "\${prefix}/${${var}}")
  endif()
endforeach()
configure_file(cmake/mrpsm.pc.in ${PROJECT_BINARY_DIR}/mrpsm.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mrpsm.pc DESTINATION ${MRP_PKGCONFIG_DIR})
