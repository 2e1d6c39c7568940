# Installs the built library into a private prefix, then builds and runs a separate program against
# that copy twice: once with pkg-config, once with find_package(arklib).
set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix})

set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
run(pkg-config --cflags --libs arklib)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(g++ -std=c++17 ${SOURCE_DIR}/tests/install/hello.cpp -o ${WORK_DIR}/hello ${flags})
run(${WORK_DIR}/hello)
if(NOT last_output MATCHES "installed arklib works")
  message(FATAL_ERROR "unexpected output of the pkg-config build: ${last_output}")
endif()

file(MAKE_DIRECTORY ${WORK_DIR}/cmake_project)
file(WRITE ${WORK_DIR}/cmake_project/CMakeLists.txt
  "cmake_minimum_required(VERSION 3.16)\nproject(hello CXX)\nset(CMAKE_CXX_STANDARD 17)\n"
  "find_package(arklib REQUIRED)\nadd_executable(hello ${SOURCE_DIR}/tests/install/hello.cpp)\n"
  "target_link_libraries(hello arklib::arklib)\n")
run(${CMAKE_COMMAND} -S ${WORK_DIR}/cmake_project -B ${WORK_DIR}/cmake_build -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake_build)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib ${WORK_DIR}/cmake_build/hello)
if(NOT last_output MATCHES "installed arklib works")
  message(FATAL_ERROR "unexpected output of the find_package build: ${last_output}")
endif()

# An extension module built by the installed arkmex against the installed headers and library, and
# called by a program built against the same copy, from the module's folder.
file(MAKE_DIRECTORY ${WORK_DIR}/module)
run(${prefix}/bin/arkmex -o ${WORK_DIR}/module/scale_matvex.so ${SOURCE_DIR}/tests/install/scale.c)
run(pkg-config --cflags --libs arklib)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(g++ -std=c++17 ${SOURCE_DIR}/tests/install/call_module.cpp -o ${WORK_DIR}/module/call_module ${flags})
execute_process(COMMAND ${WORK_DIR}/module/call_module WORKING_DIRECTORY ${WORK_DIR}/module
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR NOT out MATCHES "installed module works")
  message(FATAL_ERROR "the installed module did not work (${rc}): ${out}\n${err}")
endif()
