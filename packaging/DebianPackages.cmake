# Defines the Debian packages that ./package makes: one with the programs, two for each library (one with the shared
# library, one with its development files), and one with the Python package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lmcaltab)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The dependencies on Debian's packages are found from the binaries. The dependencies of our packages on each other are
# named below, because their versions must be equal.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")

# If DEBEMAIL is set, the person who builds the packages is named as their maintainer. DEBEMAIL and DEBFULLNAME are the
# environment variables that Debian's own tools use.
set(maintainer "the LmCalTab authors <authors@example.org>")
if(DEFINED ENV{DEBEMAIL})
  set(maintainer "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(CPACK_PACKAGE_CONTACT ${maintainer})

# The script add_documents.cmake adds the documents to each package and compresses the manual pages.
string(TIMESTAMP LMCALTAB_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(LMCALTAB_MAINTAINER ${maintainer})
configure_file(packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/packaging/changelog @ONLY)
set(CPACK_LMCALTAB_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_LMCALTAB_CHANGELOG ${PROJECT_BINARY_DIR}/packaging/changelog)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/add_documents.cmake)

# debian_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION DEPENDS...): makes a package NAME from the files of an
# install component.
macro(debian_package component name section summary description)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
  string(REPLACE ";" ", " CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${ARGN}")
  set(CPACK_LMCALTAB_${component}_PACKAGE ${name})
endmacro()

set(CPACK_COMPONENTS_ALL "")
set(same "(= ${PROJECT_VERSION})")
set(short_version ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(reader libpatternreader${short_version})
set(calibration libcalibration${short_version})

debian_package(programs lmcaltab science
  "design printed calibration targets and calibrate cameras with them"
  "LmCalTab designs printed targets for the calibration of stereo cameras,
3D cameras, robots and other movement systems. It shows the targets while
you set their size and saves them as files that print at true size. LmView
reads photographs of the targets, calibrates the cameras and states how far
the result can be trusted. draw_pattern, read_pattern and calibrate_cameras
do the same from the shell. The manual is included."
  "liblmlib64 ${same}")
debian_package(LmLib64 liblmlib64 libs
  "camera library that draws calibration targets"
  "LmLib64 draws printed calibration targets as PDF, SVG, DXF, PNG and JSON,
and as images for a preview. Its interface is a tree of nodes behind flat C
functions.")
debian_package(LmLib64Development liblmlib64-dev libdevel
  "camera library that draws calibration targets, development files"
  "The header, the CMake package and the pkg-config file of LmLib64, which
draws printed calibration targets."
  "liblmlib64 ${same}")
debian_package(PatternReader ${reader} libs
  "finds printed calibration targets in photographs"
  "PatternReader finds the coded patterns of LmCalTab, plain checkerboards and
plates with round marks in images, with a standard deviation for each corner.")
debian_package(PatternReaderDevelopment libpatternreader-dev libdevel
  "finds printed calibration targets in photographs, development files"
  "The headers, the CMake package and the pkg-config file of PatternReader,
which finds printed calibration targets in images."
  "${reader} ${same}" libopencv-dev)
debian_package(Calibration ${calibration} libs
  "computes camera calibrations with their uncertainty"
  "Calibration computes lenses, the poses of cameras and prints, and the shapes
of prints in one solve. Its input is corners that were found in images. It
states how far each result can be trusted.")
debian_package(CalibrationDevelopment libcalibration-dev libdevel
  "computes camera calibrations with their uncertainty, development files"
  "The headers, the CMake package and the pkg-config file of Calibration,
which computes camera calibrations from corners in images."
  "${calibration} ${same}" libeigen3-dev)
foreach(library IN ITEMS LMLIB64 PATTERNREADER CALIBRATION)
  set(CPACK_DEBIAN_${library}_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/library/triggers)
endforeach()

if(LMCALTAB_PYTHON)
  find_package(Python REQUIRED COMPONENTS Interpreter)
  math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
  debian_package(python python3-lmlib64 python
    "calibration targets and camera calibration for Python"
    "The Python package lmlib64 draws printed calibration targets into files and
numpy arrays, finds them in numpy arrays and calibrates cameras."
    "liblmlib64 ${same}" "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR})"
    "python3 (<< ${Python_VERSION_MAJOR}.${next_minor})" python3-numpy)
  # These scripts compile the modules after the installation, and remove the compiled files before the package is
  # removed.
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/python/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/python/prerm)
endif()
include(CPack)
