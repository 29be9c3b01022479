# The installed package: find_package(QoroVideoAd COMPONENTS Controller Simulator Desktop).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(cmake/PublicHeaders.cmake)
set(QORO_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/QoroVideoAd)

# The base of all our libraries.
target_compile_features(qoro_platform PUBLIC cxx_std_20)
target_include_directories(qoro_platform INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

# A component: the target that a host links, and the libraries it needs.
function(qoro_install_component name entry)
    add_library(qoro_package_${name} INTERFACE)
    target_link_libraries(qoro_package_${name} INTERFACE ${entry})
    set_target_properties(qoro_package_${name} PROPERTIES EXPORT_NAME ${name})
    install(TARGETS qoro_package_${name} ${ARGN} EXPORT QoroVideoAd${name}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(EXPORT QoroVideoAd${name} NAMESPACE QoroVideoAd:: DESTINATION ${QORO_PACKAGE}
            FILE QoroVideoAd${name}Targets.cmake)
endfunction()

qoro_install_component(Controller qoro_host
    qoro_platform qoro_json qoro_views qoro_kit qoro_controller qoro_formats qoro_host)
qoro_install_component(Simulator qoro_simulator qoro_simulator)
if(QORO_DESKTOP)
    qoro_install_component(Desktop qoro_host_desktop
        qoro_desktop qoro_desktop_cache qoro_desktop_calendar qoro_desktop_device qoro_desktop_glib
        qoro_desktop_images
        qoro_desktop_loop qoro_desktop_media
        qoro_desktop_net qoro_desktop_screen qoro_desktop_text qoro_desktop_web qoro_host_desktop qoro_script_library)
endif()
install(DIRECTORY ${QORO_PUBLIC}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS qoro-ad RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QoroVideoAdConfig.cmake.in
    ${PROJECT_BINARY_DIR}/QoroVideoAdConfig.cmake INSTALL_DESTINATION ${QORO_PACKAGE}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QoroVideoAdConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QoroVideoAdConfig.cmake ${PROJECT_BINARY_DIR}/QoroVideoAdConfigVersion.cmake
        DESTINATION ${QORO_PACKAGE})
