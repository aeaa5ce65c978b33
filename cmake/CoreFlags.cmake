# How the library's core is compiled. It must link into a kernel-mode driver: no C runtime, no
# exceptions, no initialisers that somebody would have to run, small stack frames.

set(PPL_CORE_FLAGS
    -ffreestanding -fno-builtin
    -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-use-cxa-atexit
    -fno-asynchronous-unwind-tables -fno-unwind-tables
    -fno-stack-protector -fno-ident -fcf-protection=none
    -fvisibility=hidden -fvisibility-inlines-hidden
    # A packager's -flto would compile everything anew at link time, without the flags of its tier.
    -fno-lto)
# The intrinsics' headers would pull in <stdlib.h> for _mm_malloc.
set(PPL_CORE_DEFINITIONS _MM_MALLOC_H_INCLUDED)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Copies and fills are written out: there is no memcpy or memset to call.
  list(APPEND PPL_CORE_FLAGS -fno-tree-loop-distribute-patterns -minline-all-stringops)
endif()

# A kernel stack is 12 KB for everybody. (Clang inlines more into one frame, and builds no driver.)
if(NOT PPL_INSTRUMENTED)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND PPL_CORE_FLAGS -Wframe-larger-than=1024)
  else()
    list(APPEND PPL_CORE_FLAGS -Wframe-larger-than=1536)
  endif()
endif()

# 32 bit: a caller on Windows promises a stack aligned to 4 and no more, and xmm registers belong to
# the SSE2 tier alone. The assembler is told too: it also knows the SSE2 instructions that have no
# xmm register in them.
set(PPL_BASE_FLAGS)
set(PPL_P3_FLAGS -mmmx)
set(PPL_SSE2_FLAGS -mmmx -msse2)
if(NOT PPL_32_BIT)
  # Whatever a packager asks of all code, -march=native perhaps: the core is for every processor.
  foreach(flags BASE P3 SSE2)
    list(APPEND PPL_${flags}_FLAGS -mno-avx -mno-sse3)
  endforeach()
endif()
if(PPL_32_BIT)
  # What is outside the tiers runs on the oldest processor there is; it then takes the plain copy.
  set(PPL_BASE_FLAGS -march=pentium -mtune=generic -mno-mmx -mno-sse)
  set(PPL_P3_FLAGS -march=pentiumpro -mmmx -msse -mno-sse2)
  set(PPL_SSE2_FLAGS -march=pentiumpro -mmmx -msse -msse2 -mstackrealign)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND PPL_CORE_FLAGS -mpreferred-stack-boundary=2 -mincoming-stack-boundary=2)
    list(APPEND PPL_BASE_FLAGS -mfpmath=387 -Wa,-march=pentium)
    list(APPEND PPL_P3_FLAGS -mfpmath=387 -Wa,-march=pentiumiii)
    # The intrinsics need -msse, and then gcc copies 8-byte structures through xmm registers.
    foreach(register RANGE 7)
      list(APPEND PPL_P3_FLAGS -ffixed-xmm${register})
    endforeach()
    list(APPEND PPL_SSE2_FLAGS -mfpmath=387 -Wa,-march=pentium4)
  else()
    list(APPEND PPL_CORE_FLAGS -mstack-alignment=4)
  endif()
endif()

# A kernel stack is there from its first page to its last; larger frames do not compile.
if(WIN32)
  list(APPEND PPL_CORE_FLAGS -mno-stack-arg-probe)
endif()

# Flags of a target whose sources belong to the core. Tier files get theirs by ppl_tier_flags.
function(ppl_core_flags target)
  target_compile_options(${target} PRIVATE ${PPL_CORE_FLAGS} ${PPL_BASE_FLAGS})
  target_compile_definitions(${target} PRIVATE ${PPL_CORE_DEFINITIONS})
  target_include_directories(
    ${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
endfunction()

# Sources are of the tier that their name ends in: *_p3.cpp, *_sse2.cpp.
function(ppl_tier_flags)
  foreach(source IN LISTS ARGN)
    if(source MATCHES "_p3\\.cpp$")
      set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS "${PPL_P3_FLAGS}")
    elseif(source MATCHES "_sse2\\.cpp$")
      set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS "${PPL_SSE2_FLAGS}")
    endif()
  endforeach()
endfunction()
