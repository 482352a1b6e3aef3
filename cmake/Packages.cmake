# What is installed beside the shared module, and the Debian packages: one for the daemon, one for the programs for
# people, one for those who build on the shared module.
include(GNUInstallDirs)

install(TARGETS EditorDocumentDaemon RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Daemon)
install(FILES packaging/man/EditorDocumentDaemon.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Daemon
)
install(FILES packaging/man/EditorDocumentProtocol.7
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT Daemon
)
install(FILES README.md CHANGELOG.md SECURITY.md docs/PROTOCOL.md
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/editor-document-daemon COMPONENT Daemon
)
set(CPACK_COMPONENTS_ALL Daemon ConduitShared)

if(BUILD_TOOLS)
    install(TARGETS EditorDocumentConsole EditorDocumentDoctor
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools
    )
    install(FILES packaging/man/EditorDocumentConsole.1 packaging/man/EditorDocumentDoctor.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Tools
    )
    install(FILES packaging/completions/EditorDocumentConsole packaging/completions/EditorDocumentDoctor
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions COMPONENT Tools
    )
    list(APPEND CPACK_COMPONENTS_ALL Tools)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME editor-document-daemon)
set(CPACK_PACKAGE_CONTACT "The maintainers of EditorDocumentDaemon <maintainers@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
)

set(CPACK_DEBIAN_DAEMON_PACKAGE_NAME editor-document-daemon)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SECTION editors)
set(CPACK_COMPONENT_DAEMON_DESCRIPTION "file operations of a code editor, in a process of its own
 An editor starts the daemon and talks to it in lines of JSON. The daemon opens
 and saves text documents, lists and changes projects, and tells what other
 programs change.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME editor-document-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION editors)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS editor-document-daemon)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "console and doctor for EditorDocumentDaemon
 The console talks to the daemon on a terminal. The doctor explains what of a
 machine matters to it.")

set(CPACK_DEBIAN_CONDUITSHARED_PACKAGE_NAME libconduitshared-dev)
set(CPACK_DEBIAN_CONDUITSHARED_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CONDUITSHARED_PACKAGE_DEPENDS "libsimdjson-dev")
set(CPACK_COMPONENT_CONDUITSHARED_DESCRIPTION "client library of EditorDocumentDaemon
 Static library, headers, CMake package and pkg-config file: the records of the
 protocol, their coding as JSON, and a client that starts the daemon.")
include(CPack)
