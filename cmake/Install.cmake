include(CMakePackageConfigHelpers)

set(ORLIX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Orlix)

install(TARGETS Orlix EXPORT OrlixTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/Orlix DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT OrlixTargets NAMESPACE Orlix:: DESTINATION ${ORLIX_CMAKE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/OrlixConfig.cmake.in OrlixConfig.cmake
                              INSTALL_DESTINATION ${ORLIX_CMAKE_DIR})
write_basic_package_version_file(OrlixConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/OrlixConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/OrlixConfigVersion.cmake
        DESTINATION ${ORLIX_CMAKE_DIR})

configure_file(${CMAKE_CURRENT_LIST_DIR}/orlix.pc.in orlix.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orlix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
