# Mirel::IO: loading and saving images as PGM, PPM, PNG, JPEG and TIFF files.
#
# An optional component with a library of its own (mirelimage_io) that links
# the core; the core never depends on it. It is built when MIREL_BUILD_IO is
# on, with PGM and PPM always and with PNG, JPEG and TIFF for each of
# libpng, libjpeg and libtiff that is found. Installed beside the core: headers under mirel/io/, the targets
# in MirelImageIOTargets.cmake (found by MirelImageConfig.cmake as the
# component IO) and mirelimage-io.pc.
if(NOT MIREL_BUILD_IO)
  return()
endif()

# PGM and PPM need nothing; each other format comes with its codec library
# when that is found (a cross build may have none of them).
find_package(PNG QUIET)
find_package(JPEG QUIET)
find_package(TIFF QUIET)
set(MIREL_IO_CODECS)
set(missing)
file(GLOB MIREL_IO_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mirel/io/*.cpp ${PROJECT_SOURCE_DIR}/mirel/io/*.h)
file(GLOB MIREL_IO_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mirel/io/*.h)
list(FILTER MIREL_IO_HEADERS EXCLUDE REGEX "_internal\\.h$")
foreach(codec PNG JPEG TIFF)
  string(TOLOWER ${codec} file)
  if(${codec}_FOUND)
    list(APPEND MIREL_IO_CODECS ${codec})
  else()
    list(APPEND missing ${codec})
    list(FILTER MIREL_IO_SOURCES EXCLUDE REGEX "/${file}_file\\.cpp$")
  endif()
endforeach()
if(missing)
  string(REPLACE ";" ", " missing_text "${missing}")
  message(STATUS "Mirel::IO is built without ${missing_text} "
                 "(Debian: apt-get install libpng-dev libjpeg-dev libtiff-dev)")
endif()

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
target_link_libraries(MirelImageIO PUBLIC MirelImage)
target_compile_definitions(MirelImageIO PRIVATE MIREL_BUILDING_IO)
set(MIREL_IO_PC_REQUIRES)
foreach(codec PNG JPEG TIFF)
  if(codec IN_LIST MIREL_IO_CODECS)
    target_link_libraries(MirelImageIO PRIVATE ${codec}::${codec})
    target_compile_definitions(MirelImageIO PRIVATE MIREL_IO_WITH_${codec}=1)
  else()
    target_compile_definitions(MirelImageIO PRIVATE MIREL_IO_WITH_${codec}=0)
  endif()
endforeach()
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(MirelImageIO PRIVATE -Wall -Wextra)
  if(MIREL_WERROR)
    target_compile_options(MirelImageIO PRIVATE -Werror)
  endif()
endif()
string(REPLACE ";" ", " codecs_text "PGM;PPM;${MIREL_IO_CODECS}")
message(STATUS "Mirel::IO: ${codecs_text}")

install(FILES ${MIREL_IO_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mirel/io)
install(TARGETS MirelImageIO EXPORT MirelImageIOTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT MirelImageIOTargets NAMESPACE Mirel::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/MirelImage)

set(MIREL_IO_PC_PRIVATE "")
if(NOT BUILD_SHARED_LIBS AND MIREL_IO_CODECS)
  set(pc_modules "${MIREL_IO_CODECS}")
  list(TRANSFORM pc_modules REPLACE "^PNG$" "libpng")
  list(TRANSFORM pc_modules REPLACE "^JPEG$" "libjpeg")
  list(TRANSFORM pc_modules REPLACE "^TIFF$" "libtiff-4")
  string(REPLACE ";" " " pc_modules "${pc_modules}")
  set(MIREL_IO_PC_PRIVATE "Requires.private: ${pc_modules}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/mirelimage-io.pc.in ${PROJECT_BINARY_DIR}/mirelimage-io.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mirelimage-io.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
