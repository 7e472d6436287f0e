# Installs the build into a staging prefix, then compiles a C99 program that
# includes every public header and links it through pkg-config, and runs it.
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${STAGE}
  RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install into ${STAGE} failed")
endif()
file(GLOB_RECURSE pcdirs LIST_DIRECTORIES true ${STAGE}/*/pkgconfig)
list(FILTER pcdirs INCLUDE REGEX "pkgconfig$")
set(ENV{PKG_CONFIG_PATH} "${pcdirs}")
execute_process(COMMAND pkg-config --cflags --libs orv OUTPUT_VARIABLE flags RESULT_VARIABLE rc
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(rc)
  message(FATAL_ERROR "pkg-config does not find orv")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
set(exe ${STAGE}/use_headers)
execute_process(COMMAND ${CC} -std=c99 -pedantic-errors -Wall -Wextra -Werror ${SOURCE} ${flags} -o ${exe}
  RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "C99 compile or link through pkg-config failed")
endif()
string(REGEX MATCH "-L[^;]*" libdir "${flags}")
string(SUBSTRING "${libdir}" 2 -1 libdir)
set(ENV{LD_LIBRARY_PATH} "${libdir}")
execute_process(COMMAND ${exe} RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "the C99 program failed: ${rc}")
endif()
