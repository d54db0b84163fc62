# What makes the databases on a machine whose own driver has to make them; the statements are those of data/.
set(setup_scripts ${CMAKE_SOURCE_DIR}/data/settings.sql ${CMAKE_SOURCE_DIR}/data/excluded-properties.sql
                  ${CMAKE_SOURCE_DIR}/data/sites.sql)
set(setup_source ${CMAKE_BINARY_DIR}/generated/setup_scripts.cpp)
string(REPLACE ";" " " setup_inputs "${setup_scripts}")
add_custom_command(
  OUTPUT ${setup_source}
  COMMAND ${CMAKE_COMMAND} "-DINPUTS=${setup_inputs}" -DHEADER=setup/scripts.h -DOUTPUT=${setup_source}
          -P ${CMAKE_SOURCE_DIR}/cmake/EmbedText.cmake
  DEPENDS ${setup_scripts} ${CMAKE_SOURCE_DIR}/cmake/EmbedText.cmake
  VERBATIM)
add_library(trelvin_setup STATIC src/setup/access_script.cpp src/setup/set_up.cpp ${setup_source})
target_link_libraries(trelvin_setup PUBLIC trelvin_system)
