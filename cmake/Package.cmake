# Installed package: CMake config, pkg-config file.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/MirelAlgorithms)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/MirelAlgorithmsConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/package/MirelAlgorithmsConfig.cmake INSTALL_DESTINATION ${package_dir})
# cv::Mat is part of the interface, so only builds of one minor version replace each other.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/MirelAlgorithmsConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/MirelAlgorithmsConfig.cmake
              ${PROJECT_BINARY_DIR}/package/MirelAlgorithmsConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)
install(EXPORT MirelAlgorithmsTargets NAMESPACE MirelAlgorithms:: DESTINATION ${package_dir}
        COMPONENT development)

# The prefix of the .pc file is found from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/MirelAlgorithms.pc.in ${PROJECT_BINARY_DIR}/package/MirelAlgorithms.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/MirelAlgorithms.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
