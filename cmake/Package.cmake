# Debian packages: `cpack -G DEB` in a build folder that was configured with the prefix /usr (the
# preset `package`). One package for each component of cmake/Install.cmake.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane-product)
set(CPACK_PACKAGE_VENDOR "Corvane Audio")
set(CPACK_PACKAGE_CONTACT "Corvane Audio <packages@corvane.example>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Folders and files get the rights that Debian wants whoever builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME corvane-product)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Product services that Corvane's plug-ins share
Gives Corvane's audio effect plug-ins their identity, the preferences that
they share, the product information dialog and help, through one object in
each process.")
# Only pages and addresses that the user opens need it.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "www-browser")
configure_file(cmake/debian/shlibs.in "${CMAKE_BINARY_DIR}/debian/shlibs" @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${CMAKE_BINARY_DIR}/debian/shlibs" "${CMAKE_SOURCE_DIR}/cmake/debian/triggers")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME corvane-product-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "corvane-product (= ${PROJECT_VERSION}-1)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Product services that Corvane's plug-ins share (headers)
Holds the headers of the product services and of the layer below them, and
what lets CMake and pkg-config find both.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME corvane-product-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "corvane-product (= ${PROJECT_VERSION}-1)")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Product services that Corvane's plug-ins share (command line)
Holds the program quillets, with which plug-in developers and support see
the product services as a plug-in does: identity, preferences, the dialog,
help and a self-check.")

# What Debian's policy wants beside the files: only packages, which stand below /usr, have it.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    cv_gzip(cmake/debian/changelog changelog.Debian)
    set(component_packages runtime corvane-product development corvane-product-dev tools corvane-product-tools)
    while(component_packages)
        list(POP_FRONT component_packages component package)
        install(FILES cmake/debian/copyright "${CMAKE_BINARY_DIR}/changelog.Debian.gz"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
        set(overrides "${CMAKE_SOURCE_DIR}/cmake/debian/${package}.lintian-overrides")
        if(EXISTS "${overrides}")
            install(FILES "${overrides}" DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides"
                RENAME ${package} COMPONENT ${component})
        endif()
    endwhile()
endif()

include(CPack)
