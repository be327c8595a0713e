# The Windows programs: their icon and version resource, what they need beside them (Qt's DLLs,
# the plugins they load, the MinGW runtime, Qt's German texts), and the installer that
# `cpack -G NSIS` makes: CorvantaSupport-<version>-win64.exe.
find_program(CORVANTA_ICOTOOL icotool REQUIRED)
set(CORVANTA_ICO "${CMAKE_CURRENT_BINARY_DIR}/icons/${CORVANTA_APP_ID}.ico")
# The largest picture goes in as PNG, as Windows keeps 256-pixel icons.
set(ico_arguments)
foreach(size IN LISTS CORVANTA_ICON_SIZES)
    set(picture "${CMAKE_CURRENT_BINARY_DIR}/icons/${size}x${size}/${CORVANTA_APP_ID}.png")
    if(size EQUAL 256)
        list(APPEND ico_arguments -r)
    endif()
    list(APPEND ico_arguments "${picture}")
endforeach()
add_custom_command(OUTPUT "${CORVANTA_ICO}"
    COMMAND ${CORVANTA_ICOTOOL} -c -o "${CORVANTA_ICO}" ${ico_arguments}
    DEPENDS ${icon_pictures}
    VERBATIM)

enable_language(RC)
foreach(program corvanta-support corvanta-support-report)
    set(CORVANTA_PROGRAM ${program})
    if(program STREQUAL "corvanta-support")
        set(CORVANTA_PROGRAM_DESCRIPTION "Corvanta Support")
    else()
        set(CORVANTA_PROGRAM_DESCRIPTION "Corvanta Support report")
    endif()
    set(rc "${CMAKE_CURRENT_BINARY_DIR}/packaging/${program}.rc")
    configure_file(packaging/program.rc.in "${rc}" @ONLY)
    set_source_files_properties("${rc}" PROPERTIES OBJECT_DEPENDS "${CORVANTA_ICO}")
    target_sources(${program} PRIVATE "${rc}")
endforeach()

# Laid out as Qt looks for them beside the programs (qt.conf names the folder itself the prefix).
install(FILES $<TARGET_FILE:Qt6::Core> $<TARGET_FILE:Qt6::Gui> $<TARGET_FILE:Qt6::Widgets>
              $<TARGET_FILE:Qt6::Network>
        DESTINATION .)
install(FILES $<TARGET_FILE:Qt6::QWindowsIntegrationPlugin> DESTINATION plugins/platforms)
install(FILES $<TARGET_FILE:Qt6::QWindowsVistaStylePlugin> DESTINATION plugins/styles)
install(FILES $<TARGET_FILE:Qt6::QSchannelBackendPlugin> DESTINATION plugins/tls)
file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/packaging/qt.conf"
     CONTENT "[Paths]\nPrefix = .\n")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/packaging/qt.conf" DESTINATION .)
# The window speaks German where Windows does; Qt's dialogs and buttons then follow.
install(FILES /usr/share/qt6/translations/qtbase_de.qm DESTINATION translations)
# The MinGW runtime, as Qt for MinGW keeps it beside its own DLLs.
foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    install(FILES $<TARGET_FILE_DIR:Qt6::Core>/${dll} DESTINATION .)
endforeach()

set(CPACK_GENERATOR NSIS)
set(CPACK_PACKAGE_NAME "Corvanta Support")
set(CPACK_PACKAGE_VENDOR Kelvanmoor)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME CorvantaSupport-${PROJECT_VERSION}-win64)
set(CPACK_PACKAGE_INSTALL_DIRECTORY "Corvanta Support")
set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY "Corvanta Support")
set(CPACK_PACKAGE_EXECUTABLES corvanta-support "Corvanta Support")
set(CPACK_STRIP_FILES ON)
set(CPACK_NSIS_PACKAGE_NAME "Corvanta Support")
set(CPACK_NSIS_DISPLAY_NAME "Corvanta Support")
set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES64")
set(CPACK_NSIS_INSTALLED_ICON_NAME corvanta-support.exe)
set(CPACK_NSIS_MUI_ICON "${CORVANTA_ICO}")
set(CPACK_NSIS_MUI_UNIICON "${CORVANTA_ICO}")
set(CPACK_NSIS_URL_INFO_ABOUT "https://www.kelvanmoor.com/")
set(CPACK_NSIS_CONTACT "${CORVANTA_SUPPORT_EMAIL}")
set(CPACK_NSIS_COMPRESSOR "/SOLID lzma")
# A 64-bit installer: the 32-bit one would write to the 32-bit registry view and Program Files
# (x86), and cannot start on a 64-bit-only system.
set(CPACK_NSIS_DEFINES "Target amd64-unicode")
set(CPACK_NSIS_EXTRA_INSTALL_COMMANDS [[
  Push "InstallLocation"
  Push "$INSTDIR"
  Call ConditionalAddToRegistry]])
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
