# The databases as they are installed, made from the statements in data/.
set(TRELVIN_DATABASES ${CMAKE_BINARY_DIR}/databases)

# Makes a database from files of statements, in their order.
function(add_database name)
  list(TRANSFORM ARGN PREPEND ${CMAKE_SOURCE_DIR}/data/ OUTPUT_VARIABLE scripts)
  string(REPLACE ";" "|" script_list "${scripts}")
  set(database ${TRELVIN_DATABASES}/${name})
  add_custom_command(
    OUTPUT ${database}
    COMMAND ${CMAKE_COMMAND} "-DSQLITE3=${SQLITE3}" "-DDATABASE=${database}" "-DSCRIPTS=${script_list}"
            -P ${CMAKE_SOURCE_DIR}/cmake/MakeDatabase.cmake
    DEPENDS ${scripts} ${CMAKE_SOURCE_DIR}/cmake/MakeDatabase.cmake
    COMMENT "Making ${name}"
    VERBATIM)
  set(databases ${databases} ${database} PARENT_SCOPE)
endfunction()

add_database(Trelvin.mdb settings.sql excluded-properties.sql)
add_database(TrelvinData.mdb sites.sql)
add_database(ForBackups.mdb sites.sql)
add_custom_target(databases DEPENDS ${databases})
