# Sanitizers and coverage. An instrumented library calls into the compiler's run time, so it is
# for user mode only, and its stack frames are larger than a driver's may be.
set(PPL_INSTRUMENTED OFF)
if(PPL_SANITIZE)
  set(PPL_INSTRUMENTED ON)
  add_compile_options(-fsanitize=${PPL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${PPL_SANITIZE})
endif()
if(PPL_COVERAGE)
  set(PPL_INSTRUMENTED ON)
  add_compile_options(--coverage -fprofile-abs-path)
  add_link_options(--coverage)
endif()
