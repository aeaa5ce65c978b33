# Half of the build's time goes into optimising what runs for a moment only: the command line's parser,
# the tests themselves. They get by with less.
function(ppl_compile_quickly)
  foreach(target IN LISTS ARGN)
    if(TARGET ${target})
      target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
    endif()
  endforeach()
endfunction()
