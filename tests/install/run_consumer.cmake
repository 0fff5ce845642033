# Installs the built library with a prefix given only at install time, moves
# the installed tree elsewhere, and consumes it from there twice: a CMake
# project that finds it with find_package(MirelImage) (and the IO component
# when it was built), and programs compiled by hand with the flags of
# pkg-config. Both must work from the moved tree alone.
#
# Variables: MIREL_BUILD_DIR, CONSUMER_SOURCE, WORK_DIR, CXX, PKG_CONFIG,
# WITH_IO (ON when Mirel::IO was built), STATIC (ON for a static build).
file(REMOVE_RECURSE ${WORK_DIR})
set(staged ${WORK_DIR}/staged)
set(prefix ${WORK_DIR}/moved)

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(rc)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect_in text)
  foreach(expected ${ARGN})
    string(FIND "${text}" "${expected}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "output lacks '${expected}':\n${text}")
    endif()
  endforeach()
endfunction()

run("install" ${CMAKE_COMMAND} --install ${MIREL_BUILD_DIR} --prefix ${staged})
file(RENAME ${staged} ${prefix})

# ---------------------------------------------------------------- CMake
run("consumer configure" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/build
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} -DWITH_IO=${WITH_IO})
run("consumer build" ${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run("consumer run" ${WORK_DIR}/build/consumer)
message(STATUS "${out}")
expect_in("${out}" "1400" "1403" "ImgConsumerCheck")
if(WITH_IO)
  run("IO consumer run" ${WORK_DIR}/build/consumer_io ${WORK_DIR})
  message(STATUS "${out}")
  expect_in("${out}" "round trip" "1102" "ImgLoad (BW8)")
endif()

# ---------------------------------------------------------------- pkg-config
file(GLOB_RECURSE pcfiles ${prefix}/*/mirelimage.pc)
list(LENGTH pcfiles found)
if(NOT found EQUAL 1)
  message(FATAL_ERROR "expected one installed mirelimage.pc, found: ${pcfiles}")
endif()
get_filename_component(pcdir ${pcfiles} DIRECTORY)
set(static_flag)
if(STATIC)
  set(static_flag --static)
endif()

# Compiles `source` with the flags of the package `pc` and runs it.
function(build_with_pkg_config pc source exe)
  run("pkg-config ${pc}" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pcdir}
      ${PKG_CONFIG} ${static_flag} --cflags --libs ${pc})
  separate_arguments(flags UNIX_COMMAND "${out}")
  run("pkg-config libdir" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pcdir} ${PKG_CONFIG} --variable=libdir ${pc})
  string(STRIP "${out}" libdir)
  string(FIND "${libdir}" "${prefix}/" at)
  if(NOT EXISTS ${libdir} OR NOT at EQUAL 0)
    message(FATAL_ERROR "${pc}.pc gives libdir '${libdir}', not inside ${prefix}")
  endif()
  run("compile with ${pc}.pc" ${CXX} -std=c++17 ${source} ${flags} -Wl,-rpath,${libdir} -o ${exe})
endfunction()

build_with_pkg_config(mirelimage ${CONSUMER_SOURCE}/main.cpp ${WORK_DIR}/pc_consumer)
run("pkg-config consumer run" ${WORK_DIR}/pc_consumer)
expect_in("${out}" "1400" "1403")
if(WITH_IO)
  build_with_pkg_config(mirelimage-io ${CONSUMER_SOURCE}/io_main.cpp ${WORK_DIR}/pc_consumer_io)
  run("pkg-config IO consumer run" ${WORK_DIR}/pc_consumer_io ${WORK_DIR})
  expect_in("${out}" "round trip" "1102")
endif()
