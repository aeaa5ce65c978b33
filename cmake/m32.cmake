# 32-bit programs on a 64-bit machine. Nothing outside the tiers may use xmm registers: the tests
# also run on an emulated processor without SSE.
set(m32_flags "-m32 -march=pentiumpro -mno-sse")
set(CMAKE_C_FLAGS_INIT "${m32_flags}")
set(CMAKE_CXX_FLAGS_INIT "${m32_flags}")
