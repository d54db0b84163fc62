# The folder that the program runs from, ready for use when the build is done.
set(TRELVIN_PROGRAM_FOLDER ${CMAKE_BINARY_DIR}/Trelvin CACHE INTERNAL "The folder that the program runs from")

set_target_properties(trelvin PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${TRELVIN_PROGRAM_FOLDER})

# Trelvin.mdb and TrelvinData.mdb belong to whoever uses the program: a build puts them there once and never touches
# them again. ForBackups.mdb is a template, as much a part of the program as its code.
set(copy_if_absent ${CMAKE_SOURCE_DIR}/cmake/CopyIfAbsent.cmake)
add_custom_target(program_folder ALL
  COMMAND ${CMAKE_COMMAND} -E make_directory ${TRELVIN_PROGRAM_FOLDER}
  COMMAND ${CMAKE_COMMAND} "-DSOURCE=${TRELVIN_DATABASES}/Trelvin.mdb"
          "-DTARGET=${TRELVIN_PROGRAM_FOLDER}/Trelvin.mdb" -P ${copy_if_absent}
  COMMAND ${CMAKE_COMMAND} "-DSOURCE=${TRELVIN_DATABASES}/TrelvinData.mdb"
          "-DTARGET=${TRELVIN_PROGRAM_FOLDER}/TrelvinData.mdb" -P ${copy_if_absent}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${TRELVIN_DATABASES}/ForBackups.mdb ${TRELVIN_PROGRAM_FOLDER}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${TRELVIN_PROGRAM_FOLDER}/Schemas
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${CMAKE_SOURCE_DIR}/data/sites-mariadb.sql
          ${CMAKE_SOURCE_DIR}/data/sites-postgresql.sql ${TRELVIN_PROGRAM_FOLDER}/Schemas
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${CMAKE_SOURCE_DIR}/Documentation ${TRELVIN_PROGRAM_FOLDER}/Documentation
  COMMENT "Preparing the program folder"
  VERBATIM)
add_dependencies(program_folder trelvin databases)
