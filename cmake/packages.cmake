# Debian packages: cpack -G DEB in a build folder that was configured with
# -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_SKIP_INSTALL_RPATH=ON, as scripts/packages does.

set(library_package libtarn${TARN_ABI})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(this_version "${library_package} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libtarn)
set(CPACK_PACKAGE_CONTACT "The authors of libtarn <libtarn@example.com>")
set(CPACK_COMPONENTS_ALL runtime development command)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(about "libtarn loads, queries, edits, validates, merges and prints configuration
documents of networks: XML with managed objects that are known by a
distinguished name and carry parameters.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "configuration documents of networks - shared library
${about}

This package has what programs need that use the library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtarn-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${this_version}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS libboost-dev)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "configuration documents of networks - development files
${about}

This package has the headers, the CMake package, the file for pkg-config and
the schema of the format.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME tarn)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${this_version}")
set(CPACK_DEBIAN_COMMAND_DESCRIPTION "configuration documents of networks - command
${about}

This package has the command tarn, which does the same for files.")

# Files that the Debian policy demands in every package, and compressed manuals.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/finishPackages.cmake)
set(CPACK_TARN_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_TARN_PACKAGES "runtime=${library_package};development=libtarn-dev;command=tarn")

include(CPack)
