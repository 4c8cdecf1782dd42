# Adds files to a Windows installation: the DLLs of Qt and of the compiler, the licences of everything that is linked,
# and the import library for programs built by other compilers. CPack makes a zip file and an installer from the
# installation. The script ../windows runs CPack.
set(LMCALTAB_LICENCES "" CACHE PATH "Folder with the licences of the libraries that are linked")

if(TARGET LmCalTab)
  set(modules Core Gui Widgets)
  if(TARGET LmView)
    list(APPEND modules Svg)
  endif()
  find_package(Qt5 5.15 REQUIRED COMPONENTS ${modules})
  foreach(module IN LISTS modules)
    install(FILES $<TARGET_FILE:Qt5::${module}> DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
  endforeach()
  install(FILES $<TARGET_FILE:Qt5::QWindowsIntegrationPlugin>
    DESTINATION ${CMAKE_INSTALL_BINDIR}/platforms COMPONENT programs)
  install(FILES $<TARGET_FILE:Qt5::QWindowsVistaStylePlugin>
    DESTINATION ${CMAKE_INSTALL_BINDIR}/styles COMPONENT programs)
  if(TARGET LmView) # its reports contain JPEG pictures
    install(FILES $<TARGET_FILE:Qt5::QJpegPlugin> DESTINATION ${CMAKE_INSTALL_BINDIR}/imageformats COMPONENT programs)
  endif()
endif()

if(MINGW)
  foreach(name IN ITEMS libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    # Debian's DLLs contain debug information. Without it, they are a tenth as large.
    execute_process(COMMAND ${CMAKE_STRIP} -o ${CMAKE_CURRENT_BINARY_DIR}/${name} ${file} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
  endforeach()
  install(FILES ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/LmLib64.def ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/LmLib64.lib
    DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT LmLib64Development)
endif()
if(LMCALTAB_LICENCES)
  install(DIRECTORY ${LMCALTAB_LICENCES}/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/licences COMPONENT programs)
endif()

set(CPACK_GENERATOR ZIP NSIS)
set(CPACK_PACKAGE_NAME LmCalTab)
set(CPACK_PACKAGE_VENDOR LmCalTab)
set(CPACK_PACKAGE_INSTALL_DIRECTORY LmCalTab)
set(CPACK_PACKAGE_FILE_NAME LmCalTab-${PROJECT_VERSION}-win64)
set(CPACK_NSIS_PACKAGE_NAME LmCalTab)
set(CPACK_STRIP_FILES ON)
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_INSTALL_CMAKE_PROJECTS "")
foreach(component IN ITEMS programs LmLib64 LmLib64Development)
  list(APPEND CPACK_INSTALL_CMAKE_PROJECTS ${PROJECT_BINARY_DIR} LmCalTab ${component} /)
endforeach()
# This folder contains our NSIS.template.in. CPack uses our template instead of the one that comes with CMake. An
# installer made from CMake's template would ask for administrator rights.
set(CPACK_MODULE_PATH ${PROJECT_SOURCE_DIR}/packaging/windows)
set(CPACK_LMCALTAB_ICON ${PROJECT_SOURCE_DIR}/packaging/windows/lmcaltab.ico)
set(CPACK_LMCALTAB_HAS_VIEWER 0)
if(TARGET LmView)
  set(CPACK_LMCALTAB_HAS_VIEWER 1)
endif()
include(CPack)
