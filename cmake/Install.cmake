# What `cmake --install` puts where, in three components: runtime (bundle and layer), development
# (headers and what finds them) and tools. cmake/Package.cmake makes packages of them.
include(CMakePackageConfigHelpers)

# Compresses SOURCE into NAME.gz in the build folder, the same bytes each time.
find_program(GZIP gzip REQUIRED)
function(cv_gzip source name)
    configure_file("${CMAKE_SOURCE_DIR}/${source}" "${CMAKE_BINARY_DIR}/${name}" COPYONLY)
    execute_process(COMMAND "${GZIP}" -9nfk "${name}"
        WORKING_DIRECTORY "${CMAKE_BINARY_DIR}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The bundle lies in one fixed place below the prefix, so that plug-ins need not know the machine's
# name for its library folder.
set(CV_INSTALL_BUNDLE lib/corvane/Quillets.bundle)
set(CV_INSTALL_INCLUDES "${CMAKE_INSTALL_INCLUDEDIR}/corvane")
set(CV_INSTALL_CMAKE "${CMAKE_INSTALL_LIBDIR}/cmake/CorvaneProduct")

# The layer finds its modules beside its own file: in the library folder, and in the bundle, which
# keeps copies of all of them so that it works wherever it is copied to.
set(modules "")
foreach(module cvplatform-x11 cvplatform-launch cvplatform-image)
    if(TARGET ${module})
        list(APPEND modules ${module})
        # What lies in a library folder carries its name for the loader's tools.
        target_link_options(${module} PRIVATE "-Wl,-soname,$<TARGET_FILE_NAME:${module}>")
    endif()
endforeach()

install(TARGETS cvplatform EXPORT CorvaneProductTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION "${CV_INSTALL_INCLUDES}")
install(TARGETS Quillets LIBRARY DESTINATION "${CV_INSTALL_BUNDLE}/Contents/MacOS" COMPONENT runtime)
install(TARGETS cvplatform
    LIBRARY DESTINATION "${CV_INSTALL_BUNDLE}/Contents/Frameworks" COMPONENT runtime NAMELINK_SKIP)
if(modules)
    install(TARGETS ${modules} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime)
    install(TARGETS ${modules}
        LIBRARY DESTINATION "${CV_INSTALL_BUNDLE}/Contents/Frameworks" COMPONENT runtime)
endif()
install(FILES "${CMAKE_SOURCE_DIR}/resources/Info.plist"
    DESTINATION "${CV_INSTALL_BUNDLE}/Contents" COMPONENT runtime)
install(DIRECTORY "${CV_BUNDLE}/Contents/Resources"
    DESTINATION "${CV_INSTALL_BUNDLE}/Contents" COMPONENT runtime PATTERN .gitkeep EXCLUDE)

install(FILES frame/IProductManager.h frame/ProductVersion.h
    DESTINATION "${CV_INSTALL_INCLUDES}/frame" COMPONENT development)
install(DIRECTORY platform/include/ DESTINATION "${CV_INSTALL_INCLUDES}" COMPONENT development)
set_target_properties(cvplatform PROPERTIES EXPORT_NAME Platform)
install(EXPORT CorvaneProductTargets NAMESPACE CorvaneProduct::
    DESTINATION "${CV_INSTALL_CMAKE}" COMPONENT development)
configure_package_config_file(cmake/CorvaneProductConfig.cmake.in
    "${CMAKE_BINARY_DIR}/CorvaneProductConfig.cmake"
    INSTALL_DESTINATION "${CV_INSTALL_CMAKE}"
    PATH_VARS CV_INSTALL_BUNDLE CV_INSTALL_INCLUDES)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/CorvaneProductConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/CorvaneProductConfig.cmake"
              "${CMAKE_BINARY_DIR}/CorvaneProductConfigVersion.cmake"
    DESTINATION "${CV_INSTALL_CMAKE}" COMPONENT development)

# pkg-config finds the prefix from where its file lies, so the tree may be moved.
file(RELATIVE_PATH prefix_from_pc "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/corvane-product.pc.in "${CMAKE_BINARY_DIR}/corvane-product.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/corvane-product.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

install(TARGETS quillets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
cv_gzip(docs/man/quillets.1 quillets.1)
install(FILES "${CMAKE_BINARY_DIR}/quillets.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)

# The same name as for those who find the installed package, for the examples in this tree.
add_library(product INTERFACE)
add_library(CorvaneProduct::Product ALIAS product)
target_include_directories(product INTERFACE "${CMAKE_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}/platform/include")
target_compile_definitions(product
    INTERFACE "CORVANE_BUNDLE=\"${CMAKE_INSTALL_PREFIX}/${CV_INSTALL_BUNDLE}\"")

# Removes what the last `cmake --install` of this build folder put in place; preferences stay.
add_custom_target(uninstall
    COMMAND "${CMAKE_COMMAND}" "-DMANIFEST=${CMAKE_BINARY_DIR}/install_manifest.txt"
            -P "${CMAKE_SOURCE_DIR}/cmake/Uninstall.cmake"
    VERBATIM)

include(cmake/Package.cmake)
