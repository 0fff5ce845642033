# Source discovery and per-instruction-set compile flags.
#
# Every subsystem folder under mirel/ holds its headers and sources side by
# side. Sources named *_sse2.cpp, *_ssse3.cpp, *_sse41.cpp, *_avx2.cpp or
# *_avx512.cpp hold the fast paths for one instruction set; they are compiled
# with that set enabled and only on x86-64. Headers named *_internal.h are
# private to the library and are not installed. mirel/io/ is not part of the
# core: it is the optional image-file library of cmake/MirelIO.cmake.

set(MIREL_X86 OFF)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|x64)$")
  set(MIREL_X86 ON)
endif()

function(mirel_collect_sources out_sources out_headers)
  file(GLOB_RECURSE srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mirel/*.cpp)
  file(GLOB_RECURSE hdrs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mirel/*.h)
  list(FILTER srcs EXCLUDE REGEX "/mirel/io/")
  list(FILTER hdrs EXCLUDE REGEX "/mirel/io/")
  set(kept)
  foreach(s ${srcs})
    if(s MATCHES "_(sse2|ssse3|sse41|avx2|avx512)\\.cpp$" AND NOT MIREL_X86)
      continue()
    endif()
    list(APPEND kept ${s})
  endforeach()
  set(public)
  foreach(h ${hdrs})
    if(NOT h MATCHES "_internal\\.h$")
      list(APPEND public ${h})
    endif()
  endforeach()
  set(${out_sources} ${kept} ${hdrs} PARENT_SCOPE)
  set(${out_headers} ${public} PARENT_SCOPE)
endfunction()

function(mirel_apply_simd_flags target sources)
  if(MIREL_X86)
    target_compile_definitions(${target} PRIVATE MIREL_X86_SIMD=1)
  endif()
  if(NOT MIREL_X86 OR MSVC)
    return()
  endif()
  foreach(s ${sources})
    if(s MATCHES "_sse41\\.cpp$")
      set_source_files_properties(${s} PROPERTIES COMPILE_OPTIONS "-msse4.1")
    elseif(s MATCHES "_avx2\\.cpp$")
      set_source_files_properties(${s} PROPERTIES COMPILE_OPTIONS "-mavx2")
    elseif(s MATCHES "_avx512\\.cpp$")
      set_source_files_properties(${s} PROPERTIES COMPILE_OPTIONS "-mavx512f;-mavx512bw;-mavx512vl;-mavx512dq")
    endif()
  endforeach()
endfunction()
