# The facts of the metabase's schema become part of the program, so that it needs no file for them when it runs.
set(schema_tables
  ${CMAKE_CURRENT_LIST_DIR}/../data/metabase-properties.csv
  ${CMAKE_CURRENT_LIST_DIR}/../data/metabase-defaults.csv
  ${CMAKE_CURRENT_LIST_DIR}/../data/metabase-classes.csv
  ${CMAKE_CURRENT_LIST_DIR}/../data/metabase-class-properties.csv)
set(schema_source ${CMAKE_BINARY_DIR}/generated/schema_data.cpp)
string(REPLACE ";" " " schema_inputs "${schema_tables}")
add_custom_command(
  OUTPUT ${schema_source}
  COMMAND ${CMAKE_COMMAND} "-DINPUTS=${schema_inputs}" -DHEADER=schema_data.h -DOUTPUT=${schema_source}
          -P ${CMAKE_CURRENT_LIST_DIR}/EmbedText.cmake
  DEPENDS ${schema_tables} ${CMAKE_CURRENT_LIST_DIR}/EmbedText.cmake
  VERBATIM)
target_sources(trelvin_metabase_file PRIVATE ${schema_source})
target_include_directories(trelvin_metabase_file PRIVATE ${CMAKE_CURRENT_LIST_DIR}/../src/platform/linux/metabase)
