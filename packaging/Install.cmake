# What `cmake --install` puts in place: both programs, and on Linux the desktop entry, the icon,
# the AppStream metainfo and the manual pages at their freedesktop and FHS places.
include(GNUInstallDirs)

set(CORVANTA_APP_ID com.kelvanmoor.CorvantaSupport)
set(CORVANTA_ICON_SVG "${CMAKE_CURRENT_SOURCE_DIR}/resources/${CORVANTA_APP_ID}.svg")
set(CORVANTA_ICON_SIZES 16 24 32 48 64 128 256)

# Compresses a file for installing, with no time stamp in the gzip header.
function(corvanta_gzip source output)
    get_filename_component(folder "${output}" DIRECTORY)
    add_custom_command(OUTPUT "${output}"
        COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
        COMMAND sh -c "gzip -9 -n -c \"$0\" > \"$1\"" "${source}" "${output}"
        DEPENDS "${source}"
        VERBATIM)
endfunction()

# The window icon is drawn from the SVG at build time, so the program needs no SVG plugin at run
# time; the pictures go into the resources under ":/icons/".
find_program(CORVANTA_RSVG_CONVERT rsvg-convert REQUIRED)
set(icon_pictures)
foreach(size IN LISTS CORVANTA_ICON_SIZES)
    set(picture "${CMAKE_CURRENT_BINARY_DIR}/icons/${size}x${size}/${CORVANTA_APP_ID}.png")
    add_custom_command(OUTPUT "${picture}"
        COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/icons/${size}x${size}"
        COMMAND ${CORVANTA_RSVG_CONVERT} --width ${size} --height ${size} --output "${picture}"
                "${CORVANTA_ICON_SVG}"
        DEPENDS "${CORVANTA_ICON_SVG}"
        VERBATIM)
    set_source_files_properties("${picture}" PROPERTIES QT_RESOURCE_ALIAS "${size}.png")
    list(APPEND icon_pictures "${picture}")
endforeach()
qt_add_resources(corvanta_core corvanta_icons PREFIX /icons FILES ${icon_pictures})

# On Windows everything lies in the one folder the installer makes.
set(program_destination ${CMAKE_INSTALL_BINDIR})
set(schema_destination ${CMAKE_INSTALL_DATADIR}/corvanta-support)
if(WIN32)
    set(program_destination .)
    set(schema_destination .)
endif()
install(TARGETS corvanta-support corvanta-support-report RUNTIME DESTINATION ${program_destination})
# What "corvanta-support-report --format json" prints, described for those who read it.
install(FILES app/report.schema.json DESTINATION ${schema_destination})

if(NOT WIN32)
    install(FILES packaging/${CORVANTA_APP_ID}.desktop
            DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES packaging/${CORVANTA_APP_ID}.metainfo.xml
            DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
    install(FILES "${CORVANTA_ICON_SVG}"
            DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
    foreach(size IN LISTS CORVANTA_ICON_SIZES)
        install(FILES "${CMAKE_CURRENT_BINARY_DIR}/icons/${size}x${size}/${CORVANTA_APP_ID}.png"
                DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
    endforeach()

    set(manual_pages)
    foreach(program corvanta-support corvanta-support-report)
        set(page "${CMAKE_CURRENT_BINARY_DIR}/man/${program}.1.gz")
        corvanta_gzip("${CMAKE_CURRENT_SOURCE_DIR}/packaging/${program}.1" "${page}")
        list(APPEND manual_pages "${page}")
    endforeach()
    add_custom_target(corvanta_manual_pages ALL DEPENDS ${manual_pages})
    install(FILES ${manual_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
