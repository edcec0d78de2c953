# Install rules: the static library with its public headers, the velmora tool, the C interface's
# shared library, a CMake package (find_package(velmora) gives velmora::velmora) and a pkg-config
# file, each of which finds the preview's libraries again where the preview is built in.
include(CMakePackageConfigHelpers)

set(VELMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/velmora)
set(VELMORA_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/velmora)

install(TARGETS velmora EXPORT velmoraTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/velmora DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
if(TARGET velmora_cli)
    install(TARGETS velmora_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
# The C interface: libvelmora_c.so in the library folder; on Windows velmora_c.dll beside the tool
# and its import library in the library folder. Its header is one of include/velmora.
if(TARGET velmora_c)
    install(TARGETS velmora_c LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

install(EXPORT velmoraTargets NAMESPACE velmora:: DESTINATION ${VELMORA_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/velmoraConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/velmoraConfig.cmake
                              INSTALL_DESTINATION ${VELMORA_CMAKE_DIR})
# Before 1.0 a new minor version may change the interface, so only the same minor version is
# taken for a request: find_package(velmora 0.0) takes 0.0.x from 0.0.335 on, not 0.1.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velmoraConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
set(cmake_package_files ${PROJECT_BINARY_DIR}/velmoraConfig.cmake
    ${PROJECT_BINARY_DIR}/velmoraConfigVersion.cmake)
if(VELMORA_PREVIEW AND NOT WIN32)
    list(APPEND cmake_package_files ${CMAKE_CURRENT_LIST_DIR}/FindFreeImage.cmake)
endif()
install(FILES ${cmake_package_files} DESTINATION ${VELMORA_CMAKE_DIR})

# On Windows the package is a zip: the README, the licence and the samples lie at its top, and
# there is no pkg-config file (the CMake package serves MinGW and the library's users there).
if(WIN32)
    install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION .)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples/ DESTINATION samples)
    return()
endif()

# The pkg-config file finds the prefix from its own place, so the same file serves an install
# under any prefix, a Debian package and a package unpacked anywhere. The library is static: what
# it links goes into Requires and Libs, not into their private halves.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    message(FATAL_ERROR "velmora.pc needs CMAKE_INSTALL_LIBDIR and CMAKE_INSTALL_INCLUDEDIR "
                        "relative to the prefix")
endif()
file(RELATIVE_PATH VELMORA_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" VELMORA_PC_TO_PREFIX ${VELMORA_PC_TO_PREFIX})
set(VELMORA_PC_REQUIRES)
set(VELMORA_PC_LIBS)
if(VELMORA_PREVIEW)
    set(VELMORA_PC_REQUIRES "Requires: opengl egl glu")
    get_filename_component(freeimage_dir ${FreeImage_LIBRARY} DIRECTORY)
    if(NOT freeimage_dir IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
        list(APPEND VELMORA_PC_LIBS -L${freeimage_dir})
    endif()
    list(APPEND VELMORA_PC_LIBS -lfreeimage)
endif()
list(APPEND VELMORA_PC_LIBS ${VELMORA_SANITIZER_LINK_FLAGS})
list(JOIN VELMORA_PC_LIBS " " VELMORA_PC_LIBS)
configure_file(${CMAKE_CURRENT_LIST_DIR}/velmora.pc.in ${PROJECT_BINARY_DIR}/velmora.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmora.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The licence also goes in as copyright, the name a Debian package's licence has.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/LICENSE
        DESTINATION ${VELMORA_DOC_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${VELMORA_DOC_DIR} RENAME copyright)
