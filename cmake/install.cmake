# cmake --install: the kit's library, its public headers (include/obolo/...),
# its resources (share/obolo/), a CMake package (find_package(Obolo CONFIG),
# targets Obolo::obolo and Obolo::render) and a pkg-config file (obolo.pc).
include(CMakePackageConfigHelpers)

set(OBOLO_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Obolo)

install(TARGETS obolo obolo_render EXPORT OboloTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/obolo COMPONENT headers)
install(EXPORT OboloTargets NAMESPACE Obolo:: DESTINATION ${OBOLO_CMAKE_PACKAGE_DIR})

# The kit's bundle: its description and images, where the installed library
# looks for them (platform/bundle.cc).
install(FILES
  ${OBOLO_RESOURCES_DIR}/Info.json
  ${OBOLO_RESOURCES_DIR}/background.png
  ${OBOLO_RESOURCES_DIR}/blankbox.png
  ${OBOLO_RESOURCES_DIR}/checkbox.png
  ${OBOLO_RESOURCES_DIR}/wallet-icon.png
  DESTINATION ${OBOLO_INSTALL_RESOURCES_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/OboloConfig.cmake.in
  ${PROJECT_BINARY_DIR}/OboloConfig.cmake
  INSTALL_DESTINATION ${OBOLO_CMAKE_PACKAGE_DIR}
  PATH_VARS OBOLO_INSTALL_RESOURCES_DIR)
# Before 1.0 a minor version may change the interface, so only the same
# major.minor satisfies a request; from 1.0 on, the same major.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(OBOLO_COMPATIBILITY SameMinorVersion)
else()
  set(OBOLO_COMPATIBILITY SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OboloConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY ${OBOLO_COMPATIBILITY})
install(FILES ${PROJECT_BINARY_DIR}/OboloConfig.cmake ${PROJECT_BINARY_DIR}/OboloConfigVersion.cmake
  DESTINATION ${OBOLO_CMAKE_PACKAGE_DIR})

# The .pc file names its prefix relative to itself, so a moved prefix still
# gives the right flags.
file(RELATIVE_PATH OBOLO_PC_PREFIX_FROM_PCDIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" OBOLO_PC_PREFIX_FROM_PCDIR "${OBOLO_PC_PREFIX_FROM_PCDIR}")
file(RELATIVE_PATH OBOLO_PC_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH OBOLO_PC_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/obolo.pc.in ${PROJECT_BINARY_DIR}/obolo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/obolo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
