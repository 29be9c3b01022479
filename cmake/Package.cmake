# The installed package: two libraries, shared unless BUILD_SHARED_LIBS is off, with their headers; for CMake
# find_package(QoroVideoAd COMPONENTS Controller Simulator Desktop), and a file for pkg-config for each library.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(cmake/PublicHeaders.cmake)
set(QORO_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/QoroVideoAd)

# qoro_install_library(COMPONENT NAME LIBRARY…): makes libNAME of the objects of static libraries, and installs it as the
# package's component. The tests and the program link the static libraries.
function(qoro_install_library component name)
    set(objects)
    foreach(library IN LISTS ARGN)
        list(APPEND objects $<TARGET_OBJECTS:${library}>)
    endforeach()
    add_library(${name} ${objects})
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:qoro_flags>)
    target_link_options(${name} PRIVATE -Wl,--version-script,${PROJECT_SOURCE_DIR}/cmake/Exported.map)
    set_target_properties(${name} PROPERTIES
        EXPORT_NAME ${component}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/Exported.map
        LINKER_LANGUAGE CXX)
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        # Elsewhere, one library finds the other beside it.
        set_target_properties(${name} PROPERTIES INSTALL_RPATH $ORIGIN)
    endif()
    target_compile_features(${name} INTERFACE cxx_std_20)
    target_include_directories(${name} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    add_library(QoroVideoAd::${component} ALIAS ${name})
    install(TARGETS ${name} EXPORT QoroVideoAd${component}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
    install(EXPORT QoroVideoAd${component} NAMESPACE QoroVideoAd:: DESTINATION ${QORO_PACKAGE}
            FILE QoroVideoAd${component}Targets.cmake COMPONENT development)
endfunction()

# qoro_install_pkg_config(NAME DESCRIPTION REQUIRES PRIVATE): PRIVATE are the modules that the library itself links.
function(qoro_install_pkg_config name description requires private)
    if(NOT BUILD_SHARED_LIBS)
        string(JOIN " " requires ${requires} ${private})
        set(more "-lstdc++")
    endif()
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.pc @ONLY CONTENT [[
prefix=${pcfiledir}/@QORO_PC_PREFIX@
libdir=${prefix}/@CMAKE_INSTALL_LIBDIR@
includedir=${prefix}/@CMAKE_INSTALL_INCLUDEDIR@

Name: @name@
Description: @description@
Version: @PROJECT_VERSION@
Requires: @requires@
Libs: -L${libdir} -l@name@ @more@
Cflags: -I${includedir}
]])
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
file(RELATIVE_PATH QORO_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)

# qoro_find(NAME MODULE…): the target PkgConfig::NAME, and the modules for pkg-config. The configuration file of the
# package has a macro of the same name.
macro(qoro_find name)
    pkg_check_modules(${name} REQUIRED QUIET IMPORTED_TARGET ${ARGN})
    list(APPEND QORO_MODULES ${ARGN})
    list(APPEND QORO_MODULE_TARGETS PkgConfig::${name})
endmacro()

# The simulator needs nothing more than the controller: they are one library.
qoro_install_library(Controller qoro-video-ad
    qoro_platform qoro_json qoro_views qoro_kit qoro_controller qoro_formats qoro_host qoro_simulator qoro_vast)
qoro_find(QORO_LIBMD libmd)
qoro_find(QORO_PUGIXML pugixml)
target_link_libraries(qoro-video-ad PRIVATE ${QORO_MODULE_TARGETS})
qoro_install_pkg_config(qoro-video-ad "Full-screen video ads" "" "${QORO_MODULES}")
add_library(qoro_package_simulator INTERFACE)
target_link_libraries(qoro_package_simulator INTERFACE qoro-video-ad)
set_target_properties(qoro_package_simulator PROPERTIES EXPORT_NAME Simulator)
install(TARGETS qoro_package_simulator EXPORT QoroVideoAdSimulator)
install(EXPORT QoroVideoAdSimulator NAMESPACE QoroVideoAd:: DESTINATION ${QORO_PACKAGE}
        FILE QoroVideoAdSimulatorTargets.cmake COMPONENT development)

if(QORO_DESKTOP)
    qoro_install_library(Desktop qoro-video-ad-desktop
        qoro_desktop qoro_desktop_cache qoro_desktop_calendar qoro_desktop_device qoro_desktop_glib
        qoro_desktop_images qoro_desktop_loop qoro_desktop_media qoro_desktop_net qoro_desktop_screen
        qoro_desktop_text qoro_desktop_web qoro_host_desktop qoro_script_library)
    set(QORO_MODULES)
    set(QORO_MODULE_TARGETS)
    include(${PROJECT_SOURCE_DIR}/cmake/DesktopModules.cmake)
    find_package(Threads REQUIRED)
    target_link_libraries(qoro-video-ad-desktop PUBLIC qoro-video-ad
                          PRIVATE ${QORO_MODULE_TARGETS} Threads::Threads ${CMAKE_DL_LIBS})
    qoro_install_pkg_config(qoro-video-ad-desktop "Full-screen video ads on the Linux desktop"
                            "qoro-video-ad = ${PROJECT_VERSION}" "${QORO_MODULES}")
    if(NOT BUILD_SHARED_LIBS)
        install(FILES cmake/DesktopModules.cmake DESTINATION ${QORO_PACKAGE} COMPONENT development)
    endif()
endif()
install(DIRECTORY ${QORO_PUBLIC}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(TARGETS qoro-ad RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
if(QORO_DESKTOP)
    install(TARGETS qoro-ad-desktop RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/qoro-ad COMPONENT program)
endif()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QoroVideoAdConfig.cmake.in
    ${PROJECT_BINARY_DIR}/QoroVideoAdConfig.cmake INSTALL_DESTINATION ${QORO_PACKAGE}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QoroVideoAdConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QoroVideoAdConfig.cmake ${PROJECT_BINARY_DIR}/QoroVideoAdConfigVersion.cmake
        DESTINATION ${QORO_PACKAGE} COMPONENT development)
