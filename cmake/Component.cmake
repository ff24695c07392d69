# The component: the bundle that plug-ins load. Built alike against the Mac's frameworks and, on
# Linux, against the layer in platform/.

add_library(component OBJECT
    frame/BaseProductManager.cpp
    frame/Bundle.cpp
    frame/BuildNumber.cpp
    frame/Entry.cpp
    frame/Image.cpp
    frame/ProductManager.cpp
    frame/Version.cpp
    prefs/PreferenceStore.cpp
    ui/DialogToolkit.cpp
    ui/HelpViewer.cpp
    ui/InfoDialog.cpp
)
set_target_properties(component PROPERTIES CXX_STANDARD 11)
target_include_directories(component PUBLIC "${CMAKE_SOURCE_DIR}")

# A reproducible build states its date; SOURCE_DATE_EPOCH decides it (clang 14 does not read that
# itself). The compiler's own form pads the day with a blank.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    string(TIMESTAMP compile_date "%b %d %Y" UTC)
    string(REPLACE " 0" "  " compile_date "${compile_date}")
    set_source_files_properties(frame/BuildNumber.cpp PROPERTIES
        COMPILE_DEFINITIONS "CV_COMPILE_DATE=\"${compile_date}\"")
endif()

# Where a click on the logo of the information dialog leads.
set(CV_SITE_URL "https://www.corvane.example/" CACHE STRING "Address of the maker's web site")
set_source_files_properties(ui/InfoDialog.cpp PROPERTIES COMPILE_DEFINITIONS "CV_SITE_URL=\"${CV_SITE_URL}\"")

add_library(Quillets MODULE $<TARGET_OBJECTS:component>)
set_target_properties(Quillets PROPERTIES PREFIX "" SUFFIX "")

if(APPLE)
    target_compile_options(component PRIVATE -Wno-deprecated-declarations)
    foreach(framework Carbon CoreFoundation ApplicationServices QuickTime)
        target_link_libraries(Quillets PRIVATE "-framework ${framework}")
    endforeach()
    set_target_properties(component Quillets PROPERTIES OSX_ARCHITECTURES i386)
    set_target_properties(Quillets PROPERTIES BUNDLE ON BUNDLE_EXTENSION bundle
        MACOSX_BUNDLE_INFO_PLIST "${CMAKE_SOURCE_DIR}/resources/Info.plist")
    add_custom_command(TARGET Quillets POST_BUILD COMMAND "${CMAKE_COMMAND}" -E copy_directory
        "${CMAKE_SOURCE_DIR}/resources/Resources" "$<TARGET_BUNDLE_CONTENT_DIR:Quillets>/Resources")
else()
    set(CV_BUNDLE "${CMAKE_BINARY_DIR}/Quillets.bundle")
    set(modules "")
    if(CV_MODULES)
        set(modules cvplatform-image cvplatform-launch cvplatform-x11)
    endif()
    list(TRANSFORM modules REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE module_files)
    target_link_libraries(component PUBLIC cvplatform)
    target_link_libraries(Quillets PRIVATE cvplatform)
    target_link_options(Quillets PRIVATE -Wl,-Bsymbolic)  # no other bundle's class may take ours' place
    # An installed layer serves every bundle on the machine; the bundle's own copy serves elsewhere.
    set_target_properties(Quillets PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY "${CV_BUNDLE}/Contents/MacOS"
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH "${CMAKE_INSTALL_FULL_LIBDIR};$ORIGIN/../Frameworks")
    add_custom_command(TARGET Quillets POST_BUILD
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${CV_BUNDLE}/Contents/Frameworks"
        COMMAND "${CMAKE_COMMAND}" -E copy_if_different "$<TARGET_FILE:cvplatform>"
                "${CV_BUNDLE}/Contents/Frameworks/$<TARGET_SONAME_FILE_NAME:cvplatform>")
    if(modules)
        add_custom_command(TARGET Quillets POST_BUILD
            COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${module_files} "${CV_BUNDLE}/Contents/Frameworks/")
        add_dependencies(Quillets ${modules})
    endif()
    # Resources change without the code; what is gone from the source goes from the bundle too.
    add_custom_target(bundle_resources ALL
        COMMAND "${CMAKE_COMMAND}" -E rm -rf "${CV_BUNDLE}/Contents/Resources"
        COMMAND "${CMAKE_COMMAND}" -E copy_directory "${CMAKE_SOURCE_DIR}/resources/Resources"
                "${CV_BUNDLE}/Contents/Resources"
        COMMAND "${CMAKE_COMMAND}" -E copy_if_different "${CMAKE_SOURCE_DIR}/resources/Info.plist"
                "${CV_BUNDLE}/Contents/Info.plist"
        VERBATIM)
    add_dependencies(bundle_resources Quillets)
endif()
