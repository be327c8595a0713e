# The Debian package, made by `cpack -G DEB` in the build folder:
# corvanta-support_<version>_<architecture>.deb. Its dependencies come from dpkg-shlibdeps.
set(CORVANTA_PACKAGE_NAME corvanta-support)
set(CORVANTA_PACKAGE_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/${CORVANTA_PACKAGE_NAME})

# Debian wants the copyright file and the changelog beside every package's files.
install(FILES packaging/copyright DESTINATION ${CORVANTA_PACKAGE_DOCDIR})
set(changelog "${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.gz")
corvanta_gzip("${CMAKE_CURRENT_SOURCE_DIR}/packaging/changelog" "${changelog}")
add_custom_target(corvanta_changelog ALL DEPENDS "${changelog}")
install(FILES "${changelog}" DESTINATION ${CORVANTA_PACKAGE_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${CORVANTA_PACKAGE_NAME})
set(CPACK_PACKAGE_VENDOR Kelvanmoor)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Kelvanmoor Support <${CORVANTA_SUPPORT_EMAIL}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "diagnostics and repair tool for Corvanta")
set(CPACK_PACKAGE_DESCRIPTION
    "Corvanta Support collects a report about the computer and about the
installation of Corvanta, the DNA-design desktop application, hands it to
the support desk (saved as a text file and a picture, copied, or e-mailed)
and repairs common problems without a technician: file associations,
preferences, application data and a DPI workaround.

The corvanta-support-report command prints the same report on a terminal,
for support desks working over a remote shell.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# Release builds carry debugging information; the package does not.
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://www.kelvanmoor.com/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's own translations of its dialogs and buttons are a package of their own.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS qt6-translations-l10n)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

include(CPack)
