# The modules of pkg-config that the library of the desktop links, for the build and for hosts of the static library.
qoro_find(QORO_DISPLAYS gtk4-x11 gtk4-wayland x11 wayland-client)
qoro_find(QORO_GIO gio-2.0)
qoro_find(QORO_GLIB glib-2.0)
qoro_find(QORO_GOBJECT gobject-2.0)
qoro_find(QORO_GSTREAMER gstreamer-1.0 gstreamer-base-1.0 gstreamer-app-1.0 gstreamer-audio-1.0
          gstreamer-video-1.0 gstreamer-pbutils-1.0)
qoro_find(QORO_GTK4 gtk4)
qoro_find(QORO_ICAL libical)
qoro_find(QORO_PANGOCAIRO pangocairo)
qoro_find(QORO_PULSE libpulse libpulse-mainloop-glib)
qoro_find(QORO_SOUP libsoup-3.0)
