# Generates, from the project's lists, everything that names the exported
# functions: the public tier declarations (orvtiers.h + orvtiers.inc), the
# linker version script, and the expected-export lists that the tests read.
#
#   frame/exports.tsv        public-style names: stub, tiers, built
#   frame/kernels.tsv        kernels and workers named for export: tiers, built
#   frame/dispatch.def       dispatched functions and their slots
#   frame/frame_exports.txt  unprefixed frame functions and data
#   frame/libm_exports.txt   the scalar math layer, under its own version node

function(orv_read_tiered_list file out_built out_all)
  set(built "")
  set(all "")
  if(EXISTS ${file})
    file(STRINGS ${file} lines)
    foreach(line IN LISTS lines)
      if(line MATCHES "^#" OR line STREQUAL "")
        continue()
      endif()
      string(REPLACE "\t" ";" cols "${line}")
      list(GET cols 0 name)
      list(GET cols 2 tiers)
      list(GET cols 3 state)
      string(REPLACE "," ";" tiers "${tiers}")
      foreach(t IN LISTS tiers)
        list(APPEND all "${t}_${name}")
        if(state STREQUAL "built")
          list(APPEND built "${t}|${name}")
        endif()
      endforeach()
    endforeach()
  endif()
  set(${out_built} "${built}" PARENT_SCOPE)
  set(${out_all} "${all}" PARENT_SCOPE)
endfunction()

# Writes `macro(tier, name)` for each "tier|name" pair, under a comment.
function(orv_write_pairs file macro comment)
  set(text "/* ${comment} */\n")
  foreach(pair IN LISTS ARGN)
    string(REPLACE "|" ", " pair "${pair}")
    string(APPEND text "${macro}(${pair})\n")
  endforeach()
  file(CONFIGURE OUTPUT ${file} CONTENT "${text}" @ONLY)
endfunction()

function(orv_generate_lists src bin)
  set(lists ${src}/frame/exports.tsv ${src}/frame/kernels.tsv
            ${src}/frame/dispatch.def ${src}/frame/frame_exports.txt ${src}/frame/libm_exports.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${lists})

  orv_read_tiered_list(${src}/frame/exports.tsv pub_built pub_all)
  orv_read_tiered_list(${src}/frame/kernels.tsv ker_built ker_all)

  file(STRINGS ${src}/frame/frame_exports.txt frame_names REGEX "^[A-Za-z_]")
  file(STRINGS ${src}/frame/libm_exports.txt libm_names REGEX "^[A-Za-z_]")
  file(STRINGS ${src}/frame/dispatch.def stub_lines REGEX "^ORV_STUB\\(")
  set(stubs "")
  foreach(line IN LISTS stub_lines)
    string(REGEX REPLACE "^ORV_STUB\\(([A-Za-z0-9_]+),.*" "\\1" name "${line}")
    list(APPEND stubs ${name} ${name}_arraddr)
  endforeach()

  # Public tier declarations, kernel declarations and the test registry:
  # one macro line per built (tier, name).
  orv_write_pairs(${bin}/include/orvtiers.inc ORV_TIER_DECL
    "Generated from frame/exports.tsv: the tier-prefixed entry points." ${pub_built})
  orv_write_pairs(${bin}/include/internal/orvkernels.inc ORV_TIER_DECL
    "Generated from frame/kernels.tsv: tier-prefixed kernels." ${ker_built})
  orv_write_pairs(${bin}/tests/orv_tier_fns.inc ORV_TIER_FN
    "Generated: every built tier function, public-style and kernel." ${pub_built} ${ker_built})

  # Exact set of exported names, for the version script and the tests.
  set(exported ${frame_names} ${libm_names} ${stubs})
  foreach(pair IN LISTS pub_built ker_built)
    string(REPLACE "|" "_" sym "${pair}")
    list(APPEND exported ${sym})
  endforeach()
  list(SORT exported)
  list(REMOVE_DUPLICATES exported)
  string(REPLACE ";" "\n" text "${exported}")
  file(CONFIGURE OUTPUT ${bin}/exports/expected.txt CONTENT "${text}\n" @ONLY)

  # Every name the library may ever export (the full lists), for the test
  # that rejects a name nobody documented.
  set(allowed ${frame_names} ${libm_names} ${pub_all} ${ker_all})
  file(READ ${src}/frame/exports.tsv tsv)
  string(REGEX MATCHALL "\n[A-Za-z0-9_]+\tstub" stubbed "${tsv}")
  foreach(s IN LISTS stubbed)
    string(REGEX REPLACE "\n([A-Za-z0-9_]+)\tstub" "\\1" s "${s}")
    list(APPEND allowed ${s} ${s}_arraddr)
  endforeach()
  list(SORT allowed)
  list(REMOVE_DUPLICATES allowed)
  string(REPLACE ";" "\n" text "${allowed}")
  file(CONFIGURE OUTPUT ${bin}/exports/allowed.txt CONTENT "${text}\n" @ONLY)

  # Linker version script: exactly the exported names, everything else local.
  # The scalar math names get a node of their own (see libm_exports.txt).
  set(core ${exported})
  list(REMOVE_ITEM core ${libm_names})
  string(REPLACE ";" ";\n    " globals "${core}")
  string(REPLACE ";" ";\n    " math_globals "${libm_names}")
  file(CONFIGURE OUTPUT ${bin}/orv.map CONTENT
"ORV_7.0 {
  global:
    ${globals};
  local: *;
};
ORV_MATH_7.0 {
  global:
    ${math_globals};
};
" @ONLY)
endfunction()
