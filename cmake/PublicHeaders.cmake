# The headers of the package. They are copied below ${QORO_PUBLIC}/qoro, where their #include lines name each other as a
# host does: <qoro/OpenedAd.h>. A public header includes public headers only.
set(QORO_PUBLIC ${PROJECT_BINARY_DIR}/include)

# Opens an ad and reports its outcome.
set(QORO_PUBLIC_CONTROLLER
    Base/VideoPlayer/QoroVideoAd.h
    formats/AdFile.h
    formats/HostSetup.h
    formats/InputError.h
    formats/LogSink.h
    host/AdObserver.h
    host/AdOutcome.h
    host/OpenedAd.h
    # The same for a VAST tag.
    host/OpenedTag.h
    vast/Macros.h
    vast/MediaChoice.h
    vast/Model.h
    vast/Reader.h
    vast/Resolver.h
    kit/Accessible.h
    kit/CloseGuardTimes.h
    kit/Consent.h
    kit/OriginHeaders.h
    # The ports and the view tree, for a platform of the host's own.
    platform/AddressParts.h
    platform/CalendarEvent.h
    platform/EventTable.h
    platform/Events.h
    platform/VastEvents.h
    platform/Export.h
    platform/Foundation.h
    platform/Geometry.h
    platform/KitEnumerations.h
    platform/Object.h
    platform/Orientation.h
    platform/Platform.h
    platform/Ports.h
    platform/Purposes.h
    platform/StoreItem.h
    platform/Translatable.h
    platform/UIKit.h
    platform/Value.h
    views/TearDown.h
    views/ViewNode.h)
set(QORO_PUBLIC_SIMULATOR
    formats/World.h
    simulator/Simulator.h)
set(QORO_PUBLIC_DESKTOP
    desktop/net/AdServerHit.h
    desktop/screen/Toolkit.h
    desktop/web/WebSandbox.h
    host/desktop/Desktop.h
    host/desktop/DesktopTag.h
    host/desktop/Preload.h
    host/desktop/ServedAd.h)

# qoro_public_name(HEADER VARIABLE): the name behind qoro/. The ports, VAST and the views keep their folder.
function(qoro_public_name header variable)
    if(NOT header MATCHES "^(platform|vast|views)/")
        get_filename_component(header ${header} NAME)
    endif()
    set(${variable} ${header} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${QORO_PUBLIC})
set(QORO_PUBLIC_HEADERS ${QORO_PUBLIC_CONTROLLER} ${QORO_PUBLIC_SIMULATOR})
if(QORO_DESKTOP)
    list(APPEND QORO_PUBLIC_HEADERS ${QORO_PUBLIC_DESKTOP})
endif()
foreach(header IN LISTS QORO_PUBLIC_HEADERS)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${header})
    file(READ ${PROJECT_SOURCE_DIR}/${header} text)
    string(REGEX MATCHALL "#include \"[^\"]+\"" includes "${text}")
    foreach(line IN LISTS includes)
        string(REGEX REPLACE "#include \"(.+)\"" "\\1" included "${line}")
        if(NOT included IN_LIST QORO_PUBLIC_HEADERS)
            message(FATAL_ERROR "${header} is public and includes ${included}, which is not (cmake/PublicHeaders.cmake)")
        endif()
        qoro_public_name(${included} name)
        string(REPLACE "${line}" "#include <qoro/${name}>" text "${text}")
    endforeach()
    qoro_public_name(${header} name)
    file(WRITE ${QORO_PUBLIC}/qoro/${name} "${text}")
    list(APPEND QORO_PUBLIC_NAMES ${name})
endforeach()

# <qoro/qoro.h> includes every other header.
set(text "#pragma once\n\n#include <qoro/Version.h>\n")
list(SORT QORO_PUBLIC_NAMES)
foreach(name IN LISTS QORO_PUBLIC_NAMES)
    string(APPEND text "#include <qoro/${name}>\n")
endforeach()
file(WRITE ${QORO_PUBLIC}/qoro/qoro.h "${text}")
file(COPY ${PROJECT_BINARY_DIR}/generated/qoro/Version.h DESTINATION ${QORO_PUBLIC}/qoro)
