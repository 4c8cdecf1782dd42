# Functions for the targets that are installed. They install nothing unless LMCALTAB_INSTALL is on.
include(CMakePackageConfigHelpers)

function(lmcaltab_install_program target)
  if(LMCALTAB_INSTALL)
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
  endif()
endfunction()

# Installs a shared library for other projects, with its headers, a CMake package and a file for pkg-config. The package
# has the name of the target and defines TARGET::TARGET. In this build, TARGET::TARGET is an alias of the target.
#   DESCRIPTION        one line
#   HEADERS            the public headers
#   HEADER_DIRECTORY   the folder below include/ in which they are installed
#   DEPENDENCIES       find_dependency() lines for the CMake package. They find the other libraries that the public
#                      headers depend on
#   REQUIRES           the pkg-config modules of these other libraries
function(lmcaltab_install_library target)
  cmake_parse_arguments(PARSE_ARGV 1 library "" "DESCRIPTION;HEADER_DIRECTORY;REQUIRES" "HEADERS;DEPENDENCIES")
  add_library(${target}::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES SPDX_LICENSE MIT EXPORT_PROPERTIES SPDX_LICENSE)
  if(NOT LMCALTAB_INSTALL)
    return()
  endif()
  set(component ${target}Development)
  install(TARGETS ${target} EXPORT ${target}Targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${target}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${target} NAMELINK_COMPONENT ${component}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(FILES ${library_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${library_HEADER_DIRECTORY}
    COMPONENT ${component})

  set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/${target})
  install(EXPORT ${target}Targets NAMESPACE ${target}:: DESTINATION ${package_directory} COMPONENT ${component})
  set(package ${target})
  list(JOIN library_DEPENDENCIES "\n" dependencies)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/package_config.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/${target}Config.cmake INSTALL_DESTINATION ${package_directory})
  write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${target}ConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${target}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${target}ConfigVersion.cmake
    DESTINATION ${package_directory} COMPONENT ${component})

  # The paths in the pkg-config file are relative to the file itself, so that they stay valid if the installation is
  # moved.
  file(RELATIVE_PATH prefix_from_file /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(TOLOWER ${target} module)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/module.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT ${component})
endfunction()

# Adds a shared library for other projects. It consists of the objects of a static library, so that tests can link the
# static library and call its internal functions. The shared library exports the symbols that its headers mark for
# export. On Unix systems other than macOS, exported_symbols.map in the library's folder must also list these symbols.
# On Windows, the headers export their functions if PREFIX_BUILDING is defined, and otherwise import them. Code that
# links the static library is compiled with PREFIX_STATIC, so that the headers do not import the functions. Versions 0.x
# promise no fixed ABI, so the minor number is part of the library's file name.
function(lmcaltab_add_shared_library target objects prefix)
  if(WIN32)
    target_compile_definitions(${objects} PRIVATE ${prefix}_BUILDING PUBLIC ${prefix}_STATIC)
  endif()
  add_library(${target} SHARED $<TARGET_OBJECTS:${objects}>)
  get_target_property(libraries ${objects} LINK_LIBRARIES)
  target_link_libraries(${target} PRIVATE ${libraries})
  set_target_properties(${target} PROPERTIES
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  if(UNIX AND NOT APPLE)
    set(symbols ${CMAKE_CURRENT_SOURCE_DIR}/exported_symbols.map)
    target_link_options(${target} PRIVATE LINKER:--version-script=${symbols})
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${symbols})
  endif()
endfunction()
