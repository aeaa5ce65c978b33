# ppl_generated_tables(): in the current binary folder, every_function.inc with PPL_FUNCTION(<name>) for
# each function of ppl.h, and golden_sums.inc with the golden checksums as numbers.
include(ExportedNames)

function(ppl_generated_tables)
  cmake_path(GET CMAKE_CURRENT_FUNCTION_LIST_DIR PARENT_PATH tests)
  ppl_exported_names(names)
  list(TRANSFORM names REPLACE "(.+)" "PPL_FUNCTION(\\1)" OUTPUT_VARIABLE functions)
  list(JOIN functions "\n" functions)
  file(CONFIGURE OUTPUT every_function.inc CONTENT "@functions@\n" @ONLY)

  set(golden ${tests}/golden/golden.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${golden})
  file(STRINGS ${golden} sums REGEX "^[^#]+ [|] [0-9]+( [0-9a-f]+)+$")
  list(TRANSFORM sums REPLACE "^.* [|] ([0-9]+) ([0-9a-f]+) ([0-9a-f]+) ([0-9a-f]+)$"
       "{\\1, 0x\\2, 0x\\3, 0x\\4},")
  list(JOIN sums "\n" sums)
  file(CONFIGURE OUTPUT golden_sums.inc CONTENT "@sums@\n" @ONLY)
endfunction()
