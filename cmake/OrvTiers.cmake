# Tier compilation. orv_tier_sources() records a source and the tiers that
# build it; orv_add_tier_libraries() makes one OBJECT library per tier with
# that tier's flags and define, and collects their objects in
# ORV_TIER_OBJECTS.

set(ORV_TIERS m7 u8 n8 y8 e9)
set(ORV_TIER_FLAGS_m7 -msse3)
set(ORV_TIER_FLAGS_u8 -mssse3)
set(ORV_TIER_FLAGS_n8 -mssse3 -mtune=bonnell)  # low-power in-order core
set(ORV_TIER_FLAGS_y8 -msse4.1)
set(ORV_TIER_FLAGS_e9 -mavx)

function(orv_tier_sources src)
  cmake_parse_arguments(ARG "" "" "TIERS" ${ARGN})
  foreach(t IN LISTS ARG_TIERS)
    set_property(GLOBAL APPEND PROPERTY ORV_TIER_SOURCES_${t} ${PROJECT_SOURCE_DIR}/${src})
  endforeach()
endfunction()

macro(orv_add_tier_libraries)
  set(ORV_TIER_OBJECTS "")
  foreach(t IN LISTS ORV_TIERS)
    get_property(srcs GLOBAL PROPERTY ORV_TIER_SOURCES_${t})
    string(TOUPPER ${t} T)
    add_library(orv_tier_${t} OBJECT ${srcs})
    target_include_directories(orv_tier_${t} PRIVATE ${ORV_INCLUDE_DIRS} ${PROJECT_SOURCE_DIR})
    target_compile_definitions(orv_tier_${t} PRIVATE ORV_TIER_${T})
    target_compile_options(orv_tier_${t} PRIVATE ${ORV_COMMON_FLAGS} ${ORV_TIER_FLAGS_${t}})
    list(APPEND ORV_TIER_OBJECTS $<TARGET_OBJECTS:orv_tier_${t}>)
  endforeach()
endmacro()

# Globs tier sources; a name ending in tier codes (_e9, _n8y8) limits its tiers.
function(orv_glob_tier_sources)
  foreach(pattern IN LISTS ARGN)
    file(GLOB files CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/${pattern})
    foreach(f IN LISTS files)
      get_filename_component(stem ${f} NAME_WE)
      set(tiers ${ORV_TIERS})
      if(stem MATCHES "_((m7|u8|n8|y8|e9)+)$")
        string(REGEX MATCHALL "(m7|u8|n8|y8|e9)" tiers "${CMAKE_MATCH_1}")
      endif()
      orv_tier_sources(${f} TIERS ${tiers})
    endforeach()
  endforeach()
endfunction()
