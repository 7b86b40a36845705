# The Debian package (cmake --build build --target package): the product root installed under
# /usr/lib/zolamsadm as the install rules lay it out, so that every program and library the build
# stages comes along, plus what only an installed system has: the programs linked from /usr/sbin,
# the store and logs under /var (registry/ and log/ are links there), the manual pages, the
# copyright and changelog, and the maintainer scripts that create and remove the store.
# The Debian-only files belong to the component "deb", left out of ordinary installs (the staged
# root, the demo): only the package installs it.

set(ZOL_STORE_DIR /var/lib/zolamsadm)
set(ZOL_LOG_DIR /var/log/zolamsadm)
set(ZOL_DEB_REVISION 1)
set(ZOL_DEB_VERSION ${PROJECT_VERSION}-${ZOL_DEB_REVISION})
set(ZOL_DEB_MAINTAINER "ZOLamsadm developers <zolamsadm@example.org>")

# ---- manual pages: one scdoc source per program, built into gzipped roff ----
find_program(ZOL_SCDOC scdoc)
find_program(ZOL_GZIP gzip)
file(GLOB ZOL_MAN_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.scd)
set(ZOL_MAN_PAGES)
if(ZOL_SCDOC)
    foreach(source ${ZOL_MAN_SOURCES})
        get_filename_component(page ${source} NAME_WLE)  # ZOLamsadm.8
        set(out ${CMAKE_BINARY_DIR}/man/${page}.gz)
        # -n: no name or time stamp in the gzip header, so that the package is reproducible.
        add_custom_command(OUTPUT ${out}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
            COMMAND ${ZOL_SCDOC} < ${source} > ${CMAKE_BINARY_DIR}/man/${page}
            COMMAND ${ZOL_GZIP} -9nf ${CMAKE_BINARY_DIR}/man/${page}
            DEPENDS ${source}
            COMMENT "Manual page ${page}")
        list(APPEND ZOL_MAN_PAGES ${out})
    endforeach()
    add_custom_target(manpages ALL DEPENDS ${ZOL_MAN_PAGES})
    install(FILES ${ZOL_MAN_PAGES} DESTINATION /usr/share/man/man8 COMPONENT deb EXCLUDE_FROM_ALL)
else()
    message(WARNING "scdoc not found: no manual pages, and the package would lack them "
                    "(scripts/deps.sh installs it)")
endif()

# ---- the links an installed system has ----
# Programs in /usr/sbin (relative links: same top-level folder); registry/ and log/ of the
# product root point at /var (absolute: another top-level folder).
set(ZOL_LINK_DIR ${CMAKE_BINARY_DIR}/deb-links)
file(REMOVE_RECURSE ${ZOL_LINK_DIR})
file(MAKE_DIRECTORY ${ZOL_LINK_DIR}/sbin)
get_property(ZOL_PROGRAMS GLOBAL PROPERTY ZOL_PRODUCT_PROGRAMS)
file(RELATIVE_PATH ZOL_BIN_FROM_SBIN /usr/sbin ${CMAKE_INSTALL_PREFIX}/bin)
foreach(program ${ZOL_PROGRAMS})
    file(CREATE_LINK ${ZOL_BIN_FROM_SBIN}/${program} ${ZOL_LINK_DIR}/sbin/${program} SYMBOLIC)
endforeach()
file(CREATE_LINK ${ZOL_STORE_DIR} ${ZOL_LINK_DIR}/registry SYMBOLIC)
file(CREATE_LINK ${ZOL_LOG_DIR} ${ZOL_LINK_DIR}/log SYMBOLIC)
install(DIRECTORY ${ZOL_LINK_DIR}/sbin/ DESTINATION /usr/sbin COMPONENT deb EXCLUDE_FROM_ALL)
# The product installs log/ as an empty folder; in the package it is the link.
install(CODE "file(REMOVE_RECURSE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/log\")"
        COMPONENT deb EXCLUDE_FROM_ALL)
install(FILES ${ZOL_LINK_DIR}/registry ${ZOL_LINK_DIR}/log DESTINATION .
        COMPONENT deb EXCLUDE_FROM_ALL)

# ---- documentation every Debian package carries ----
set(ZOL_DEB_DOC ${CMAKE_BINARY_DIR}/deb-doc)
configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${ZOL_DEB_DOC}/changelog.Debian @ONLY)
add_custom_command(OUTPUT ${ZOL_DEB_DOC}/changelog.Debian.gz
    COMMAND ${ZOL_GZIP} -9nc ${ZOL_DEB_DOC}/changelog.Debian > ${ZOL_DEB_DOC}/changelog.Debian.gz
    DEPENDS ${ZOL_DEB_DOC}/changelog.Debian
    COMMENT "Debian changelog")
add_custom_target(debdoc ALL DEPENDS ${ZOL_DEB_DOC}/changelog.Debian.gz)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${ZOL_DEB_DOC}/changelog.Debian.gz
        DESTINATION /usr/share/doc/zolamsadm COMPONENT deb EXCLUDE_FROM_ALL)

configure_file(${PROJECT_SOURCE_DIR}/packaging/lintian-overrides ${ZOL_DEB_DOC}/zolamsadm COPYONLY)
install(FILES ${ZOL_DEB_DOC}/zolamsadm DESTINATION /usr/share/lintian/overrides
        COMPONENT deb EXCLUDE_FROM_ALL)

# ---- maintainer scripts ----
set(ZOL_DEB_SCRIPTS ${CMAKE_BINARY_DIR}/deb-scripts)
foreach(script postinst postrm)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/${script}.in ${ZOL_DEB_SCRIPTS}/${script} @ONLY
                   FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                    WORLD_READ WORLD_EXECUTE)
endforeach()

# ---- CPack ----
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zolamsadm)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
# The whole product (every component but "deb"), then the Debian-only files.
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${CMAKE_BINARY_DIR};${PROJECT_NAME};ALL;/"
    "${CMAKE_BINARY_DIR};${PROJECT_NAME};deb;/")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ZOL_DEB_REVISION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${ZOL_DEB_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://zolamsadm.example.org/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# dpkg-shlibdeps must find the product's own libzolwin.so among the files being packaged.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
string(CONCAT CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "text-mode administration tool for an alert manager's report settings\n"
    "ZOLamsadm edits how a server-monitoring agent reports trouble: report methods\n"
    "(SNMP traps, TCP/IP reports to a management console, the remote report\n"
    "service), destination IDs with their schedules and retries, which agent events\n"
    "and syslog entries go where, and the data the remote report service sends.\n"
    "It draws its screens with newt, in Japanese or English. zolreg is the\n"
    "command-line tool for the settings store.")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${ZOL_DEB_SCRIPTS}/postinst ${ZOL_DEB_SCRIPTS}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
