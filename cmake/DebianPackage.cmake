# `make package` (cpack -G DEB): a Debian package of what `make install` installs, under /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantril)
set(CPACK_PACKAGE_VENDOR "The Vantril developers")
set(CPACK_PACKAGE_CONTACT "The Vantril developers <${PROJECT_HOMEPAGE_URL}/issues>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
    "Vantril keeps a small bar of buttons above other windows on every workspace. Each button opens a \
file, folder, application or web address, browses a folder, runs a script, presses a key combination \
in the application in front, pastes stored text or runs a shell command. The bar is described by one \
hand-editable JSON file, with backups and undo, and is edited in place by drag and drop.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${PROJECT_HOMEPAGE_URL}")
# The libraries the program links come from dpkg-shlibdeps; these are what it loads or reads at run
# time: the SVG plugins for icons, the icon themes its symbols come from, and the MIME database.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, adwaita-icon-theme, hicolor-icon-theme, shared-mime-info")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-qpa-plugins, xdg-utils")
include(CPack)
