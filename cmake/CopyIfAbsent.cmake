# Run as a script: copies SOURCE to TARGET unless there is one. TARGET appears whole or not at all.
if(NOT EXISTS "${TARGET}")
  file(COPY_FILE "${SOURCE}" "${TARGET}.new")
  file(RENAME "${TARGET}.new" "${TARGET}")
endif()
