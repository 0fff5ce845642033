# Installs the built library to a fresh prefix, then configures, builds and
# runs a consumer project that finds it with find_package(MirelImage).
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${MIREL_BUILD_DIR} --prefix ${prefix}
                RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "install failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/build
                  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
                RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer configure failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer build failed: ${rc}")
endif()
execute_process(COMMAND ${WORK_DIR}/build/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
message(STATUS "${out}")
if(rc)
  message(FATAL_ERROR "consumer run failed: ${rc}")
endif()
foreach(expected "1400" "1403" "ImgConsumerCheck")
  string(FIND "${out}" "${expected}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "consumer output lacks '${expected}'")
  endif()
endforeach()
# pkg-config sees the installed library too.
if(NOT EXISTS ${prefix}/lib/pkgconfig/mirelimage.pc AND NOT EXISTS ${prefix}/lib64/pkgconfig/mirelimage.pc
   AND NOT EXISTS ${prefix}/lib/x86_64-linux-gnu/pkgconfig/mirelimage.pc)
  message(FATAL_ERROR "mirelimage.pc was not installed")
endif()
