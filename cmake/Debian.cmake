# Debian packages: qoro-ad, the libraries and their development files. tools/package.sh builds them; the prefix /usr is
# compiled in (translations) and decides the folders.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qoro-ad)
set(CPACK_PACKAGE_VENDOR "Qoro")
set(CPACK_PACKAGE_CONTACT "Qoro Video Ad <qoro-video-ad@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL program library development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The library's symbols have no stable interface before version 1.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_SECTION video)

set(library libqoro-video-ad${PROJECT_VERSION_MAJOR})
# What GStreamer and WebKit load at run time.
set(players "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
set(more_players "gstreamer1.0-plugins-bad, gstreamer1.0-libav, gstreamer1.0-pulseaudio, glib-networking, fonts-liberation")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME qoro-ad)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "Plays and simulates full-screen video ads
qoro-ad plays a video ad in a window that shows a device, or simulates whole
sessions of an ad in virtual time.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION}), ${players}")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "${more_players}")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "Full-screen video ads (libraries)
The libraries of the controller, of the simulator and of the Linux desktop, and
their translations.")
# Loaded for the first page and the first video, therefore not found among the libraries' dependencies.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libwebkitgtk-6.0-4, libavcodec59")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "${players}, ${more_players}")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqoro-video-ad-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Full-screen video ads (development files)
Headers, CMake package and files for pkg-config.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_GENERATE_SHLIBS OFF)
include(CPack)
