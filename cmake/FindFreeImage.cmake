# Finds FreeImage, which ships neither a CMake package nor a pkg-config file on Debian.
# Defines the imported target FreeImage::FreeImage, FreeImage_FOUND, FreeImage_INCLUDE_DIR and
# FreeImage_LIBRARY. It is installed beside velmoraConfig.cmake, which finds FreeImage again with
# it for the projects that link Velmora's preview.
find_path(FreeImage_INCLUDE_DIR FreeImage.h)
find_library(FreeImage_LIBRARY NAMES freeimage FreeImage)
mark_as_advanced(FreeImage_INCLUDE_DIR FreeImage_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FreeImage REQUIRED_VARS FreeImage_LIBRARY FreeImage_INCLUDE_DIR)

if(FreeImage_FOUND AND NOT TARGET FreeImage::FreeImage)
    add_library(FreeImage::FreeImage UNKNOWN IMPORTED)
    set_target_properties(FreeImage::FreeImage PROPERTIES
        IMPORTED_LOCATION "${FreeImage_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${FreeImage_INCLUDE_DIR}")
endif()
