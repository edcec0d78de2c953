# The Debian package (`make package`, or cpack in a build folder): one package, velmora, with the
# library, its headers, the CMake package, the pkg-config file, the tool, the C interface's shared
# library, the README and the licence, installed under /usr.
#
# On Windows it is a zip instead, velmora-<version>-windows-x86_64.zip, whose one folder holds the
# tool, velmora_c.dll, the library, the headers, the CMake package, the README, the licence and
# the samples.
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME velmora-${PROJECT_VERSION}-windows-x86_64)
    set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)
    include(CPack)
    return()
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Velmora developers")
set(CPACK_PACKAGE_CONTACT "The Velmora developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "library and tool for flight-simulator scenery models (RIFF MDL9)")
set(CPACK_PACKAGE_DESCRIPTION
    "Velmora opens scenery models (RIFF files of form MDL9), shows their tables and command
streams, edits them, writes them back byte-exact, draws a preview, exports an assembler-style
listing and an OpenFlight database, and finds the models inside compiled scenery files.
This package holds the velmora command-line tool, the static C++20 library with its
headers, its CMake package (find_package(velmora)) and its pkg-config file, and the C
interface (velmora_c.h, libvelmora_c.so) for C, C#, Delphi and Python hosts.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
# The tool's run-time libraries come from dpkg-shlibdeps; the library is static, so a program
# built on it links the preview's libraries itself and needs their development packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(VELMORA_PREVIEW)
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "libegl-dev, libgl-dev, libglu1-mesa-dev, libfreeimage-dev")
    # Mesa's software rasteriser draws the preview on a machine without a graphics driver.
    set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libgl1-mesa-dri")
endif()
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cmake, pkg-config")

include(CPack)
