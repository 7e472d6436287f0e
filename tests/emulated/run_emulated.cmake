# Runs the suite under qemu-x86_64 on one processor model:
#   1. orvinfo must report the expected tier and jump index, selected by the
#      library itself;
#   2. the probes in TRAPS must die (the emulator refuses instructions above
#      the tier) and those in RUNS must run;
#   3. every program in GTESTS (GoogleTest, with FILTER and ORV_TEST_TIERS=TIER,
#      so the tier registry offers only the tier this model selects) and in
#      PLAIN must pass.
# Lists are comma-separated.
cmake_minimum_required(VERSION 3.20)
foreach(v QEMU MODEL TIER INDEX LP ORVINFO PROBE GTESTS PLAIN)
  if(NOT DEFINED ${v})
    message(FATAL_ERROR "run_emulated.cmake: ${v} not set")
  endif()
endforeach()
set(emu ${QEMU} -cpu ${MODEL})
set(ENV{ORV_TEST_TIERS} ${TIER})

function(elapsed_since start out)
  string(TIMESTAMP now "%s")
  math(EXPR d "${now} - ${start}")
  set(${out} ${d} PARENT_SCOPE)
endfunction()

# 1. The selection.
execute_process(COMMAND ${emu} ${ORVINFO} RESULT_VARIABLE rc OUTPUT_VARIABLE info ERROR_QUIET)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "orvinfo on ${MODEL} failed (${rc}):\n${info}")
endif()
if(NOT info MATCHES "\ntier +([a-z0-9]+) +\\(jump index ([0-9]), LP ([01])\\)")
  message(FATAL_ERROR "orvinfo on ${MODEL}: no tier line in\n${info}")
endif()
set(got "${CMAKE_MATCH_1} ${CMAKE_MATCH_2} ${CMAKE_MATCH_3}")
if(NOT got STREQUAL "${TIER} ${INDEX} ${LP}")
  message(FATAL_ERROR "${MODEL}: selected tier, jump index, LP = ${got}; expected ${TIER} ${INDEX} ${LP}\n${info}")
endif()
message(STATUS "${MODEL}: selects ${TIER} (jump index ${INDEX}, LP ${LP})")

# 2. The emulator enforces the tier's limit.
string(REPLACE "," ";" traps "${TRAPS}")
string(REPLACE "," ";" runs "${RUNS}")
foreach(p IN LISTS traps runs)
  execute_process(COMMAND ${emu} ${PROBE} ${p} RESULT_VARIABLE rc OUTPUT_QUIET ERROR_QUIET)
  if(p IN_LIST traps AND rc EQUAL 0)
    message(FATAL_ERROR "${MODEL}: ${p} instructions ran; the emulator does not refuse them")
  elseif(p IN_LIST runs AND NOT rc EQUAL 0)
    message(FATAL_ERROR "${MODEL}: ${p} instructions failed (${rc})")
  endif()
endforeach()
message(STATUS "${MODEL}: refuses [${TRAPS}], runs [${RUNS}]")

# 3. The programs.
string(REPLACE "," ";" gtests "${GTESTS}")
string(REPLACE "," ";" plain "${PLAIN}")
set(failed "")
foreach(prog IN LISTS gtests plain)
  set(args "")
  if(prog IN_LIST gtests)
    set(args --gtest_brief=1 "--gtest_filter=${FILTER}")
  endif()
  string(TIMESTAMP t0 "%s")
  execute_process(COMMAND ${emu} ${prog} ${args} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  elapsed_since(${t0} secs)
  get_filename_component(name ${prog} NAME)
  string(REGEX MATCHALL "\\[ orv    \\] tiers left out[^\n]*" left "${err}")
  if(left AND NOT reported)
    string(REPLACE ";" "\n" left "${left}")
    message(STATUS "${MODEL}: ${left}")
    set(reported ON)
  endif()
  if(rc EQUAL 0)
    message(STATUS "${MODEL}: ${name} passed in ${secs} s")
  else()
    message("${out}\n${err}")
    message(STATUS "${MODEL}: ${name} FAILED (${rc}) after ${secs} s")
    list(APPEND failed ${name})
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "${MODEL}: failed: ${failed}")
endif()
