add_compile_options(-Wall -Wextra -Werror "$<$<COMPILE_LANGUAGE:CXX>:-Wconversion>")

# A folder that may not be there in a source package.
macro(ppl_add_folder folder)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt)
    add_subdirectory(${folder})
  endif()
endmacro()
