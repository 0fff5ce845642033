# Mirel::IO: loading and saving images as PGM, PPM, PNG, JPEG and TIFF files.
#
# An optional component with a library of its own (mirelimage_io) that links
# the core; the core never depends on it. It is built when MIREL_BUILD_IO is
# on and libpng, libjpeg and libtiff are all found, and quietly left out
# otherwise. Installed beside the core: headers under mirel/io/, the targets
# in MirelImageIOTargets.cmake (found by MirelImageConfig.cmake as the
# component IO) and mirelimage-io.pc.
if(NOT MIREL_BUILD_IO)
  return()
endif()

find_package(PNG QUIET)
find_package(JPEG QUIET)
find_package(TIFF QUIET)
set(missing)
foreach(codec PNG JPEG TIFF)
  if(NOT ${codec}_FOUND)
    list(APPEND missing ${codec})
  endif()
endforeach()
if(missing)
  string(REPLACE ";" ", " missing "${missing}")
  message(STATUS "Mirel::IO is not built: ${missing} not found "
                 "(Debian: apt-get install libpng-dev libjpeg-dev libtiff-dev)")
  return()
endif()

file(GLOB MIREL_IO_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mirel/io/*.cpp ${PROJECT_SOURCE_DIR}/mirel/io/*.h)
file(GLOB MIREL_IO_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mirel/io/*.h)
list(FILTER MIREL_IO_HEADERS EXCLUDE REGEX "_internal\\.h$")

add_library(MirelImageIO ${MIREL_IO_SOURCES})
add_library(Mirel::IO ALIAS MirelImageIO)
set_target_properties(MirelImageIO PROPERTIES
  CXX_VISIBILITY_PRESET hidden
  POSITION_INDEPENDENT_CODE ON
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  EXPORT_NAME IO
  OUTPUT_NAME mirelimage_io)
if(NOT APPLE AND NOT WIN32)
  # The installed library finds the core beside itself wherever the tree lies.
  set_target_properties(MirelImageIO PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()
target_link_libraries(MirelImageIO PUBLIC MirelImage PRIVATE PNG::PNG JPEG::JPEG TIFF::TIFF)
target_compile_definitions(MirelImageIO PRIVATE MIREL_BUILDING_IO)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(MirelImageIO PRIVATE -Wall -Wextra)
  if(MIREL_WERROR)
    target_compile_options(MirelImageIO PRIVATE -Werror)
  endif()
endif()
message(STATUS "Mirel::IO: PGM, PPM, PNG (libpng ${PNG_VERSION_STRING}), JPEG, TIFF (libtiff ${TIFF_VERSION_STRING})")

install(FILES ${MIREL_IO_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mirel/io)
install(TARGETS MirelImageIO EXPORT MirelImageIOTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT MirelImageIOTargets NAMESPACE Mirel::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/MirelImage)

set(MIREL_IO_PC_PRIVATE "")
if(NOT BUILD_SHARED_LIBS)
  set(MIREL_IO_PC_PRIVATE "Requires.private: libpng libjpeg libtiff-4")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/mirelimage-io.pc.in ${PROJECT_BINARY_DIR}/mirelimage-io.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mirelimage-io.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
