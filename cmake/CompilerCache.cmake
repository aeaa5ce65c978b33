# What one clone has compiled serves the next, wherever it stands.
find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH root_folder)
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${root_folder} CCACHE_NOHASHDIR=1 ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()
