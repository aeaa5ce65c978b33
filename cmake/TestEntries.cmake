# How GoogleTest programs get into ctest's list. A program is one entry there, or a few that share its
# cases: a process for each case would take longer than most cases. What became of each case stands in a
# file of PPL_TEST_RESULTS, for tests/summary; `./dev test` clears that folder.
set(PPL_TEST_RESULTS ${PROJECT_BINARY_DIR}/test_results CACHE PATH "Where GoogleTest programs write results")

# A skipped test says so, whether a gate or a GoogleTest case. (Of a whole program ctest would take that
# for its result, so for those only the summary looks.)
set(skipped "\\[  SKIPPED \\]")

# ppl_add_cases(<name> COMMAND <command>... [SHARDS <number>] [COST <seconds>] [LABELS <label>...]
#               [ENVIRONMENT <NAME=value>...]): the cases of a GoogleTest program; at least one must run.
# COST need not be exact: the longest are started first.
function(ppl_add_cases name)
  cmake_parse_arguments(PARSE_ARGV 1 cases "" "SHARDS;COST" "COMMAND;LABELS;ENVIRONMENT")
  if(NOT cases_SHARDS)
    set(cases_SHARDS 1)
  endif()
  foreach(shard RANGE 1 ${cases_SHARDS})
    set(entry ${name})
    set(environment ${cases_ENVIRONMENT})
    if(cases_SHARDS GREATER 1)
      string(APPEND entry .${shard})
      math(EXPR index "${shard} - 1")
      list(APPEND environment GTEST_TOTAL_SHARDS=${cases_SHARDS} GTEST_SHARD_INDEX=${index})
    endif()
    list(APPEND environment GTEST_OUTPUT=xml:${PPL_TEST_RESULTS}/${entry}.xml)
    string(PREPEND entry "${PPL_TEST_PREFIX}")
    add_test(NAME ${entry} COMMAND ${cases_COMMAND} COMMAND_EXPAND_LISTS)
    set_tests_properties(${entry} PROPERTIES ENVIRONMENT "${environment}" LABELS "${cases_LABELS}"
                         FAIL_REGULAR_EXPRESSION "Running 0 tests" TIMEOUT 900)
    if(cases_COST)
      set_property(TEST ${entry} PROPERTY COST ${cases_COST})
    endif()
  endforeach()
endfunction()
