# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` lays down: headers, the library, a CMake package and a pkg-config file; and how it is packed.
include(CMakePackageConfigHelpers)
include(NuxoPublicHeaders)

set(nuxo_version_script "${PROJECT_SOURCE_DIR}/packaging/libnuxo.map")
target_link_options(nuxo PRIVATE "LINKER:--version-script=${nuxo_version_script}")
set_property(TARGET nuxo APPEND PROPERTY LINK_DEPENDS "${nuxo_version_script}")
# The parser's header includes expat.h.
target_link_libraries(nuxo PUBLIC EXPAT::EXPAT)

nuxo_public_headers(NUXO_PUBLIC_HEADERS)
foreach(header IN LISTS NUXO_PUBLIC_HEADERS)
    nuxo_header_source("${header}" source)
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${source}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}" COMPONENT development)
endforeach()

install(TARGETS nuxo EXPORT nuxoTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

set(nuxo_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/nuxo")
install(EXPORT nuxoTargets NAMESPACE nuxo:: DESTINATION "${nuxo_package_dir}" COMPONENT development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/packaging/nuxoConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/packaging/nuxoConfig.cmake" INSTALL_DESTINATION "${nuxo_package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/packaging/nuxoConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/packaging/nuxoConfig.cmake"
    "${PROJECT_BINARY_DIR}/packaging/nuxoConfigVersion.cmake"
    DESTINATION "${nuxo_package_dir}" COMPONENT development)

# The prefix is found from where nuxo.pc lies, so that an installation can be moved and `--prefix` can choose another.
set(nuxo_pc_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH nuxo_pc_to_prefix "/prefix/${nuxo_pc_dir}" "/prefix")
string(REGEX REPLACE "/$" "" nuxo_pc_to_prefix "${nuxo_pc_to_prefix}")
set(NUXO_PC_PREFIX "\${pcfiledir}/${nuxo_pc_to_prefix}")
configure_file("${PROJECT_SOURCE_DIR}/packaging/nuxo.pc.in" "${PROJECT_BINARY_DIR}/packaging/nuxo.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/packaging/nuxo.pc" DESTINATION "${nuxo_pc_dir}" COMPONENT development)

install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)

set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_NAME nuxo)
set(CPACK_PACKAGE_VENDOR "the nuxo developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CHECKSUM SHA256)
include(CPack)
