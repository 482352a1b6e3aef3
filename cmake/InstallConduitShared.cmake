# ConduitShared for programs outside this project: one archive of the shared module and the platform that it stands on,
# found by find_package(ConduitShared) or by pkg-config. The installed folder can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# What an outside program may include, and nothing that these headers do not need.
set(ConduitSharedHeaders
    platform/Environment.h
    platform/FileManager.h
    platform/PlatformError.h
    platform/linux/LinuxEnvironment.h
    platform/linux/files/LinuxFileManager.h
    shared/AutoWakeClientConfiguration.h
    shared/AutoWakeClientState.h
    shared/AutoWakeEventRecord.h
    shared/AutoWakeStateStore.h
    shared/AutoWakeStoreSnapshot.h
    shared/ConduitSharedPaths.h
    shared/DecodingError.h
    shared/EditorDocumentDaemonClient.h
    shared/EditorDocumentDaemonEnvelope.h
    shared/EditorDocumentDaemonRequest.h
    shared/EditorDocumentSnapshotPayload.h
    shared/EnumerationNames.h
    shared/JSONLayout.h
    shared/MillisecondDate.h
    shared/RecordCoding.h
    shared/RecordFields.h
    shared/WorkspaceBrowserDirectoryPayload.h
    shared/WorkspaceBrowserMutationPayload.h
    shared/WorkspaceBrowserNodePayload.h
)
set(ConduitSharedIncludeFolder ${CMAKE_INSTALL_INCLUDEDIR}/ConduitShared)
set(ConduitSharedPackageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/ConduitShared)

# Of the same objects as the libraries of the build, so that nothing is compiled twice.
add_library(ConduitSharedArchive STATIC
    $<TARGET_OBJECTS:ConduitShared>
    $<TARGET_OBJECTS:EditorDocumentPlatform>
)
set_target_properties(ConduitSharedArchive PROPERTIES
    LINKER_LANGUAGE CXX
    OUTPUT_NAME ConduitShared
    EXPORT_NAME ConduitShared
    ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/install
)
target_compile_features(ConduitSharedArchive PUBLIC cxx_std_20)
target_include_directories(ConduitSharedArchive INTERFACE $<INSTALL_INTERFACE:${ConduitSharedIncludeFolder}>)
target_link_libraries(ConduitSharedArchive PUBLIC Threads::Threads PRIVATE simdjson::simdjson)

configure_package_config_file(cmake/ConduitSharedConfig.cmake.in install/ConduitSharedConfig.cmake
    INSTALL_DESTINATION ${ConduitSharedPackageFolder}
    NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(install/ConduitSharedConfigVersion.cmake COMPATIBILITY SameMinorVersion)
file(RELATIVE_PATH ConduitSharedPrefixFromPkgConfig
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/ConduitShared.pc.in install/ConduitShared.pc @ONLY)

install(TARGETS ConduitSharedArchive EXPORT ConduitShared
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ConduitShared
)
install(EXPORT ConduitShared FILE ConduitSharedTargets.cmake NAMESPACE ConduitShared::
    DESTINATION ${ConduitSharedPackageFolder} COMPONENT ConduitShared
)
install(FILES
    ${PROJECT_BINARY_DIR}/install/ConduitSharedConfig.cmake
    ${PROJECT_BINARY_DIR}/install/ConduitSharedConfigVersion.cmake
    DESTINATION ${ConduitSharedPackageFolder} COMPONENT ConduitShared
)
install(FILES ${PROJECT_BINARY_DIR}/install/ConduitShared.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ConduitShared
)
foreach(header IN LISTS ConduitSharedHeaders)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${header} DESTINATION ${ConduitSharedIncludeFolder}/${folder} COMPONENT ConduitShared)
endforeach()
