# Run by CPack after it has installed into its staging folder: removes the $ORIGIN run path that
# a relocatable install needs from every ELF file of the package.
file(GLOB_RECURSE _files LIST_DIRECTORIES false "${CPACK_TEMPORARY_DIRECTORY}/*")
foreach(_file IN LISTS _files)
  if(IS_SYMLINK "${_file}")
    continue()
  endif()
  file(READ "${_file}" _magic LIMIT 4 HEX)
  if(_magic STREQUAL "7f454c46")
    file(RPATH_REMOVE FILE "${_file}")
  endif()
endforeach()
