# Debian packages by CPack: library, development files, tool. `./dev package` makes them; the prefix must be /usr, so that
# libraries go to the folder of their architecture.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mirel-algorithms)
set(CPACK_PACKAGE_VENDOR "MirelAlgorithms developers")
set(CPACK_PACKAGE_CONTACT "MirelAlgorithms developers <mirel-algorithms@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DebianDocuments.cmake)

set(CPACK_COMPONENTS_ALL library development tool)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE mirel-algorithms)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/MirelAlgorithms ${PROJECT_BINARY_DIR}/host)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# The name follows the SONAME, so that two versions can be installed side by side.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libmirelalgorithms${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/package/triggers)
file(WRITE ${PROJECT_BINARY_DIR}/package/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "algorithms for structure from motion
Features of images and their descriptors, matching, image motion, filters for
inertial sensors, views and what they have seen, depth images, photographs of
surfaces, triangle meshes.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmirelalgorithms-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libopencv-dev, libeigen3-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "algorithms for structure from motion (development files)
Headers, CMake package and pkg-config file for programs that use the library
MirelAlgorithms.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME mirel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_TOOL_DEPENDS library)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "algorithms for structure from motion (command line tool)
Follows features from frame to frame, matches photographs, evaluates inertial
sensors and camera views, smooths depth images and points, simplifies meshes.
Every run leaves tables, pictures and one report for a web browser.")

include(CPack)
